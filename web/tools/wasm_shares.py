#!/usr/bin/env python3
"""Prints what every folder's functions take of build/wasm/bin/tessora.wasm.

Links the file once more with the functions' names and looks each of them up in the object files; a template that
several folders use counts for the first. Names that none of them defines are the C and C++ libraries'."""

import collections
import gzip
import os
import pathlib
import re
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = ROOT / "build/wasm"


def number(data, at):
    """An unsigned LEB128 number, and the offset after it."""
    value = shift = 0
    while True:
        byte = data[at]
        at += 1
        value |= (byte & 0x7F) << shift
        shift += 7
        if byte < 0x80:
            return value, at


def text(data, at):
    size, at = number(data, at)
    return data[at:at + size].decode(), at + size


def sections(data):
    at = 8
    while at < len(data):
        kind = data[at]
        size, begin = number(data, at + 1)
        yield kind, begin, begin + size
        at = begin + size


def imported_functions(data, at):
    count, at = number(data, at)
    functions = 0
    for _ in range(count):
        for _ in range(2):
            _, at = text(data, at)
        kind = data[at]
        at += 1
        if kind == 0:
            functions += 1
        if kind in (0, 4):
            at += kind == 4
            _, at = number(data, at)
        elif kind == 3:
            at += 2
        else:  # a table has its type before the limits
            at += kind == 1
            limited = data[at]
            _, at = number(data, at + 1)
            if limited & 1:
                _, at = number(data, at)
    return functions


def function_names(data, at, end):
    while at < end:
        kind = data[at]
        size, at = number(data, at + 1)
        if kind != 1:
            at += size
            continue
        count, at = number(data, at)
        for _ in range(count):
            index, at = number(data, at)
            name, at = text(data, at)
            yield index, name


def function_sizes(data):
    """{name: bytes of its body}, and the bytes of everything else."""
    names, bodies, first, code = {}, [], 0, 0
    for kind, begin, end in sections(data):
        if kind == 2:
            first = imported_functions(data, begin)
        elif kind == 10:
            count, at = number(data, begin)
            for _ in range(count):
                size, at = number(data, at)
                bodies.append(size)
                at += size
            code = end - begin
        elif kind == 0:
            title, at = text(data, begin)
            if title == "name":
                names = dict(function_names(data, at, end))
    return {names.get(first + i, f"#{i}"): size for i, size in enumerate(bodies)}, code


def folders_of_functions():
    owner = {}
    for file in sorted(BUILD.rglob("*.o")):
        folder = re.sub(r"CMakeFiles/[^/]*/", "", file.relative_to(BUILD).as_posix()).rpartition("/")[0]
        listed = subprocess.run(["llvm-nm-14", "--defined-only", "--demangle", file], check=True, capture_output=True, text=True).stdout
        for line in listed.splitlines():
            owner.setdefault(line.split(None, 2)[2], folder)
    return owner


def named_wasm():
    link = subprocess.run(["ninja", "-t", "commands", "tessora_wasm"], cwd=BUILD, check=True, capture_output=True,
                          text=True).stdout.splitlines()[-1]
    with tempfile.TemporaryDirectory() as folder:
        output = pathlib.Path(folder) / "named.wasm"
        subprocess.run(link.replace("-o bin/tessora.wasm", f"--profiling-funcs -o {output}"), shell=True, check=True,
                       cwd=BUILD, env={**os.environ, "NODE_PATH": "/usr/share/nodejs"})
        return output.read_bytes()


def main():
    sizes, code = function_sizes(named_wasm())
    whole = (BUILD / "bin/tessora.wasm").read_bytes()
    owner, shares = folders_of_functions(), collections.Counter()
    for name, size in sizes.items():
        shares[owner.get(name, "C and C++ libraries")] += size
    shares["tables and constants"] = len(whole) - code
    print(f"{len(whole)} bytes, {len(gzip.compress(whole, 9))} compressed\n")
    print("| part | bytes | share |\n|---|---|---|")
    for folder, size in shares.most_common():
        print(f"| {folder} | {size} | {100 * size / len(whole):.1f} % |")


if __name__ == "__main__":
    main()
