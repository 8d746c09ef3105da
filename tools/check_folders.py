#!/usr/bin/env python3
"""Fails on folders that include each other in a circle, and on a CMake list that names a source
outside its own folder. With a directory as argument, checks that tree instead of this one."""

import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
# Folders on the include path whose headers are named in angle brackets.
ANGLE_ROOTS = ["host/include", "platform/win32/include", "platform/d3dx9/include"]
SKIPPED = {"build", ".git"}
# A path to a source or header in a CMake list, with any folder or variable before the file's name.
CMAKE_SOURCE = re.compile(r'[^\s()";]*\.(?:cpp|h|c|def)\b')
OWN_FOLDER = re.compile(r"^\$\{CMAKE_CURRENT_(SOURCE|BINARY)_DIR\}/")


def files_in(root, suffixes):
    for file in sorted(root.rglob("*")):
        path = file.relative_to(root)
        if file.suffix in suffixes and path.parts[0] not in SKIPPED and "node_modules" not in path.parts:
            yield file, path.as_posix()


def folder_of(path):
    return path.rpartition("/")[0]


def included_file(root, kind, name):
    """The path of an included file of this tree, or None for one of the system's."""
    for base in [""] if kind == '"' else ANGLE_ROOTS:
        path = f"{base}/{name}" if base else name
        if (root / path).is_file():
            return path
    return None


def folder_includes(root):
    """{folder: {other folder: "file:line" of one include that leads there}}"""
    graph = {}
    for file, path in files_in(root, {".h", ".cpp"}):
        for number, line in enumerate(file.read_text(errors="replace").splitlines(), 1):
            found = INCLUDE.match(line)
            target = found and included_file(root, found[1], found[2])
            if target and folder_of(target) != folder_of(path):
                graph.setdefault(folder_of(path), {}).setdefault(folder_of(target), f"{path}:{number}")
    return graph


def find_cycle(graph):
    """The folders of one cycle in the order of their includes, or None."""
    finished = set()

    def visit(folder, trail):
        if folder in trail:
            return trail[trail.index(folder):]
        if folder in finished:
            return None
        for other in sorted(graph.get(folder, {})):
            cycle = visit(other, trail + [folder])
            if cycle:
                return cycle
        finished.add(folder)
        return None

    for folder in sorted(graph):
        cycle = visit(folder, [])
        if cycle:
            return cycle
    return None


def cycles(root):
    """One message per cycle; the include that closes a cycle is dropped to look for the next one."""
    graph = folder_includes(root)
    cycle = find_cycle(graph)
    while cycle:
        steps = list(zip(cycle, cycle[1:] + cycle[:1]))
        places = ", ".join(graph[a][b] for a, b in steps)
        yield f"folder cycle: {' -> '.join(cycle + cycle[:1])} ({places})"
        last, first = steps[-1]
        del graph[last][first]
        cycle = find_cycle(graph)


def foreign_sources(root):
    for file, path in files_in(root, {".txt", ".cmake"}):
        if file.name != "CMakeLists.txt" and folder_of(path) != "cmake":
            continue
        for number, line in enumerate(file.read_text(errors="replace").splitlines(), 1):
            for source in CMAKE_SOURCE.findall(line.partition("#")[0]):
                rest = OWN_FOLDER.sub("", source)
                if ".." in rest.split("/") or rest.startswith(("/", "${")) and "/" in rest:
                    yield f"{path}:{number}: {source} lies outside this list's folder; link a target instead"


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    faults = list(cycles(root)) + list(foreign_sources(root))
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
