#!/usr/bin/env python3
"""Measures how cost grows with mesh size: time per stage and peak memory per triangle, from a thousand
triangles to a million, by subdividing a mesh (more triangles on the same shape) and by replicating
it (more copies of the shape), with the fitted exponent.

    bench/growth.py
    bench/growth.py --max 200000 --high_quality
    bench/growth.py --mesh horse.obj --ways replicate
    bench/growth.py --shapes

The default mesh is a generated bumpy torus. --shapes instead compares the cost per corner of
collecting and applying for two hard shapes (a vertex of 20,000 triangles, a polygon of 100,000
corners) with that of a plain mesh."""

import argparse
import math
import pathlib
import sys
import tempfile

import unwrap_runs as runs

STAGES = ["read", "collect", "generate", "apply", "verify", "write"]
FIT_FROM = 10_000  # triangles; below this, constant costs dominate


def torus(rings, sides):
    """Vertices and triangles of a torus with bumps."""
    points = []
    for i in range(rings):
        for j in range(sides):
            a, b = 2 * math.pi * i / rings, 2 * math.pi * j / sides
            radius = 0.35 + 0.08 * math.sin(5 * a) * math.cos(3 * b)
            around = 1.0 + radius * math.cos(b)
            points.append((around * math.cos(a), around * math.sin(a), radius * math.sin(b)))
    at = lambda i, j: (i % rings) * sides + j % sides
    triangles = []
    for i in range(rings):
        for j in range(sides):
            a, b, c, d = at(i, j), at(i + 1, j), at(i + 1, j + 1), at(i, j + 1)
            triangles += [(a, b, c), (a, c, d)]
    return points, triangles


def read_triangles(path):
    points, triangles = [], []
    for line in pathlib.Path(path).read_text(errors="replace").splitlines():
        words = line.split()
        if words[:1] == ["v"]:
            points.append(tuple(map(float, words[1:4])))
        elif words[:1] == ["f"]:
            ids = [int(word.split("/")[0]) for word in words[1:]]
            ids = [i - 1 if i > 0 else len(points) + i for i in ids]
            triangles += [(ids[0], ids[k - 1], ids[k]) for k in range(2, len(ids))]
    return points, triangles


def subdivide(points, triangles):
    """Splits every triangle into four at the midpoints of its edges."""
    points, middles, result = list(points), {}, []

    def middle(a, b):
        key = (a, b) if a < b else (b, a)
        if key not in middles:
            middles[key] = len(points)
            points.append(tuple((x + y) / 2 for x, y in zip(points[a], points[b])))
        return middles[key]

    for a, b, c in triangles:
        ab, bc, ca = middle(a, b), middle(b, c), middle(c, a)
        result += [(a, ab, ca), (ab, b, bc), (ca, bc, c), (ab, bc, ca)]
    return points, result


def replicate(points, triangles, count):
    """Copies side by side."""
    low, high = (f(p[0] for p in points) for f in (min, max))
    step = 1.2 * (high - low)
    many, result = [], []
    for i in range(count):
        first = len(many)
        many += [(x + i * step, y, z) for x, y, z in points]
        result += [(a + first, b + first, c + first) for a, b, c in triangles]
    return many, result


def circle(count):
    return [(math.cos(2 * math.pi * i / count), math.sin(2 * math.pi * i / count), 0.0)
            for i in range(count)]


def double_cone(count):
    """Two apexes, each with `count` triangles."""
    ring = [(i, (i + 1) % count) for i in range(count)]
    return (circle(count) + [(0.0, 0.0, 1.0), (0.0, 0.0, -1.0)],
            [(a, b, count) for a, b in ring] + [(b, a, count + 1) for a, b in ring])


def write_obj(path, points, polygons):
    with open(path, "w") as file:
        file.writelines("v %.9g %.9g %.9g\n" % p for p in points)
        file.writelines("f %s\n" % " ".join(str(i + 1) for i in p) for p in polygons)


def sizes_of(way, base, max_triangles):
    """Yields meshes of growing size up to `max_triangles`, starting with the base."""
    points, triangles = base
    yield base
    count = 1
    while len(triangles) * 4 <= max_triangles * 1.05:
        if way == "subdivide":
            points, triangles = subdivide(points, triangles)
        else:
            count *= 4
            points, triangles = replicate(*base, count)
        yield points, triangles


def run_shapes(program, limit):
    """Prints nanoseconds per corner, absolute and relative to the first row."""
    shapes = [("torus", torus(256, 128)), ("valence 20,000", double_cone(20_000)),
              ("polygon of 100,000", (circle(100_000), [tuple(range(100_000))]))]
    rows, first = [], None
    with tempfile.TemporaryDirectory(prefix="growth.") as folder:
        for name, (points, polygons) in shapes:
            mesh = pathlib.Path(folder) / "mesh.obj"
            write_obj(mesh, points, polygons)
            best = math.inf
            for _ in range(5):
                run, report = runs.unwrap(program, mesh, mesh.with_name("out.obj"), [], limit)
                if run.code != 0:
                    print(f"{name}: exit {run.code}: {run.text.strip()[:200]}")
                    return False
                best = min(best, report["seconds"]["collect"] + report["seconds"]["apply"])
            corners = sum(map(len, polygons))
            cost = 1e9 * best / corners
            first = first or cost
            rows.append([name, corners, f"{cost:.0f}", f"{cost / first:.2f}"])
    print("collect + apply, best of 5")
    runs.print_table(["shape", "corners", "ns/corner", "ratio"], rows)
    return True


def measure_way(program, way, base, options, words):
    """Unwraps meshes of growing size. Returns table rows, triangle counts, costs by name, and whether
    all unwraps succeeded."""
    rows, counts = [], []
    costs = {"generate": [], "collect + apply": [], "all": []}
    with tempfile.TemporaryDirectory(prefix="growth.") as folder:
        for points, triangles in sizes_of(way, base, words.max):
            mesh = pathlib.Path(folder) / "mesh.obj"
            write_obj(mesh, points, triangles)
            run, report = runs.unwrap(program, mesh, mesh.with_name("out.obj"), options,
                                      words.limit)
            n = len(triangles)
            print(f"{way}: {n} triangles: {run.seconds:.1f} s", file=sys.stderr)
            if run.code != 0:
                print(f"{way}: {n} triangles: exit {run.code}: {run.text.strip()[:200]}")
                return rows, counts, costs, False
            seconds = report["seconds"]
            rows.append([n, report["charts"]] + [f"{seconds.get(s, 0):.3f}" for s in STAGES] +
                        [f"{n / run.seconds:.0f}", f"{report['peak_mb']:.0f}",
                         f"{report['peak_mb'] * 2**20 / n:.0f}"])
            counts.append(n)
            costs["all"].append(run.seconds)
            costs["generate"].append(seconds["generate"])
            costs["collect + apply"].append(seconds["collect"] + seconds["apply"])
    return rows, counts, costs, True


def print_way(way, rows, counts, costs):
    print(f"\n{way} (seconds per stage)")
    runs.print_table(["triangles", "charts"] + STAGES +
                     ["triangles/s", "peak MiB", "bytes/triangle"], rows)
    fit = [i for i, n in enumerate(counts) if n >= FIT_FROM]
    if len(fit) > 1:
        for name, cost in costs.items():
            exponent = runs.growth_exponent([counts[i] for i in fit], [cost[i] for i in fit])
            print(f"exponent of {name} from {counts[fit[0]]} triangles: {exponent:.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", help="the tessora program; default: build/release/bin/tessora")
    parser.add_argument("--mesh", help="OBJ file to start from")
    parser.add_argument("--max", type=int, default=1_050_000, help="maximum number of triangles")
    parser.add_argument("--ways", default="subdivide,replicate")
    parser.add_argument("--high_quality", action="store_true")
    parser.add_argument("--limit", type=int, default=1800, help="seconds for one unwrap")
    parser.add_argument("--shapes", action="store_true", help="hard shapes instead of growing ones")
    words = parser.parse_args()
    program = runs.find_program(words.program)
    if words.shapes:
        return 0 if run_shapes(program, words.limit) else 1
    base = read_triangles(words.mesh) if words.mesh else torus(32, 16)
    # A large texture, so that gutters do not limit the number of charts.
    options = ["--width", 4096, "--height", 4096] + (["--high_quality"] if words.high_quality else [])
    good = True
    for way in words.ways.split(","):
        rows, counts, costs, has_succeeded = measure_way(program, way, base, options, words)
        print_way(way, rows, counts, costs)
        good = good and has_succeeded
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
