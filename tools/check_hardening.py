#!/usr/bin/env python3
"""Fails if a built program or library lacks a protection of cmake/hardening.cmake, or searches the current
directory for libraries. Usage: check_hardening.py FILE..."""

import subprocess
import sys


def readelf(option, path):
    return subprocess.run(["readelf", "--wide", option, path], check=True, capture_output=True, text=True).stdout


def faults_of(path):
    dynamic, symbols = readelf("--dynamic", path), readelf("--dyn-syms", path)
    if "DYN" not in readelf("--file-header", path):
        yield "is not position-independent"
    if "GNU_RELRO" not in readelf("--program-headers", path):
        yield "has loader tables that stay writable (RELRO)"
    if "NOW" not in dynamic:
        yield "binds functions at their first call (BIND_NOW)"
    if "__stack_chk_fail" not in symbols:
        yield "has no stack protector"
    for line in dynamic.splitlines():
        if ("RUNPATH" in line or "RPATH" in line) and "" in line.split("[")[1].split("]")[0].split(":"):
            yield "has an empty element in its run path"


def main():
    faults = [f"{path} {fault}" for path in sys.argv[1:] for fault in faults_of(path)]
    # Not every library calls a function that has a checked form. Programs may contain libraries of the system
    # that do, so they do not count.
    libraries = [path for path in sys.argv[1:] if path.endswith(".so")]
    if not any("_chk@" in readelf("--dyn-syms", path) for path in libraries):
        faults.append("no library calls checked functions of the C library (_FORTIFY_SOURCE)")
    for fault in faults:
        print(fault)
    return 1 if faults or len(sys.argv) == 1 else 0


if __name__ == "__main__":
    sys.exit(main())
