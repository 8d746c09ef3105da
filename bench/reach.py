#!/usr/bin/env python3
"""Compares the texture coordinates that come out of every way to the engine, bit by bit.

    /usr/bin/python3 bench/reach.py [--build build/release] [--web web] FILE.obj...
    /usr/bin/python3 bench/reach.py --blender FILE.obj... the add-on against the Python package, on Blender's arrays
    /usr/bin/python3 bench/reach.py --cost FILE.obj...   what an import and a call cost in Python and Node

Prints a table: the SHA-256 of the coordinates (float32, little-endian, per corner of the polygons in file order)
as read back from what `tessora unwrap` writes, and "same" or the other hash for the C library (by ctypes), the
Python package, Node and headless Chromium, in both modes. Ways that are not built are left out: C and Python
need /usr/bin/python3 with numpy, Node and Chromium the package of ./check --web. Exit code 1 if any hash
differs."""

import argparse
import hashlib
import os
import pathlib
import resource
import statistics
import subprocess
import sys
import tempfile
import time

import numpy

ROOT = pathlib.Path(__file__).resolve().parents[1]
MODES = ("fast", "quality")


class Mesh:
    """Polygons and texture coordinates of an OBJ file; lines it does not know are skipped."""

    def __init__(self, path):
        vertices, corners, counts, uvs, corner_uvs = [], [], [], [], []
        text = pathlib.Path(path).read_text(errors="replace").replace("\\\n", " ")  # continued lines
        for line in text.splitlines():
            words = line.split()
            if not words:
                continue
            if words[0] == "v":
                vertices.append([float(word) for word in words[1:4]])
            elif words[0] == "vt":
                uvs.append([float(word) for word in words[1:3]])
            elif words[0] == "f":
                counts.append(len(words) - 1)
                for word in words[1:]:
                    ids = word.split("/")
                    vertex = int(ids[0])
                    corners.append(vertex - 1 if vertex > 0 else len(vertices) + vertex)
                    corner_uvs.append(int(ids[1]) - 1 if len(ids) > 1 and ids[1] else 0)
        self.positions = numpy.array(vertices)
        self.corners = numpy.array(corners, numpy.uint32)
        self.offsets = numpy.concatenate([[0], numpy.cumsum(counts)]).astype(numpy.uint32)
        self.uvs = numpy.array(uvs, numpy.float32).reshape(-1, 2)
        self.corner_uvs = self.uvs[corner_uvs] if uvs else None


def digest(uvs):
    return hashlib.sha256(numpy.ascontiguousarray(uvs, "<f4").tobytes()).hexdigest()


def from_program(build):
    def way(path, mesh, mode):
        with tempfile.TemporaryDirectory() as folder:
            out = pathlib.Path(folder) / "out.obj"
            done = subprocess.run([build / "bin/tessora", "unwrap", path, "-o", out] +
                                  (["--high_quality"] if mode == "quality" else []), capture_output=True, text=True)
            if not out.exists():
                sys.exit(f"reach: {path}: {done.stderr.strip()}")
            return digest(Mesh(out).corner_uvs)
    return way


def from_c(build):
    """The C library by ctypes, through the same file as in Blender."""
    sys.path.insert(0, str(ROOT / "blender/tessora_uv"))
    import engine
    library = engine.Engine(str(build / "bin/libtessora_atlas.so.1"))

    def way(path, mesh, mode):
        return digest(library.unwrap(engine.Mesh(mesh.positions, mesh.corners, mesh.offsets),
                                     quality=MODES.index(mode)).uvs)
    return way


def from_python(build):
    sys.path.insert(0, str(build / "python"))
    import tessora

    def way(path, mesh, mode):
        return digest(tessora.unwrap(mesh.positions, mesh.corners, offsets=mesh.offsets, quality=mode,
                                     threads=1).corner_uvs)
    return way


def from_web(web, files, *flags):
    """web/tools/hash_uvs.mjs prints a line for each file, the hash first. All files in one run per mode."""
    hashes = {}

    def way(path, mesh, mode):
        if mode not in hashes:
            done = subprocess.run(["node", web / "tools/hash_uvs.mjs", *flags] +
                                  (["--quality"] if mode == "quality" else []) +
                                  [pathlib.Path(file).resolve() for file in files], cwd=web, capture_output=True, text=True)
            lines = done.stdout.splitlines() if done.returncode == 0 else ["failed"] * len(files)
            hashes[mode] = dict(zip(files, (line.split()[0] for line in lines)))
        return hashes[mode][path]
    return way


def ways(build, web, files):
    found = {}
    if (build / "bin/libtessora_atlas.so.1").exists():
        found["C"] = from_c(build)
    if (build / "python/tessora").exists():
        found["Python"] = from_python(build)
    if (web / "dist").exists():
        found["Node"] = from_web(web, files)
        found["Chromium"] = from_web(web, files, "--chromium")
    return found


def compare(files, build, web):
    program, others = from_program(build), ways(build, web, files)
    print("| mesh | corners | mode | program | " + " | ".join(others) + " |")
    print("|---|---|---|---|" + "---|" * len(others), flush=True)
    differing = 0
    for path in files:
        mesh = Mesh(path)
        for mode in MODES:
            expected = program(path, mesh, mode)
            hashes = [way(path, mesh, mode) for way in others.values()]
            differing += sum(value != expected for value in hashes)
            cells = ["same" if value == expected else f"**{value[:16]}**" for value in hashes]
            print(f"| {pathlib.Path(path).stem} | {len(mesh.corners):,} | {mode} | `{expected[:16]}` | "
                  + " | ".join(cells) + " |", flush=True)
    return 1 if differing else 0


def compare_blender(files, build):
    addon, = build.glob("tessora_uv-*.zip")
    script = pathlib.Path(__file__).with_name("reach_blender.py")
    print("| mesh | corners | mode | Python | Blender |\n|---|---|---|---|---|", flush=True)
    wrong = 0
    for mode in MODES:
        with tempfile.TemporaryDirectory() as profile:
            # Debian's Blender finds its modules by the first python3 on the path.
            environment = {**os.environ, "PATH": "/usr/bin:" + os.environ["PATH"],
                           "BLENDER_USER_CONFIG": profile + "/config", "BLENDER_USER_SCRIPTS": profile + "/scripts"}
            done = subprocess.run(["blender", "-b", "--factory-startup", "--python-exit-code", "3", "--python", script, "--",
                                   build, addon, mode, *files], env=environment, capture_output=True, text=True)
        rows = [line.split(maxsplit=4)[1:] for line in done.stdout.splitlines() if line.startswith("reach: ")]
        for blender, package, corners, path in rows:
            cell = "same" if blender == package else f"**{blender[:16]}**"
            cell = "holds no such polygon" if package == "-" else cell
            print(f"| {pathlib.Path(path).stem} | {int(corners):,} | {mode} | `{package[:16]}` | {cell} |", flush=True)
        wrong += sum(row[0] != row[1] for row in rows)
        if done.returncode or len(rows) != len(files):
            sys.exit(f"reach: Blender failed: {done.stdout[-2000:]}{done.stderr[-2000:]}")
    return 1 if wrong else 0


def cpu(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def import_cost(build):
    imports = {"numpy": [], "numpy and tessora": []}
    for _ in range(9):
        for name, code in (("numpy", "import numpy"),
                           ("numpy and tessora", f"import sys; sys.path.insert(0, {str(build / 'python')!r}); import numpy, tessora")):
            imports[name].append(cpu([sys.executable, "-c", code]))
    least = {name: min(times) for name, times in imports.items()}
    print(f"import: numpy {least['numpy']:.3f} CPU s, with tessora {least['numpy and tessora']:.3f}, "
          f"so {least['numpy and tessora'] - least['numpy']:.3f} more")


def timed(way, path, mesh):
    start = time.process_time()
    way(path, mesh, "fast")
    return time.process_time() - start


def node_calls(web, path):
    """CPU seconds of the first three calls of a new process."""
    done = subprocess.run(["node", web / "tools/hash_uvs.mjs"] + 3 * [pathlib.Path(path).resolve()], cwd=web,
                          capture_output=True, text=True, check=True)
    return [float(line.split()[2]) for line in done.stdout.splitlines()]


def cost(files, build, web):
    """Interleaved runs; the least and the median of each, since other work mostly adds time."""
    import_cost(build)
    native, package = from_c(build), from_python(build)
    print("| mesh, fast, one thread | C | Python | Node, first call | later calls |\n|---|---|---|---|---|", flush=True)
    for path in files:
        mesh, calls = Mesh(path), {"C": [], "Python": [], "first": [], "later": []}
        for _ in range(5):
            calls["C"].append(timed(native, path, mesh))
            calls["Python"].append(timed(package, path, mesh))
            if (web / "dist").exists():
                first, *later = node_calls(web, path)
                calls["first"].append(first)
                calls["later"].append(min(later))
        cells = [pathlib.Path(path).stem]
        for times in filter(None, calls.values()):
            least, median = min(times), statistics.median(times)
            cells.append(f"{least:.3f} / {median:.3f} ({least / min(calls['C']):.2f} / "
                         f"{median / statistics.median(calls['C']):.2f})")
        print("| " + " | ".join(cells) + " |", flush=True)
    return 0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("files", nargs="+", metavar="FILE.obj")
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/release")
    parser.add_argument("--web", type=pathlib.Path, default=ROOT / "web")
    parser.add_argument("--cost", action="store_true", help="what an import and a call cost in Python and Node")
    parser.add_argument("--blender", action="store_true", help="the add-on against the Python package")
    words = parser.parse_args()
    build, web = words.build.resolve(), words.web.resolve()
    if words.blender:
        return compare_blender(words.files, build)
    return cost(words.files, build, web) if words.cost else compare(words.files, build, web)


if __name__ == "__main__":
    sys.exit(main())
