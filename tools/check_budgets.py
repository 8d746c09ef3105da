#!/usr/bin/env python3
"""Fails on a function over 40 lines and on a file over 1000 lines that gives no reason; prints files over
the size budget (headers 200, sources 600).

A function is counted from its signature to its closing brace, lambdas inside it included. Exempt is one
that only lists the entries of a table: the comment above it then starts with "Table:" or "Table of". A file gives its
reason in its first lines: "Size:" followed by it. Tests are not counted: a test is one story, told
in one place. With a directory as argument, checks that tree instead of this one."""

import pathlib
import sys

from cpp_source import functions

FUNCTION_LIMIT = 40
FILE_BUDGET = {".h": 200, ".cpp": 600}
FILE_LIMIT = 1000
NOT_CHECKED = {"build", "tests", ".git", "out"}


def comment_above(lines, number):
    """The comment that ends right above a line (numbered from 1)."""
    first = number - 1
    while first > 0 and lines[first - 1].lstrip().startswith("//"):
        first -= 1
    return " ".join(line.strip().lstrip("/").strip() for line in lines[first:number - 1])


def long_functions(path, text):
    lines = text.splitlines()
    for function in functions(text):
        if function.lines > FUNCTION_LIMIT and not comment_above(lines, function.first).startswith(("Table:", "Table of")):
            yield (f"{path}:{function.first}: {function.name} has {function.lines} lines, "
                   f"{FUNCTION_LIMIT} is the limit")


def check_file(path, text):
    """Warnings and faults of one file."""
    faults = list(long_functions(path, text))
    count = text.count("\n")
    if count <= FILE_BUDGET[pathlib.Path(path).suffix]:
        return [], faults
    if count > FILE_LIMIT and not any("Size:" in line for line in text.splitlines()[:20]):
        return [], faults + [f"{path}: {count} lines, over the limit, no reason given"]
    return [f"{path}: {count} lines, over budget"], faults


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    warnings, faults = [], []
    for top in sorted(root.iterdir()):
        if not top.is_dir() or top.name in NOT_CHECKED:
            continue
        for file in sorted(top.rglob("*")):
            if file.suffix in FILE_BUDGET and "node_modules" not in file.parts:
                more_warnings, more_faults = check_file(file.relative_to(root).as_posix(),
                                                        file.read_text(errors="replace"))
                warnings += more_warnings
                faults += more_faults
    for line in warnings + faults:
        print(line)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
