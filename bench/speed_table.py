#!/usr/bin/env python3
"""Prints what `tessora unwrap` costs on meshes beside the figures of an earlier release.

    speed_table.py [--program BIN/tessora] [--beside FILE.tsv] [--save FILE.tsv]
                   [--quality] [--count] [--repeat N] MESH.obj...

CPU seconds (best of N) and peak memory depend on the machine; --count adds instructions, counted by valgrind's
callgrind, which do not: those inside the engine's create(), and those beside it (reading, exchanging the mesh
with the plug-in, verifying, writing). --save writes a file for --beside, of which bench/speed_before.tsv is one."""

import argparse
import json
import os
import pathlib
import re
import resource
import subprocess
import sys
import tempfile

COLUMNS = ["mesh", "mode", "triangles", "cpu_s", "bytes_per_triangle", "engine_Minstr", "beside_Minstr"]
HIGHER_IS_MORE = COLUMNS[3:]


def command(program, mesh, mode, folder):
    words = [program, "unwrap", mesh, "-o", f"{folder}/out.obj", "--report", f"{folder}/out.json", "--quiet"]
    return words + (["--high_quality"] if mode == "quality" else [])


def cpu_of(words):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(words, check=True)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def count(words, folder):
    """Millions of instructions inside the engine and beside it."""
    profile = f"{folder}/profile"
    subprocess.run(["valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}", *words], check=True,
                   stderr=subprocess.DEVNULL)
    text = subprocess.run(["callgrind_annotate", "--inclusive=yes", profile], check=True, text=True,
                          capture_output=True).stdout
    total = engine = 0
    for line in text.splitlines():
        number = re.match(r"\s*([\d,]+) ", line)
        if not number:
            continue
        value = int(number[1].replace(",", "")) / 1e6
        if "PROGRAM TOTALS" in line:
            total = value
        elif "tessora::atlas::create(" in line and not engine:
            engine = value
    return engine, total - engine


def measure(program, mesh, mode, request):
    with tempfile.TemporaryDirectory() as folder:
        words = command(program, mesh, mode, folder)
        cpu = min(cpu_of(words) for _ in range(request.repeat))
        report = json.loads(pathlib.Path(folder, "out.json").read_text())
        triangles = report["triangles"]
        row = {"mesh": pathlib.Path(mesh).stem, "mode": mode, "triangles": triangles, "cpu_s": round(cpu, 3),
               "bytes_per_triangle": round(report["peak_mb"] * 1048576 / triangles)}
        if request.count:
            row["engine_Minstr"], row["beside_Minstr"] = (round(n, 1) for n in count(words, folder))
    return row


def read_table(path):
    lines = [line.split("\t") for line in pathlib.Path(path).read_text().splitlines() if not line.startswith("#")]
    rows = [dict(zip(lines[0], line)) for line in lines[1:]]
    return {(row["mesh"], row["mode"]): row for row in rows}


def cell(row, earlier, column):
    now, then = row.get(column), (earlier or {}).get(column)
    if now in (None, ""):
        return "-"
    if column not in HIGHER_IS_MORE or then in (None, ""):
        return str(now)
    return f"{now} ({float(now) / float(then):.2f} x {then})"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    here = pathlib.Path(__file__).parent
    parser.add_argument("--program", default=str(here.parent / "build/release/bin/tessora"))
    parser.add_argument("--beside", default=str(here / "speed_before.tsv"))
    parser.add_argument("--save")
    parser.add_argument("--quality", action="store_true", help="quality mode as well")
    parser.add_argument("--count", action="store_true", help="count instructions (valgrind)")
    parser.add_argument("--repeat", type=int, default=5)
    parser.add_argument("meshes", nargs="+")
    request = parser.parse_args()
    earlier = read_table(request.beside) if os.path.exists(request.beside) else {}
    rows = []
    print("\t".join(COLUMNS))
    for mesh in request.meshes:
        for mode in ["fast", "quality"] if request.quality else ["fast"]:
            row = measure(request.program, mesh, mode, request)
            rows.append(row)
            print("\t".join(cell(row, earlier.get((row["mesh"], mode)), column) for column in COLUMNS), flush=True)
    if request.save:
        lines = ["\t".join(COLUMNS)] + ["\t".join(str(row.get(c, "")) for c in COLUMNS) for row in rows]
        pathlib.Path(request.save).write_text("\n".join(lines) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
