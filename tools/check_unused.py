#!/usr/bin/python3
"""Fails on a function of the product that no other code of the product calls, unless tools/kept.txt
names it. Tests, benchmarks and fuzz targets do not count as callers.

    tools/check_unused.py [BUILD [TREE]]     BUILD is a build directory with compile_commands.json
                                             (build/release), TREE the sources it was made of

Parses every source with libclang (python3-clang-14), which tells overloads and methods of the same name
apart. Calls that depend on a template's argument are matched by name alone. Constructors, destructors,
overriding methods and operators are not checked, because most calls of them are implicit."""

import json
import multiprocessing
import pathlib
import re
import shlex
import sys

from clang.cindex import CursorKind, Index, conf

ROOT = pathlib.Path(sys.argv[2] if len(sys.argv) > 2 else pathlib.Path(__file__).parent.parent).resolve()
NOT_PRODUCT = ("tests/", "bench/", "fuzz/", "build/")
FUNCTIONS = {CursorKind.FUNCTION_DECL, CursorKind.CXX_METHOD, CursorKind.FUNCTION_TEMPLATE}
REFERENCES = {CursorKind.DECL_REF_EXPR, CursorKind.MEMBER_REF_EXPR, CursorKind.OVERLOADED_DECL_REF,
              CursorKind.CALL_EXPR, CursorKind.UNEXPOSED_EXPR}
# Called without being named, by range-based for, structured bindings and algorithms.
IMPLICIT = {"begin", "end", "get", "swap"}
WORD = re.compile(r"[A-Za-z_]\w*")


class Found:
    """Functions that one or several sources define and call."""

    def __init__(self):
        self.defined = {}  # USR -> (qualified name, "file:line", file of the first declaration)
        self.used = set()  # USRs
        self.used_names = set()  # names in calls that depend on a template's argument

    def add(self, other):
        self.defined.update(other.defined)
        self.used |= other.used
        self.used_names |= other.used_names


def path_in_tree(cursor):
    file = cursor.location.file
    if not file:
        return None
    try:
        return pathlib.Path(file.name).resolve().relative_to(ROOT).as_posix()
    except ValueError:
        return None


def qualified_name(cursor):
    parts = []
    while cursor and cursor.kind != CursorKind.TRANSLATION_UNIT:
        if cursor.spelling:
            parts.append(cursor.spelling)
        cursor = cursor.semantic_parent
    return "::".join(reversed(parts))


def overrides(cursor):
    """Whether a method overrides one of a base class, through which it is called."""
    return cursor.kind == CursorKind.CXX_METHOD and any(
        token.spelling in ("override", "final") for token in cursor.canonical.get_tokens())


def usr(cursor):
    """The unique name of a function; for a specialisation of a template, that of the template."""
    general = conf.lib.clang_getSpecializedCursorTemplate(cursor)
    return (general if general and general.kind.is_declaration() else cursor).get_usr()


def note_reference(cursor, inside, found):
    target = cursor.referenced
    if target is None or target.kind == CursorKind.OVERLOADED_DECL_REF:
        name = cursor.spelling
        if not name and cursor.kind == CursorKind.MEMBER_REF_EXPR:
            words = [token.spelling for token in cursor.get_tokens() if WORD.fullmatch(token.spelling)]
            name = words[-1] if words else ""
        found.used_names.add(name)
    elif target.kind in FUNCTIONS and usr(target) != inside:
        found.used.add(usr(target))


def visit(cursor, inside, found):
    """Records the functions that a cursor and its children define and call. inside: the enclosing function."""
    if cursor.kind in FUNCTIONS:
        inside = usr(cursor)
        exempt = cursor.spelling.startswith("operator") or cursor.spelling in IMPLICIT
        if cursor.is_definition() and not exempt and not overrides(cursor):
            where = f"{path_in_tree(cursor)}:{cursor.location.line}"
            found.defined[inside] = (qualified_name(cursor), where, path_in_tree(cursor.canonical))
    elif cursor.kind in REFERENCES:
        note_reference(cursor, inside, found)
    for child in cursor.get_children():
        visit(child, inside, found)


def read_source(command):
    """Parses one source of compile_commands.json."""
    words = shlex.split(command["command"])
    first = next(i for i, word in enumerate(words) if word.endswith(("c++", "g++", "clang++"))) + 1
    words = [word for word in words[first:] if not word.startswith(("-o", "-Werror", "-c"))
             and not word.endswith((".o", ".cpp"))]
    words += [f"-working-directory={command['directory']}", "-w"]
    unit = Index.create().parse(command["file"], args=words)
    for fault in unit.diagnostics:
        if fault.severity >= fault.Error:
            raise RuntimeError(f"cannot be parsed: {fault}")
    found = Found()
    for cursor in unit.cursor.get_children():
        path = path_in_tree(cursor)
        if path and not path.startswith(NOT_PRODUCT):
            visit(cursor, None, found)
    return found


def kept_names():
    """The lines of tools/kept.txt: qualified names, and paths whose declarations are all kept."""
    lines = [line.split("#")[0].strip() for line in (ROOT / "tools/kept.txt").read_text().splitlines()]
    names = {line for line in lines if line and "/" not in line}
    return names, tuple(line for line in lines if "/" in line)


def main():
    if len(sys.argv) > 1 and sys.argv[1] in ("-h", "--help"):
        print(__doc__)
        return 0
    build = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release")
    commands = json.loads((build / "compile_commands.json").read_text())
    product = {}
    for command in commands:
        path = pathlib.Path(command["file"]).resolve()
        if path.is_relative_to(ROOT) and not path.relative_to(ROOT).as_posix().startswith(NOT_PRODUCT):
            product.setdefault(path, command)
    found = Found()
    with multiprocessing.Pool() as pool:
        for part in pool.imap_unordered(read_source, product.values(), chunksize=4):
            found.add(part)
    # Sources for Windows are not part of this build: every name they mention counts as called.
    for path in ROOT.rglob("*_win32.cpp"):
        found.used_names |= set(WORD.findall(path.read_text()))
    kept, kept_paths = kept_names()
    faults = []
    for key, (name, where, declared_in) in found.defined.items():
        if key in found.used or name.split("::")[-1] in found.used_names:
            continue
        if name not in kept and not declared_in.startswith(kept_paths):
            faults.append(f"{where}: {name} is called by no code of the product")
    existing = {name for name, _, _ in found.defined.values()}
    faults += [f"tools/kept.txt: {name} does not exist" for name in kept - existing]
    print(*sorted(faults), sep="\n", end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
