#!/usr/bin/env python3
"""Fails on an include that the table of layers forbids, on a source that asks which side of a seam it is
built for, and on a permission that no source uses. With a directory as argument, checks that tree instead of
this one, without the last."""

import pathlib
import re
import sys

# Folder -> what a quoted include may start with, and which system headers it may name besides the
# C++ standard library. The longest matching folder counts.
RULES = {
    "atlas": (["atlas/atlas.h", "atlas/parallel.h", "atlas/progress.h"], []),
    "atlas/geometry": (["atlas/atlas.h", "atlas/parallel.h", "atlas/geometry/"], []),
    "atlas/charts": (["atlas/atlas.h", "atlas/parallel.h", "atlas/progress.h", "atlas/geometry/", "atlas/charts/"], ["Eigen/"]),
    "atlas/pack": (["atlas/atlas.h", "atlas/parallel.h", "atlas/geometry/", "atlas/pack/"], []),
    "atlas/road": (["atlas/"], []),
    "atlas/polygons": (["atlas/", "polygon/"], []),
    "atlas/c": (["atlas/"], []),
    "polygon": (["polygon/"], []),
    "measure": (["measure/"], []),
    "python": (["atlas/", "measure/"], ["pybind11/"]),
    "faultpoint": (["faultpoint/"], ["dlfcn.h"]),
    "platform": (["platform/", "atlas/", "faultpoint/"], ["windows.h", "windef.h", "d3d9", "d3dx9", "dlfcn.h", "unistd.h"]),
    "corelib": (["corelib/"], ["windows.h"]),
    "corelib/math": (["corelib/"], ["d3dx9.h"]),
    "plugin": (["plugin/", "corelib/"], ["maya/", "GL/gl.h"]),
    "formats": (["formats/", "host/io/", "polygon/"], ["nlohmann/", "zlib.h"]),
    "importer": (["formats/"], ["assimp/", "sys/resource.h"]),
    "app": (["app/", "formats/", "host/", "measure/", "polygon/", "atlas/atlas.h"], ["nlohmann/", "editline/", "png.h", "dlfcn.h", "unistd.h", "langinfo.h", "fcntl.h", "sys/", "signal.h", "zlib.h", "xxhash.h", "poll.h", "malloc.h"]),
    "web/engine": (["atlas/c/"], []),
    "window": (["window/", "app/", "host/", "measure/"], ["maya/", "GL/", "GLFW/", "imgui", "backends/", "stb/"]),
}
# The floors of the host, the highest first: a folder may include itself and those above it; beside
# each, its system headers.
HOST_FLOORS = [
    ("host/include", ["maya/"]),
    ("host/base", ["maya/", "tbb/", "unistd.h", "fcntl.h", "sys/"]),
    ("host/mesh", ["maya/"]),
    ("host/ui", ["maya/"]),
    ("host/graph", ["maya/", "dlfcn.h"]),
    ("host/api", ["maya/"]),
    ("host/script", ["maya/", "fnmatch.h", "pthread.h", "regex.h"]),
    ("host/io", ["maya/", "unistd.h", "fcntl.h", "sys/"]),
    ("host/commands", []),
    ("host/view", ["maya/", "GL/", "EGL/", "png.h"]),
]
for floor, (folder, system) in enumerate(HOST_FLOORS):
    above = [name + "/" for name, _ in HOST_FLOORS[1:floor + 1]]
    RULES[folder] = (above + ["faultpoint/", "polygon/"] if above else [], system)

# Sources that may include more, each with its reason.
EXCEPTIONS = {
    # The adjacency is that of a mesh of the Direct3D extension library.
    "plugin/adjacency.h": ["<d3dx9.h>"],
    # The systems keep OpenGL's header in different places.
    "plugin/opengl.h": ["<OpenGL/gl.h>", "<windows.h>"],
}
# Sources for Windows; they may include these system headers.
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


used = set()  # permissions that an include needed: (path or folder, permitted start)


def permitted(owner, name, starts):
    matching = [start for start in starts if name.startswith(start)]
    used.update((owner, start) for start in matching)
    return bool(matching)


def allowed(path, kind, name):
    quoted = ('"' if kind == '"' else "<") + name + ('"' if kind == '"' else ">")
    if permitted(path, quoted, EXCEPTIONS.get(path, [])):
        return True
    if kind == "<" and WINDOWS_HALF.search(path) and name in WINDOWS_HEADERS:
        return True
    quotes, system = RULES[folder_for(path)]
    if kind == '"':
        return any(name.startswith(start) for start in quotes)
    if name in C_HEADERS or ("." not in name and "/" not in name):
        return True
    return permitted(folder_for(path), name, system)


def unused_permissions():
    """Exceptions and system headers that no source makes use of."""
    given = [(path, start) for path, starts in EXCEPTIONS.items() for start in starts]
    given += [(folder, start) for folder, (_, system) in RULES.items() for start in system]
    return [f"{owner} includes nothing that starts with {start}: remove the permission"
            for owner, start in given if (owner, start) not in used]


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parent.parent)
    faults = []
    for folder in {name.split("/")[0] for name in RULES}:
        for file in sorted((root / folder).rglob("*")):
            path = file.relative_to(root).as_posix()
            if file.suffix not in {".h", ".cpp"} or "node_modules" in file.parts:
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
    if len(sys.argv) == 1:
        faults += unused_permissions()
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
