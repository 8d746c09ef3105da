#!/usr/bin/env python3
"""Prints where two platforms disagree about which triangles are neighbours.

    tools/compare_adjacency.py DUMP_A DUMP_B MESH...

DUMP is the path of the program adjacency_dump in a build; one that ends in .exe runs through
tools/with_wine.sh. Exit code 1 if a difference has none of the known causes: an edge with three or more
triangles, two triangles that traverse an edge in the same direction, a triangle that uses an edge twice."""

import argparse
import array
import pathlib
import subprocess
import sys
import tempfile

WITH_WINE = pathlib.Path(__file__).resolve().parent / "with_wine.sh"
KINDS = ("three or more triangles", "same direction", "one triangle twice", "unexplained")


def dump(program, mesh, folder):
    out = folder / "adjacency.bin"
    command = ([str(WITH_WINE)] if program.suffix == ".exe" else []) + [str(program)]
    subprocess.run(command + [str(mesh), str(out)], check=True, timeout=600)
    words = array.array("I", out.read_bytes())
    count = words[0]
    return words[1:1 + 3 * count], words[1 + 3 * count:]


def users_of_edges(corners):
    """Maps each undirected edge to its triangles: [(triangle, whether it traverses the edge from the lower to
    the higher vertex)]."""
    users = {}
    for triangle in range(len(corners) // 3):
        for k in range(3):
            a, b = corners[3 * triangle + k], corners[3 * triangle + (k + 1) % 3]
            users.setdefault((min(a, b), max(a, b)), []).append((triangle, a < b))
    return users


def kind_of(uses):
    if len({triangle for triangle, _ in uses}) < len(uses):
        return KINDS[2]
    if len(uses) > 2:
        return KINDS[0]
    if len(uses) == 2 and uses[0][1] == uses[1][1]:
        return KINDS[1]
    return KINDS[3]


def compare(corners, a, b):
    """Counts the differing entries by kind; also returns the first of each kind as (index of the entry,
    triangles of its edge, entry of a, entry of b)."""
    counts, firsts = dict.fromkeys(KINDS, 0), {}
    users = users_of_edges(corners)
    for entry, (x, y) in enumerate(zip(a, b)):
        if x == y:
            continue
        triangle, k = divmod(entry, 3)
        v, w = corners[entry], corners[3 * triangle + (k + 1) % 3]
        uses = users[min(v, w), max(v, w)]
        kind = kind_of(uses)
        counts[kind] += 1
        firsts.setdefault(kind, (entry, uses, x, y))
    return counts, firsts


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("programs", nargs=2, type=pathlib.Path)
    parser.add_argument("meshes", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args()
    print("| mesh | triangles | entries that differ | " + " | ".join(KINDS) + " |")
    print("|---|---|---|---|---|---|---|")
    unexplained = 0
    for mesh in arguments.meshes:
        with tempfile.TemporaryDirectory() as folder:
            (corners, a), (same, b) = (dump(program.resolve(), mesh.resolve(), pathlib.Path(folder))
                                       for program in arguments.programs)
        if corners != same:
            print(f"{mesh.stem}: the triangles themselves differ", file=sys.stderr)
            return 1
        counts, _ = compare(corners, a, b)
        unexplained += counts[KINDS[3]]
        print(f"| {mesh.stem} | {len(corners) // 3} | {sum(counts.values())} | "
              + " | ".join(str(counts[kind]) for kind in KINDS) + " |", flush=True)
    return 1 if unexplained else 0


if __name__ == "__main__":
    sys.exit(main())
