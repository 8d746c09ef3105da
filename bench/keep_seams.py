#!/usr/bin/env python3
"""Unwraps models with --keep_seams and any stretch, and compares the charts with the islands of the
models' own UVs: an island that is a disc or a planar ring must stay one chart. Lists the others.

    bench/keep_seams.py MODELS --only spot_control,sportsuit,human_base
    bench/keep_seams.py MODELS --high_quality

Exits with 1 if a disc or planar ring was cut. An island that is neither (closed, with a handle, one whose
edges have more than two faces) has to be cut."""

import argparse
import collections
import pathlib
import sys
import tempfile

import unwrap_runs as runs


def read_faces(path):
    """Per face, its corners as pairs (vertex, UV); UV is 0 if the corner has none."""
    faces, points, uvs, words = [], 0, 0, []
    for line in path.read_text(errors="replace").splitlines():
        words = words[:-1] + line.split() if words[-1:] == ["\\"] else line.split()
        if not words or words[-1] == "\\":
            continue
        points += words[0] == "v"
        uvs += words[0] == "vt"
        if words[0] == "f":
            corners = []
            for word in words[1:]:
                v, t = (word.split("/") + [""])[:2]
                v, t = int(v), int(t or 0)
                corners.append((v if v > 0 else points + 1 + v, t if t >= 0 else uvs + 1 + t))
            faces.append(corners)
    return faces


def edges_of(face):
    return list(zip(face, face[1:] + face[:1]))


class Sets:
    """Disjoint sets of anything hashable."""

    def __init__(self):
        self.parent = {}

    def find(self, x):
        root = x
        while self.parent.setdefault(root, root) != root:
            root = self.parent[root]
        while self.parent[x] != root:
            self.parent[x], x = root, self.parent[x]
        return root

    def join(self, a, b):
        self.parent[self.find(a)] = self.find(b)


def islands_of(faces):
    """Per face, the number of its island: faces that share an edge with its UVs hang together."""
    users = collections.defaultdict(list)
    for f, face in enumerate(faces):
        for a, b in edges_of(face):
            users[min(a, b), max(a, b)].append(f)
    sets = Sets()
    for members in users.values():
        for f in members:
            sets.join(members[0], f)
    numbers = {}
    return [numbers.setdefault(sets.find(f), len(numbers)) for f in range(len(faces))]


def kind_of(faces):
    """What an island is. Corners are joined around a vertex over the edges that are not cut, so a
    vertex at which an island touches itself counts twice."""
    users = collections.defaultdict(list)
    for f, face in enumerate(faces):
        for k, (a, b) in enumerate(edges_of(face)):
            users[min(a, b), max(a, b)].append((f, k, a < b))
    if any(len(u) > 2 for u in users.values()):
        return "edge of more than two faces"
    if any(len(u) == 2 and u[0][2] == u[1][2] for u in users.values()):
        return "faces wound against each other"
    corners, edges, border = Sets(), 0, []
    for f, face in enumerate(faces):
        for k in range(len(face)):
            corners.find((f, k))
    for members in users.values():
        edges += 1
        if len(members) == 1:
            border.append(members[0])
            continue
        (f, k, _), (g, l, _) = members
        corners.join((f, k), (g, (l + 1) % len(faces[g])))
        corners.join((f, (k + 1) % len(faces[f])), (g, l))
    nodes = len({corners.find(c) for c in list(corners.parent)})
    loops = Sets()
    for f, k, _ in border:
        loops.join(corners.find((f, k)), corners.find((f, (k + 1) % len(faces[f]))))
    count = len({loops.find(x) for x in list(loops.parent)})
    handles = 2 - count - (nodes - edges + len(faces))
    if count == 0:
        return "closed"
    if handles:
        return f"{handles // 2} handles"
    return "disc" if count == 1 else f"planar ring, {count - 1} holes"


def compare(program, mesh, output, options):
    """Rows (kind, faces, charts) per island, and the number of charts."""
    own = read_faces(mesh)
    run, _ = runs.unwrap(program, mesh, output, ["--keep_seams", "--stretch", 1, *options])
    if run.code != 0:
        raise SystemExit(f"{mesh.stem}: exit {run.code}: {run.text.strip()[:200]}")
    islands, charts = islands_of(own), islands_of(read_faces(output))
    members, parts = collections.defaultdict(list), collections.defaultdict(set)
    for f, island in enumerate(islands):
        members[island].append(own[f])
        parts[island].add(charts[f])
    return [(kind_of(members[i]), len(members[i]), len(parts[i])) for i in sorted(members)], \
        len(set(charts))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files that have UVs")
    parser.add_argument("--program", default="build/release/bin/tessora")
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--high_quality", action="store_true")
    arguments = parser.parse_args()
    broken = False
    for mesh in runs.models_in(arguments.models, arguments.only):
        if not any(uv for face in read_faces(mesh) for _, uv in face):
            print(f"{mesh.stem}: no UVs")
            continue
        with tempfile.TemporaryDirectory() as folder:
            rows, charts = compare(arguments.program, mesh, pathlib.Path(folder) / mesh.name,
                                   ["--high_quality"] if arguments.high_quality else [])
        open_rows = [r for r in rows if r[0] == "disc" or r[0].startswith("planar")]
        cut = [r for r in open_rows if r[2] > 1]
        broken |= bool(cut)
        print(f"{mesh.stem}: {len(rows)} islands, {charts} charts; {len(open_rows)} discs and planar "
              f"rings, {len(cut)} of them cut")
        for kind, faces, parts in rows:
            if parts > 1:
                print(f"  {kind}, {faces} faces: {parts} charts")
    sys.exit(1 if broken else 0)


if __name__ == "__main__":
    main()
