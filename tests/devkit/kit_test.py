#!/usr/bin/env python3
"""Makes a stand-in for a development kit and builds the plug-in against it, as a studio would.

    kit_test.py LAYOUT WORK CMAKE [TOOLCHAIN]

The kit has this folder's declarations as its headers and, where LAYOUT (windows, linux, macos) keeps its
libraries, all with nothing but names in them: those that the plug-in's objects ask for. Linking with
them proves that all that is wanted comes from the kit, from where it was looked for. Nothing of it can
run. Libraries of macOS cannot be made here: there the build is configured, as if this system were that
one, and no more.

The package that cpack makes of the build is unpacked and its module and package files are checked; in the
layout of macOS those files alone."""

import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parents[1]
LAYOUT, WORK, CMAKE = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3]
TOOLCHAIN = sys.argv[4:5]
KIT, BUILD = WORK / "kit", WORK / "build"
# Layout: era of the declarations, version that they state, folder of the libraries, ending, prefix of tools.
ERA, VERSION, PLACE, FORM, TOOLS = {
    "windows": (2008, "200800", "lib", "{}.lib", "x86_64-w64-mingw32-"),
    "linux": (2023, "20230000", "lib", "lib{}.so", ""),
    "macos": (2023, "20230000", "Maya.app/Contents/MacOS", "lib{}.dylib", ""),
}[LAYOUT]
LIBRARIES = ("OpenMaya", "OpenMayaUI", "Foundation") + (() if ERA == 2008 else ("OpenMayaRender",))
OF_THE_UI = {"M3dView", "MProgressWindow", "MPxLocatorNode", "MUiMessage"}
OF_RENDERING = {"MDrawRegistry", "MPxDrawOverride", "MRenderItem", "MUIDrawManager", "MUserData"}
OF_THE_FOUNDATION = {"MStatus", "MString", "MStringArray", "MIntArray", "MFloatArray", "MPointArray",
                     "MFloatVectorArray", "MCallbackIdArray", "MVector", "MPoint", "MFloatVector", "MMatrix", "MTypeId"}
HOST_NAME = re.compile(r"(?:(?:vtable|typeinfo|typeinfo name) for )?(?:OpenMaya\d+::)?(?:MHWRender::)?(M\w+)[^(]*(\()?")


def run(*words):
    done = subprocess.run([str(word) for word in words], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True)
    if done.returncode:
        sys.exit(f"{' '.join(map(str, words))}\n{done.stdout}\nended with {done.returncode}")
    return done.stdout


def library(name):
    return KIT / PLACE / FORM.format(name)


def write_kit():
    headers = KIT / "include" / "maya"
    headers.mkdir(parents=True)
    (headers / "declarations.h").write_text(f"#define DEVKIT_ERA {ERA}\n" + (HERE / "declarations.h").read_text())
    for source in ROOT.glob("plugin/*.*"):
        for name in re.findall(r"^#include <maya/(.*)>", source.read_text(), re.M):
            (headers / name).write_text('#include "declarations.h"\n')
    (headers / "MTypes.h").write_text(f"#define MAYA_API_VERSION {VERSION}\n")
    with open(headers / "MFnPlugin.h", "a") as header:
        header.write(f'#pragma once\n__attribute__((visibility("default"))) char MApiVersion[] = "{VERSION}";\n')
    library("").parent.mkdir(parents=True)
    for name in LIBRARIES:
        library(name).touch()


def configure():
    pretence = WORK / "pretence.cmake"
    pretence.write_text("set(APPLE TRUE)\nset(CMAKE_FIND_LIBRARY_SUFFIXES .dylib .so)\n"
                        f"set(OPENGL_INCLUDE_DIR {WORK})\n" if LAYOUT == "macos" else "")
    run(CMAKE, "-S", ROOT, "-B", BUILD, "-G", "Ninja", f"-DTESSORA_MAYA_DEVKIT={KIT}", "-DCMAKE_CXX_FLAGS=-O0",
        "-DCMAKE_MODULE_LINKER_FLAGS=-Wl,--no-undefined", f"-DCMAKE_PROJECT_tessora_INCLUDE={pretence}",
        *(f"-DCMAKE_TOOLCHAIN_FILE={file}" for file in TOOLCHAIN))
    cache = (BUILD / "CMakeCache.txt").read_text()
    for name in LIBRARIES:
        if f"MAYA_{name}_LIBRARY:FILEPATH={library(name)}\n" not in cache:
            sys.exit(f"{library(name)} was not found")


def undefined_names(objects):
    """(name, demangled name) of each symbol that the objects use but do not define, in order."""
    plain, readable = (run(TOOLS + "nm", "-u", "-p", "-P", *form, *objects).splitlines() for form in ([], ["-C"]))
    return sorted({(a.split()[0], b.rsplit(" U", 1)[0].strip()) for a, b in zip(plain, readable)
                   if not a.endswith(":")})


def wanted_names(objects):
    """Library -> C declarations of the symbols that the plug-in uses from the host."""
    classes = set(re.findall(r"(?:class |DEVKIT_ARRAY\()(M\w+)", (HERE / "declarations.h").read_text()))
    stubs = {name: [] for name in LIBRARIES}
    for name, readable in undefined_names(objects):
        match = HOST_NAME.match(readable)
        if not match or match[1] not in classes:
            continue
        owner, call = match.groups()
        home = "OpenMayaUI" if owner in OF_THE_UI else "OpenMayaRender" if owner in OF_RENDERING \
            else "Foundation" if owner in OF_THE_FOUNDATION else "OpenMaya"
        stubs[home].append(f"void {name}(void) {{}}" if call else f"char {name}[64];")
    return stubs


def make_libraries():
    listing = run("ninja", "-C", BUILD, "-t", "targets", "all")
    objects = re.findall(r"^(plugin/CMakeFiles/tessora_plugin(?:_engine|_overlay)?\.dir/.*\.(?:o|obj)):", listing, re.M)
    run("ninja", "-C", BUILD, *objects)
    for name, lines in wanted_names([BUILD / path for path in objects]).items():
        if not lines:
            sys.exit(f"the plug-in takes nothing from {name}")
        source = WORK / f"{name}.c"
        source.write_text("\n".join(lines) + "\n")
        made = ["-o", library(name), f"-Wl,-soname,{library(name).name}"]
        if LAYOUT == "windows":
            made = ["-o", WORK / f"{name}.dll", f"-Wl,--out-implib,{library(name)}"]
        run(TOOLS + "gcc", "-w", "-shared", "-fPIC", source, *made)


def exported(plugin):
    if LAYOUT == "windows":
        listing = run(TOOLS + "objdump", "-p", plugin).split("[Ordinal/Name Pointer] Table")[1]
        return re.findall(r"^\s+\[ *\d+\] (\S+)$", listing, re.M)
    return [line.split()[-1] for line in run("nm", "-D", "--defined-only", plugin).splitlines()]


def check_plugin():
    plugin = BUILD / "bin" / ("tessora.mll" if LAYOUT == "windows" else "tessora.so")
    needed = run(TOOLS + "objdump", "-p", plugin).split("\n", 2)[2] # without the file's name
    for name in LIBRARIES:
        if not re.search(rf"(DLL Name:|NEEDED) +(lib)?{name}\.", needed):
            sys.exit(f"{plugin} does not need {name}\n{needed}")
    object_type = "7MObject" if ERA == 2008 else "N16OpenMaya202300007MObjectE"
    mangled = {"windows": "{1}"}.get(LAYOUT, "_Z{0}{1}" + object_type)
    entries = [mangled.format(len(name), name) for name in ("initializePlugin", "uninitializePlugin")]
    if sorted(exported(plugin)) != sorted(["MApiVersion"] + entries):
        sys.exit(f"{plugin} exports {exported(plugin)}")
    if str(WORK) in needed:
        sys.exit(f"{plugin} would look for libraries where it was built\n{needed}")
    if VERSION.encode() + b"\0" not in plugin.read_bytes():
        sys.exit(f"{plugin} does not hold the kit's version {VERSION}")


def check_module(folder, plugin):
    """Checks what the application reads to find the plug-in in the unpacked package `folder`."""
    platform = {"windows": "win64", "linux": "linux", "macos": "mac"}[LAYOUT]
    module = (folder / "tessora.mod").read_text()
    line = re.fullmatch(r"\+ MAYAVERSION:(\d{4}) PLATFORM:(\w+) Tessora (\d+(?:\.\d+)+) (\./\S+)\n", module)
    if not line or line.group(1, 2) != (VERSION[:4], platform):
        sys.exit(f"tessora.mod does not fit: {module}")
    contents = folder / line[4] if LAYOUT != "macos" else None
    package = folder / "tessora" / "PackageContents.xml" if contents else folder / "PackageContents.xml"
    root = xml.etree.ElementTree.parse(package).getroot()
    system = root.find("Components/RuntimeRequirements").attrib
    entry = root.find("Components/ComponentEntry").attrib
    wanted = {"OS": platform, "Platform": "Maya", "SeriesMin": VERSION[:4], "SeriesMax": VERSION[:4]}
    if system != wanted or root.tag != "ApplicationPackage" or root.attrib["AppVersion"] != line[3] \
            or entry != {"AppName": "Tessora", "Version": line[3], "AutoLoadOnce": "True",
                         "ModuleName": f"./Contents/plug-ins/{plugin}"}:
        sys.exit(f"PackageContents.xml does not fit: {package.read_text()}")
    if contents is None:
        return
    found = {str(path.relative_to(contents)) for path in contents.rglob("*") if path.is_file()}
    scripts = {f"scripts/{path.name}" for path in (ROOT / "scripts").glob("*.mel")}
    atlas = {f"plug-ins/{path.name}" for path in (BUILD / "bin").glob("*d3dx9*") if path.suffix in (".so", ".dll")}
    if found != scripts | atlas | {f"plug-ins/{plugin}"} or (package.parent / entry["ModuleName"]).parent != \
            contents / "plug-ins":
        sys.exit(f"the package holds {sorted(found)}")
    if LAYOUT == "linux" and "$ORIGIN]" not in run("readelf", "-d", contents / "plug-ins" / plugin):
        sys.exit("the plug-in does not look for the atlas library beside itself")


def check_package():
    run(pathlib.Path(CMAKE).with_name("cpack"), "--config", BUILD / "CPackConfig.cmake", "-B", WORK / "packages")
    archive, = (path for path in (WORK / "packages").iterdir() if path.is_file())
    if not archive.name.startswith("tessora-") or f"-maya{VERSION[:4]}-" not in archive.name:
        sys.exit(f"the package is called {archive.name}")
    unpacked = WORK / "unpacked"
    shutil.unpack_archive(archive, unpacked)
    check_module(unpacked, "tessora.mll" if LAYOUT == "windows" else "tessora.so")


def main():
    shutil.rmtree(WORK, ignore_errors=True)
    write_kit()
    configure()
    if LAYOUT == "macos":
        if "tessora.bundle" not in (BUILD / "build.ninja").read_text():
            sys.exit("no tessora.bundle would be built")
        check_module(BUILD / "studio", "tessora.bundle")
        return
    make_libraries()
    run(CMAKE, "--build", BUILD, "--target", "tessora_plugin")
    check_plugin()
    check_package()


if __name__ == "__main__":
    main()
