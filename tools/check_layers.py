#!/usr/bin/env python3
"""Fails on an include that points against the house's direction, or a source that asks which side
of a seam it stands on. With a directory as argument, checks that tree instead of this one."""

import pathlib
import re
import sys

# Folder -> what a quoted include may start with, and which system headers it may name besides the
# C++ standard library. The longest matching folder counts.
RULES = {
    "atlas": (["atlas/atlas.h", "atlas/progress.h"], []),
    "atlas/geometry": (["atlas/atlas.h", "atlas/geometry/"], []),
    "atlas/charts": (["atlas/atlas.h", "atlas/progress.h", "atlas/geometry/", "atlas/charts/"], ["Eigen/"]),
    "atlas/pack": (["atlas/atlas.h", "atlas/geometry/", "atlas/pack/"], []),
    "atlas/road": (["atlas/"], []),
    "measure": (["measure/"], []),
    "faultpoint": (["faultpoint/"], []),
    "platform": (["platform/", "atlas/", "faultpoint/"], ["windows.h", "windef.h", "d3d9", "d3dx9", "dlfcn.h", "unistd.h", "sys/", "time.h"]),
    "corelib": (["corelib/"], ["windows.h"]),
    "corelib/math": (["corelib/"], ["windows.h", "d3d9.h", "d3dx9.h"]),
    "plugin": (["plugin/", "corelib/"], ["maya/", "GL/gl.h"]),
    "app": (["app/", "host/", "measure/"], ["maya/", "nlohmann/", "editline/", "CLI/", "png.h", "dlfcn.h", "unistd.h", "fcntl.h", "sys/", "signal.h", "GL/", "EGL/", "GLFW/", "imgui", "zlib.h"]),
    "window": (["window/", "app/", "host/", "measure/"], ["maya/", "GL/", "GLFW/", "imgui", "backends/", "unistd.h"]),
}
# The floors of the host, the highest first: a folder may include itself and those above it; beside
# each, its system headers.
HOST_FLOORS = [
    ("host/include", ["maya/"]),
    ("host/base", ["maya/"]),
    ("host/mesh", ["maya/"]),
    ("host/ui", ["maya/"]),
    ("host/graph", ["maya/", "dlfcn.h"]),
    ("host/api", ["maya/"]),
    ("host/script", ["maya/", "fnmatch.h", "regex.h"]),
    ("host/io", ["maya/", "unistd.h", "fcntl.h", "sys/"]),
    ("host/commands", ["maya/"]),
    ("host/view", ["maya/", "GL/", "EGL/", "png.h"]),
]
for floor, (folder, system) in enumerate(HOST_FLOORS):
    above = [name + "/" for name, _ in HOST_FLOORS[1:floor + 1]]
    RULES[folder] = (above + ["faultpoint/"] if above else [], system)

# Sources that may include more, each with its reason.
EXCEPTIONS = {
    # The atlas stage hands lists to the Direct3D extension library.
    "plugin/atlas_stage.cpp": ["<d3dx9.h>"],
    "plugin/atlas_stage.h": ["<d3dx9.h>"],
    "plugin/adjacency.cpp": ["<d3dx9.h>"],
    "plugin/adjacency.h": ["<d3dx9.h>"],
}
# Half of a pair that differs by system: there this header is the system.
WINDOWS_HALF = re.compile(r"_win32\.cpp$")
WINDOWS_HEADERS = {"windows.h", "psapi.h", "io.h", "fcntl.h"}
SEAM_SWITCHES = re.compile(r"\b(TESSORA_MAYA_DEVKIT|TESSORA_UVATLAS)\b")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
# A header of the C++ standard library has no dot and no slash; these are C's.
C_HEADERS = {"stdint.h", "stddef.h", "math.h", "string.h", "stdlib.h", "stdio.h"}


def folder_for(path):
    for folder in sorted(RULES, key=len, reverse=True):
        if path.startswith(folder + "/"):
            return folder
    return None


def allowed(path, kind, name):
    quoted = ('"' if kind == '"' else "<") + name + ('"' if kind == '"' else ">")
    if any(quoted.startswith(extra) for extra in EXCEPTIONS.get(path, [])):
        return True
    if kind == "<" and WINDOWS_HALF.search(path) and name in WINDOWS_HEADERS:
        return True
    quotes, system = RULES[folder_for(path)]
    if kind == '"':
        return any(name.startswith(start) for start in quotes)
    if name in C_HEADERS or ("." not in name and "/" not in name):
        return True
    return any(name.startswith(start) for start in system)


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    faults = []
    for folder in {name.split("/")[0] for name in RULES}:
        for file in sorted((root / folder).rglob("*")):
            path = file.relative_to(root).as_posix()
            if file.suffix not in {".h", ".cpp"}:
                continue
            if not folder_for(path):
                faults.append(f"{path}: its folder has no row in {pathlib.Path(__file__).name}")
                continue
            for number, line in enumerate(file.read_text(errors="replace").splitlines(), 1):
                if SEAM_SWITCHES.search(line):
                    faults.append(f"{path}:{number}: a source may not ask which side of a seam it is on")
                found = INCLUDE.match(line)
                if found and not allowed(path, found[1], found[2]):
                    faults.append(f"{path}:{number}: {folder_for(path)}/ may not include {found[2]}")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
