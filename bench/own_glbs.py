#!/usr/bin/env python3
"""Unwraps six GLB files made here and compares the results: bench/own_glbs.py build/release/bin/tessora

A skin, morph targets, instances, accessors that primitives share, 70,000 vertices, and indices that
splitting takes beyond 16 bits. Every corner of every triangle must
keep the bytes of all its attributes but the new coordinates, and of its targets; animations, skins and nodes must stay
bit for bit; the validator (GLTF_VALIDATOR, as for round_trips.py) must find nothing that the input has not. Exit code 1 if
anything differs."""

import json
import math
import pathlib
import struct
import sys
import tempfile

import round_trips

SIZES = {5120: 1, 5121: 1, 5122: 2, 5123: 2, 5125: 4, 5126: 4}
PARTS = {"SCALAR": 1, "VEC2": 2, "VEC3": 3, "VEC4": 4, "MAT4": 16}
ARRAY, ELEMENTS = 34962, 34963


class Glb:
    """A file in the making."""

    def __init__(self):
        self.bytes = b""
        self.json = {"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}], "nodes": [], "meshes": [],
                     "accessors": [], "bufferViews": []}

    def add(self, rows, form, kind, component=5126, target=ARRAY, bounds=False):
        self.bytes += bytes(-len(self.bytes) % 4)
        data = b"".join(struct.pack(form, *row) for row in rows)
        view = {"buffer": 0, "byteOffset": len(self.bytes), "byteLength": len(data)}
        if target:
            view["target"] = target
        accessor = {"bufferView": len(self.json["bufferViews"]), "componentType": component, "count": len(rows),
                    "type": kind}
        if bounds:
            single = [struct.unpack(form, struct.pack(form, *row)) for row in rows]
            accessor["min"], accessor["max"] = [list(map(f, zip(*single))) for f in (min, max)]
        self.bytes += data
        self.json["bufferViews"].append(view)
        self.json["accessors"].append(accessor)
        return len(self.json["accessors"]) - 1

    def floats(self, rows, kind, **more):
        return self.add(rows, f"<{PARTS[kind]}f", kind, **more)

    def indices(self, numbers, component=5123):
        return self.add([(n,) for n in numbers], "<H" if component == 5123 else "<I", "SCALAR", component, ELEMENTS)

    def save(self, path):
        self.bytes += bytes(-len(self.bytes) % 4)
        self.json["buffers"] = [{"byteLength": len(self.bytes)}]
        text = json.dumps(self.json).encode()
        text += b" " * (-len(text) % 4)
        path.write_bytes(struct.pack("<4sIIII", b"glTF", 2, 28 + len(text) + len(self.bytes), len(text), 0x4E4F534A) +
                         text + struct.pack("<II", len(self.bytes), 0x004E4942) + self.bytes)


def tube(glb, around, along):
    """A closed tube: its attributes, and the numbers of its triangles' corners."""
    places = [(math.cos(6.2831853 * i / around), j / 2, math.sin(6.2831853 * i / around)) for j in range(along + 1)
              for i in range(around)]
    corners = []
    for j in range(along):
        for i in range(around):
            a, b = j * around + i, j * around + (i + 1) % around
            corners += [a, a + around, b, b, a + around, b + around]
    attributes = {"POSITION": glb.floats(places, "VEC3", bounds=True),
                  "NORMAL": glb.floats([(x, 0.0, z) for x, _, z in places], "VEC3")}
    return places, attributes, corners


def animate(glb, node, path, kind, rows):
    times = glb.floats([(0.5 * i,) for i in range(3)], "SCALAR", target=None, bounds=True)
    glb.json["animations"] = [{"name": "move", "samplers": [
        {"input": times, "output": glb.floats(rows, kind, target=None), "interpolation": "LINEAR"}],
        "channels": [{"sampler": 0, "target": {"node": node, "path": path}}]}]


def skin():
    glb = Glb()
    places, attributes, corners = tube(glb, 12, 8)
    attributes["JOINTS_0"] = glb.add([(0, 1, 0, 0)] * len(places), "<4B", "VEC4", 5121)
    attributes["WEIGHTS_0"] = glb.floats([(1 - y / 4, y / 4, 0, 0) for _, y, _ in places], "VEC4")
    identity = (1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1)
    glb.json["skins"] = [{"joints": [1, 2], "inverseBindMatrices": glb.floats([identity] * 2, "MAT4", target=None)}]
    glb.json["nodes"] = [{"name": "arm", "mesh": 0, "skin": 0}, {"name": "upper", "children": [2]}, {"name": "lower"}]
    glb.json["scenes"][0]["nodes"] = [0, 1]
    glb.json["meshes"] = [{"name": "arm", "primitives": [{"attributes": attributes, "indices": glb.indices(corners)}]}]
    animate(glb, 2, "rotation", "VEC4", [(0, 0, 0, 1), (0, 0, 0.6, 0.8), (0, 0, 0, 1)])
    return glb


def morph():
    glb = Glb()
    places, attributes, corners = tube(glb, 10, 6)
    targets = [{"POSITION": glb.floats([(x * k, 0.0, z * k) for x, _, z in places], "VEC3", bounds=True)}
               for k in (0.25, -0.125)]
    glb.json["nodes"] = [{"name": "cheek", "mesh": 0}]
    glb.json["meshes"] = [{"name": "cheek", "weights": [0.0, 0.5], "extras": {"targetNames": ["puff", "suck"]},
                           "primitives": [{"attributes": attributes, "indices": glb.indices(corners),
                                           "targets": targets}]}]
    animate(glb, 0, "weights", "SCALAR", [(w,) for w in (0, 0, 1, 0, 0, 1)])
    return glb


def instances():
    glb = Glb()
    _, attributes, corners = tube(glb, 8, 2)
    glb.json["meshes"] = [{"name": "wheel", "primitives": [{"attributes": attributes,
                                                             "indices": glb.indices(corners)}]}]
    glb.json["nodes"] = [{"name": "car", "children": [1, 2, 3, 4]}] + [
        {"name": f"wheel {i}", "mesh": 0, "translation": [2 * i, 0, 0], "scale": [1, 1, -1 if i % 2 else 1]}
        for i in range(4)]
    return glb


def shared():
    glb = Glb()
    _, attributes, corners = tube(glb, 12, 4)
    half = len(corners) // 2
    glb.json["materials"] = [{"name": "skin"}, {"name": "cloth"}]
    both = glb.indices(corners)
    glb.json["meshes"] = [{"name": "body", "primitives": [
        {"attributes": attributes, "indices": glb.indices(corners[:half]), "material": 0},
        {"attributes": attributes, "indices": glb.indices(corners[half:]), "material": 1}]},
        {"name": "again", "primitives": [{"attributes": attributes, "indices": both}]}]
    glb.json["nodes"] = [{"mesh": 0}, {"mesh": 1, "translation": [5, 0, 0]}]
    glb.json["scenes"][0]["nodes"] = [0, 1]
    return glb


def long_tube(around, along, component):
    glb = Glb()
    _, attributes, corners = tube(glb, around, along)
    glb.json["meshes"] = [{"primitives": [{"attributes": attributes, "indices": glb.indices(corners, component)}]}]
    glb.json["nodes"] = [{"mesh": 0}]
    return glb


def large():
    return long_tube(265, 264, 5125)  # 70,225 vertices


def overflowing():
    return long_tube(260, 251, 5123)  # 65,520 vertices: once split, too many for 16 bits


class Read:
    """A GLB file as its bytes say."""

    def __init__(self, path):
        data = path.read_bytes()
        size, = struct.unpack_from("<I", data, 12)
        self.json = json.loads(data[20:20 + size])
        self.binary = data[28 + size:]

    def rows(self, number):
        accessor = self.json["accessors"][number]
        view = self.json["bufferViews"][accessor["bufferView"]]
        size = SIZES[accessor["componentType"]] * PARTS[accessor["type"]]
        begin = view.get("byteOffset", 0) + accessor.get("byteOffset", 0)
        step = view.get("byteStride", size)
        return [self.binary[begin + step * i:begin + step * i + size] for i in range(accessor["count"])]

    def corners(self, primitive):
        """The bytes of every corner: each attribute and target but coordinates."""
        attributes = [(name, self.rows(number)) for name, number in sorted(primitive["attributes"].items())
                      if not name.startswith("TEXCOORD")]
        for i, target in enumerate(primitive.get("targets", [])):
            attributes += [((i, name), self.rows(number)) for name, number in sorted(target.items())]
        numbers = [int.from_bytes(row, "little") for row in self.rows(primitive["indices"])]
        return [[(name, rows[number] if number < len(rows) else "no such vertex") for name, rows in attributes]
                for number in numbers]

    def animation(self):
        return [[self.rows(sampler["input"]), self.rows(sampler["output"])]
                for animation in self.json.get("animations", []) for sampler in animation["samplers"]] + \
            [self.rows(skin["inverseBindMatrices"]) for skin in self.json.get("skins", [])]


def differences(before, after):
    for key in ("nodes", "skins", "animations", "materials", "scenes"):
        if before.json.get(key) != after.json.get(key):
            yield key + " differ"
    if before.animation() != after.animation():
        yield "animations differ"
    for old, new in zip(before.json["meshes"], after.json["meshes"]):
        if {k: v for k, v in old.items() if k != "primitives"} != {k: v for k, v in new.items() if k != "primitives"}:
            yield "a mesh differs"
        for a, b in zip(old["primitives"], new["primitives"]):
            if before.corners(a) != after.corners(b):
                yield "corners differ"
            if "TEXCOORD_0" not in b["attributes"]:
                yield "no coordinates"


def main():
    if len(sys.argv) != 2 or sys.argv[1] in ("-h", "--help"):
        print(__doc__)
        return 2
    bad = 0
    with tempfile.TemporaryDirectory() as folder:
        for make in (skin, morph, instances, shared, large, overflowing):
            source = pathlib.Path(folder) / (make.__name__ + ".glb")
            result = pathlib.Path(folder) / (make.__name__ + "_uv.glb")
            make().save(source)
            for words in ([], ["--each_mesh"]):
                code, text = round_trips.run(sys.argv[1], "unwrap", source, "-o", result, "--quiet", *words)
                found = [f"code {code}: {text.strip()}"] if code else list(differences(Read(source), Read(result)))
                checked = round_trips.validated([source, result]) if not code else {}
                found += [f"validator: {dict(checked[result])}"] if checked and checked[result] - checked[source] else []
                known = "" if checked else " (no validator)"
                vertices = "" if code else " vertices {} -> {}".format(*(
                    r.json["accessors"][r.json["meshes"][0]["primitives"][0]["attributes"]["POSITION"]]["count"]
                    for r in (Read(source), Read(result))))
                print(make.__name__, *words, "; ".join(found) or "kept" + known + vertices, flush=True)
                bad += len(found)
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
