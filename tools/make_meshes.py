#!/usr/bin/env python3
"""Writes variants of an OBJ mesh that are hard to unwrap, and small meshes made by rule.

    tools/make_meshes.py double      IN.obj OUT.obj   every face twice, wound alike
    tools/make_meshes.py both-sides  IN.obj OUT.obj   every face twice, the copy wound against it
    tools/make_meshes.py double-some IN.obj OUT.obj  the faces of one half of the mesh twice, wound alike
    tools/make_meshes.py both-sides-some IN.obj OUT.obj  the same, the copies wound against them
    tools/make_meshes.py repeats     IN.obj OUT.obj   every fourth face is followed by one that names a vertex twice
    tools/make_meshes.py repeat-corners IN.obj OUT.obj   every fourth face names its first vertex twice
    tools/make_meshes.py shuffle     IN.obj OUT.obj   the faces in random order
    tools/make_meshes.py sphere      OUT.obj          a sphere of 1,944 quads
    tools/make_meshes.py fin         OUT.obj          a cube with a quad on one of its edges

Only positions and faces are kept. --seed N sets what is random (0).

examples:
    tools/make_meshes.py sphere sphere.obj
    tools/make_meshes.py both-sides sphere.obj leaf.obj && tessora unwrap leaf.obj --report leaf.json"""

import argparse
import math
import random
import sys


def read(path):
    points, faces = [], []
    with open(path, encoding="utf-8") as file:
        words = []
        for number, line in enumerate(file, 1):
            words = words[:-1] + line.split() if words[-1:] == ["\\"] else line.split()
            if words[-1:] == ["\\"]:
                continue
            if words[:1] == ["v"]:
                points.append(tuple(map(float, words[1:4])))
            elif words[:1] == ["f"]:
                ids = [int(word.split("/")[0]) for word in words[1:]]
                faces.append([i - 1 if i > 0 else len(points) + i for i in ids])
                if not all(0 <= i < len(points) for i in faces[-1]):
                    sys.exit(f"{path}:{number}: a face names a vertex that does not exist")
    if not faces:
        sys.exit(f"{path}: no faces")
    return points, faces


def write(path, points, faces):
    with open(path, "w", encoding="utf-8") as file:
        file.writelines("v %.9g %.9g %.9g\n" % point for point in points)
        file.writelines("f " + " ".join(str(i + 1) for i in face) + "\n" for face in faces)


def sphere(cells=18):
    """A cube of cells x cells quads a side, blown up."""
    points, number, faces = [], {}, []

    def vertex(place):
        if place not in number:
            number[place] = len(points)
            centred = [2 * x / cells - 1 for x in place]
            size = math.sqrt(sum(x * x for x in centred))
            points.append(tuple(x / size for x in centred))
        return number[place]

    for axis in range(3):
        for side in (0, cells):
            for i in range(cells):
                for j in range(cells):
                    face = []
                    for a, b in ((i, j), (i + 1, j), (i + 1, j + 1), (i, j + 1)):
                        place = [0, 0, 0]
                        place[axis], place[(axis + 1) % 3], place[(axis + 2) % 3] = side, a, b
                        face.append(vertex(tuple(place)))
                    faces.append(face if side else face[::-1])
    return points, faces


def fin():
    points = [(x, y, z) for x in (0, 1) for y in (0, 1) for z in (0, 1)] + [(-1, -1, 0), (-1, -1, 1)]
    cube = [[0, 1, 3, 2], [4, 6, 7, 5], [0, 4, 5, 1], [2, 3, 7, 6], [0, 2, 6, 4], [1, 5, 7, 3]]
    return points, cube + [[0, 1, 9, 8]]


def with_repeats(faces):
    """After every fourth face one of the ways to name a vertex twice: a line, a spike, a point."""
    result = []
    for i, face in enumerate(faces):
        result.append(face)
        a, b, c = face[:3]
        if i % 4 == 0:
            result.append(([a, b, b], [a, b, a], [a, b, c, b], [a, a, a])[i // 4 % 4])
    return result


def with_half_doubled(points, faces, against):
    """Doubles the faces with more corners below the median x than above."""
    middle = sorted(p[0] for p in points)[len(points) // 2]
    result = []
    for face in faces:
        result.append(face)
        if 2 * sum(points[v][0] < middle for v in face) > len(face):
            result.append(face[::-1] if against else face)
    return result


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("kind")
    parser.add_argument("paths", nargs="+", metavar="FILE")
    parser.add_argument("--seed", type=int, default=0)
    arguments = parser.parse_args()
    made = {"sphere": sphere, "fin": fin}
    changed = {
        "double": lambda faces: [copy for face in faces for copy in (face, face)],
        "both-sides": lambda faces: [copy for face in faces for copy in (face, face[::-1])],
        "repeats": with_repeats,
        "repeat-corners": lambda faces: [face[:1] + face if i % 4 == 0 else face for i, face in enumerate(faces)],
        "shuffle": lambda faces: random.Random(arguments.seed).sample(faces, len(faces)),
    }
    if arguments.kind in made and len(arguments.paths) == 1:
        write(arguments.paths[0], *made[arguments.kind]())
    elif arguments.kind in changed and len(arguments.paths) == 2:
        points, faces = read(arguments.paths[0])
        write(arguments.paths[1], points, changed[arguments.kind](faces))
    elif arguments.kind in ("double-some", "both-sides-some") and len(arguments.paths) == 2:
        points, faces = read(arguments.paths[0])
        write(arguments.paths[1], points, with_half_doubled(points, faces, arguments.kind[0] == "b"))
    else:
        parser.error("unknown kind, or too few or too many files; see --help")


if __name__ == "__main__":
    main()
