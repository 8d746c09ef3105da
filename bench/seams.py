"""Where the seams of an unwrapped OBJ file lie, and whether its equal parts are laid out alike."""

import pathlib
import collections
import math

FLAT, SLIGHT = 1, 10    # degrees
SAME = 1e-4             # relative difference of lengths up to which parts count as congruent
ALIKE = 2e-3            # the same in the texture


class Mesh:
    """positions, uvs, and per face its corners as pairs of their indices."""

    def __init__(self, path):
        self.positions, self.uvs, self.faces = [], [], []
        text = pathlib.Path(path).read_text(encoding="utf-8", errors="replace")
        for line in text.replace("\\\n", " ").splitlines():  # a backslash continues a line
            words = line.split()
            if not words:
                continue
            if words[0] == "v":
                self.positions.append(tuple(map(float, words[1:4])))
            elif words[0] == "vt":
                self.uvs.append(tuple(map(float, words[1:3])))
            elif words[0] == "f":
                self.faces.append([self.corner(word) for word in words[1:]])

    def corner(self, word):
        ids = (word.split("/") + [""])[:2]
        at = lambda text, count: (int(text) - 1 if int(text) > 0 else count + int(text)) if text else None
        return at(ids[0], len(self.positions)), at(ids[1], len(self.uvs))

    def normal(self, face):
        """Unit normal by Newell; None without area."""
        points = [self.positions[v] for v, _ in face]
        sums = [0.0, 0.0, 0.0]
        for p, q in zip(points, points[1:] + points[:1]):
            for i in range(3):
                j, k = (i + 1) % 3, (i + 2) % 3
                sums[i] += (p[j] - q[j]) * (p[k] + q[k])
        length = math.sqrt(sum(s * s for s in sums))
        return [s / length for s in sums] if length > 0 else None

    def edges(self):
        """(lower, higher vertex) -> faces that have it, each with the two uvs in that order."""
        found = collections.defaultdict(list)
        for number, face in enumerate(self.faces):
            for (v, t), (w, u) in zip(face, face[1:] + face[:1]):
                if v != w:
                    found[min(v, w), max(v, w)].append((number, (t, u) if v < w else (u, t)))
        return found


def bend(first, second):
    """Degrees between two normals; a face without area bends nothing."""
    if first is None or second is None:
        return 0.0
    return math.degrees(math.acos(max(-1.0, min(1.0, sum(a * b for a, b in zip(first, second))))))


def seam_shares(mesh):
    """Shares of the length of all seams between two faces on edges that bend by under 1 degree, and by 1 to 10."""
    normals = [mesh.normal(face) for face in mesh.faces]
    total = flat = slight = 0.0
    for (v, w), sides in mesh.edges().items():
        if len(sides) != 2 or sides[0][1] == sides[1][1]:
            continue
        length = math.dist(mesh.positions[v], mesh.positions[w])
        angle = bend(normals[sides[0][0]], normals[sides[1][0]])
        total += length
        flat += length if angle < FLAT else 0
        slight += length if FLAT <= angle < SLIGHT else 0
    return (flat / total, slight / total) if total > 0 else (0.0, 0.0)


def parts(mesh):
    """Faces by connected component."""
    parent = list(range(len(mesh.positions)))

    def root(v):
        while parent[v] != v:
            parent[v] = parent[parent[v]]
            v = parent[v]
        return v

    for face in mesh.faces:
        for v, _ in face[1:]:
            parent[root(v)] = root(face[0][0])
    found = collections.defaultdict(list)
    for face in mesh.faces:
        found[root(face[0][0])].append(face)
    return list(found.values())


def same_lists(first, second, tolerance):
    return len(first) == len(second) and all(abs(a - b) <= tolerance * max(a, b) + 1e-12
                                             for a, b in zip(first, second))


def alike_parts(mesh):
    """How many parts are congruent to another, mirror images included, and how many of those are laid out like
    most of their kind. Judged by the lengths of all sides, in space and in the texture."""
    kinds = []
    for faces in parts(mesh):
        space, texture = [], []
        for face in faces:
            for (v, t), (w, u) in zip(face, face[1:] + face[:1]):
                space.append(math.dist(mesh.positions[v], mesh.positions[w]))
                if t is not None and u is not None:
                    texture.append(math.dist(mesh.uvs[t], mesh.uvs[u]))
        space.sort()
        texture.sort()
        charts = len({t for face in faces for _, t in face})  # points of the texture: a seam adds some
        for lengths, layouts in kinds:
            if same_lists(lengths, space, SAME):
                layouts.append((charts, texture))
                break
        else:
            kinds.append((space, [(charts, texture)]))
    congruent = alike = 0
    for _, layouts in kinds:
        if len(layouts) < 2:
            continue
        congruent += len(layouts)
        alike += max(sum(c == d and same_lists(a, b, ALIKE) for d, b in layouts) for c, a in layouts)
    return congruent, alike
