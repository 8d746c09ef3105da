#!/usr/bin/env python3
"""Takes meshes through every format and back, and tells what survives (docs/formats.md).

  bench/round_trips.py TESSORA MESH.obj...   each mesh, unwrapped into each format and from there into OBJ again:
                                               positions, polygons, normals, materials and names are compared
  bench/round_trips.py TESSORA --files FILE... files of any format: unwrapped in their own format or refused;
                                               GLB and glTF results are given to the validator, if there is one

The validator is the npm package gltf-validator; GLTF_VALIDATOR names the folder that contains it in
node_modules. Exit code 1 if something does not survive that should, or a program crashes."""

import collections
import json
import os
import pathlib
import struct
import subprocess
import sys
import tempfile

FORMATS = ["obj", "obj.gz", "ply", "glb", "gltf", "fbx"]
TRIANGLES_ONLY = {"glb", "gltf"}
VALIDATE = """
const validator = require(process.argv[1] + '/node_modules/gltf-validator');
const fs = require('fs'), path = require('path');
(async () => {
  for (const file of process.argv.slice(2)) {
    let codes = ['unreadable'];
    try {
      const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
        maxIssues: 0,
        externalResourceFunction: uri => Promise.resolve(new Uint8Array(fs.readFileSync(
            path.join(path.dirname(file), decodeURIComponent(uri))))) });
      codes = report.issues.messages.filter(m => m.severity == 0).map(m => m.code);
    } catch (error) { codes = ['INVALID']; }
    console.log(JSON.stringify(codes));
  }
})();"""


def run(program, *words):
    ended = subprocess.run([program, *map(str, words)], capture_output=True, text=True, errors="replace",
                           stdin=subprocess.DEVNULL)
    return ended.returncode, ended.stderr


Face = collections.namedtuple("Face", "part material places normals")


def single(numbers):
    """The numbers as a reader with single precision has them."""
    return struct.unpack(f"{len(numbers)}f", struct.pack(f"{len(numbers)}f", *numbers))


def read_obj(path):
    """The faces in the order of their parts: objects, or groups where there are no objects."""
    places, normals, faces, part, material, has_objects = [], [], [], "", "", False
    for line in path.read_text(errors="replace").replace("\\\n", " ").splitlines():
        words = line.split("#")[0].split()
        if words[:1] == ["v"]:
            places.append(single([float(w) for w in words[1:4]]))
        elif words[:1] == ["vn"]:
            normals.append(single([float(w) for w in words[1:4]]))
        elif words[:1] == ["o"] or (words[:1] == ["g"] and not has_objects):
            part, has_objects = " ".join(words[1:]), has_objects or words[0] == "o"
        elif words[:1] == ["usemtl"]:
            material = " ".join(words[1:])
        elif words[:1] in (["f"], ["fo"]) and len(words) > 3:
            corners = [(word + "//").split("/")[:3] for word in words[1:]]
            item = lambda items, number: items[int(number) - (int(number) > 0)] if number else None
            faces.append(Face(part, material, tuple(item(places, c[0]) for c in corners),
                              tuple(item(normals, c[2]) for c in corners)))
    order = {part: number for number, part in enumerate(dict.fromkeys(face.part for face in faces))}
    return sorted(faces, key=lambda face: order[face.part])


def near(a, b):
    """Whether points or directions are the same, but for the last digit of a single-precision number."""
    if a is None or b is None:
        return a is b
    size = max(abs(x) for x in (*a, *b))
    return all(abs(x - y) <= 3e-7 * size for x, y in zip(a, b))


def unit(normal):
    length = sum(x * x for x in normal) ** 0.5 if normal else 0.0
    return tuple(x / length for x in normal) if length else None


def lost_polygons(before, after, exact):
    if len(before) != len(after):
        return f"{len(before)} polygons became {len(after)}"
    differ = 0
    for old, new in zip(before, after):
        same = old.places == new.places if exact else \
            len(old.places) == len(new.places) and all(map(near, old.places, new.places))
        normals = exact and old.normals == new.normals or \
            len(old.normals) == len(new.normals) and all(near(unit(n), unit(m)) for n, m in
                                                         zip(old.normals, new.normals))
        differ += not (same and normals and old.material == new.material and old.part == new.part)
    return f"of {len(before)} polygons {differ} differ" if differ else ""


def lost_triangles(before, after):
    """Formats of triangles have each place with its normal, in the parts and materials of before."""
    triangles = sum(len(face.places) - 2 for face in before)
    if len(after) != triangles:
        return f"{triangles} triangles became {len(after)}"
    # A primitive has normals where all its corners have one.
    bare = {(face.part, face.material) for face in before if not all(map(unit, face.normals))}
    corners = [{(face.part, face.material, place, (face.part, face.material) in bare or bool(normal))
                for face in faces for place, normal in zip(face.places, face.normals)}
               for faces in (before, [f._replace(normals=[True] * 3) if (f.part, f.material) in bare else f
                                      for f in after])]
    return f"{len(corners[0] ^ corners[1])} corners differ" if corners[0] != corners[1] else ""


def lost_shapes(before, after):
    """Formats without parts and materials."""
    count = [collections.Counter(face.places for face in faces) for faces in (before, after)]
    return f"of {len(before)} polygons {sum((count[0] - count[1]).values())} differ" \
        if count[0] != count[1] else ""


def trip(program, mesh, name, work):
    """What is lost; an empty text if nothing that the format keeps."""
    there, back = work / ("there." + name), work / "back.obj"
    for source, target in ((mesh, there), (there, back)):
        code, text = run(program, "unwrap", source, "-o", target, "--quiet")
        if code != 0:
            return f"{source.name}: code {code}: {text.strip().splitlines()[-1:]}"
    before, after = read_obj(mesh), read_obj(back)
    if name in TRIANGLES_ONLY:
        return lost_triangles(before, after)
    if name == "ply":
        return lost_shapes(before, after)
    # Assimp rounds the numbers of text FBX on its own way to single precision.
    return lost_polygons(before, after, exact=name != "fbx")


def round_trips(program, meshes):
    bad = 0
    print("| mesh | " + " | ".join(FORMATS) + " |\n|---" * 1 + "|---" * len(FORMATS) + "|")
    for mesh in map(pathlib.Path, meshes):
        row = []
        for name in FORMATS:
            with tempfile.TemporaryDirectory() as work:
                row.append(trip(program, mesh, name, pathlib.Path(work)) or "kept")
        bad += sum(cell != "kept" for cell in row)
        print(f"| {mesh.stem} | " + " | ".join(row) + " |", flush=True)
    return bad


def validated(files):
    folder = os.environ.get("GLTF_VALIDATOR")
    if not folder or not files:
        return {}
    ended = subprocess.run(["node", "-e", VALIDATE, folder, *map(str, files)], capture_output=True, text=True)
    return dict(zip(files, (collections.Counter(json.loads(line)) for line in ended.stdout.splitlines())))


def check_files(program, files):
    counts, bad, pairs = collections.Counter(), 0, []
    with tempfile.TemporaryDirectory() as work:
        for number, file in enumerate(map(pathlib.Path, files)):
            # In the same folder: the file may name others.
            suffix = "".join(file.suffixes[-1:]).lower()
            output = file.with_name(f"{file.stem}.round{number}{suffix}") if suffix == ".gltf" else \
                pathlib.Path(work) / f"{number}{suffix}"
            words = ["-o", output] if suffix in (".glb", ".gltf", ".ply", ".obj", ".fbx") else \
                ["-o", output.with_suffix(".obj")]
            code, text = run(program, "unwrap", file, *words, "--quiet")
            counts[(suffix, code)] += 1
            print(f"{code} {file}: {(text.strip().splitlines() or [''])[-1][:160]}", flush=True)
            bad += code not in (0, 3, 4, 5)
            if code == 0 and suffix in (".glb", ".gltf"):
                pairs.append((file, output))
        checked = validated([f for pair in pairs for f in pair])
        for before, after in pairs if checked else []:
            new = checked[after] - checked[before]
            if new:
                print(f"the validator finds in the result of {before}: {dict(new)}")
                bad += 1
        for before, after in pairs:
            after.unlink(missing_ok=True)
    for (suffix, code), count in sorted(counts.items()):
        print(f"{suffix} code {code}: {count}")
    print(f"{len(pairs)} results validated" if checked else "no validator: results were not validated")
    return bad


def main():
    if len(sys.argv) < 3 or sys.argv[1] in ("-h", "--help"):
        print(__doc__)
        return 2
    program = sys.argv[1]
    if sys.argv[2] == "--files":
        return 1 if check_files(program, sys.argv[3:]) else 0
    return 1 if round_trips(program, sys.argv[2:]) else 0


if __name__ == "__main__":
    sys.exit(main())
