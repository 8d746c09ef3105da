"""Shared by the benchmark scripts: running the program, measuring written files, printing tables."""

import json
import math
import os
import pathlib
import re
import subprocess
import time


class Run:
    """One finished command."""

    def __init__(self, words, timeout):
        begin = time.monotonic()
        process = subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        try:
            out, _ = process.communicate(timeout=timeout)
        except subprocess.TimeoutExpired:
            process.kill()
            out, _ = process.communicate()
            out += b"\n(ended after %d s)" % timeout
        self.seconds = time.monotonic() - begin
        self.code = process.returncode
        self.text = out.decode(errors="replace")


def unwrap(program, mesh, output, options, timeout=900):
    """Unwraps `mesh` into `output`; returns the Run and the report (None without one)."""
    report = pathlib.Path(str(output) + ".json")
    report.unlink(missing_ok=True)
    run = Run([str(program), "unwrap", str(mesh), "-o", str(output), "--report", str(report),
               "--quiet", *map(str, options)], timeout)
    return run, json.loads(report.read_text()) if report.exists() else None


def measure(program, mesh, width, height, stretch, timeout=900):
    """Measures a written file; independent of any report."""
    run = Run([str(program), "measure", str(mesh), "--json", "--per_chart", "--width", str(width),
               "--height", str(height), "--stretch", str(stretch)], timeout)
    if run.code != 0:
        raise RuntimeError(f"{mesh}: cannot be measured: {run.text}")
    return json.loads(run.text[run.text.index("{"):])["measures"]


def models_in(folder, only):
    """OBJ files by size, smallest first; `only` is a comma-separated list of names or empty."""
    files = sorted(pathlib.Path(folder).glob("*.obj"), key=lambda f: (f.stat().st_size, f.name))
    if only:
        names = only.split(",")
        unknown = set(names) - {f.stem for f in files}
        if unknown:
            raise SystemExit(f"no such model: {', '.join(sorted(unknown))}")
        files = [f for f in files if f.stem in names]
    if not files:
        raise SystemExit(f"{folder}: no OBJ files")
    return files


def has_uvs(mesh):
    """True when a face of the file names a texture coordinate."""
    return re.search(rb"^\s*f\s.*?\d/-?\d", pathlib.Path(mesh).read_bytes(), re.M) is not None


def gutter_capacity(width, height, padding):
    """Upper bound of the number of charts that fit with this gutter, even if each is a point: grid
    points spaced by the gutter, in the texture less the margin along its sides."""
    if padding == 0:
        return math.inf
    share = 1.0 - padding / min(width, height)
    if share <= 0.0:
        return 0
    return ((math.floor(width * share / padding) + 1) *
            (math.floor(height * share / padding) + 1))


def geometric_mean(values):
    values = list(values)
    return math.exp(sum(map(math.log, values)) / len(values)) if values else math.nan


def growth_exponent(sizes, costs):
    """Slope of the least-squares line through log cost over log size."""
    xs, ys = [math.log(s) for s in sizes], [math.log(c) for c in costs]
    mean_x, mean_y = sum(xs) / len(xs), sum(ys) / len(ys)
    spread = sum((x - mean_x) ** 2 for x in xs)
    return sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys)) / spread


def print_table(header, rows, left=1):
    """Prints aligned columns; the first `left` ones and the last are left-aligned."""
    cells = [header] + [[str(cell) for cell in row] for row in rows]
    widths = [max(len(row[i]) for row in cells) for i in range(len(header))]
    for row in cells:
        line = "  ".join(cell.ljust(w) if i < left or i == len(row) - 1 else cell.rjust(w)
                         for i, (cell, w) in enumerate(zip(row, widths)))
        print(line.rstrip(), flush=True)


def find_program(path):
    """The program at `path`, by default the release build."""
    root = pathlib.Path(__file__).resolve().parent.parent
    program = pathlib.Path(path) if path else root / "build" / "release" / "bin" / "tessora"
    if not os.access(program, os.X_OK):
        raise SystemExit(f"{program}: no such program; build it or name it with --program")
    return program
