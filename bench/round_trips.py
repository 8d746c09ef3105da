#!/usr/bin/env python3
"""Takes meshes through every format and back, and tells what survives (docs/formats.md).

  bench/round_trips.py TESSORA MESH.obj...   each mesh, unwrapped into each format and from there into OBJ again
  bench/round_trips.py TESSORA --files FILE... files of any format: unwrapped in their own format or refused;
                                               GLB and glTF results are given to the validator, if there is one

The validator is the npm package gltf-validator; GLTF_VALIDATOR names the folder that contains it in
node_modules. Exit code 1 if something does not survive that should, or a program crashes."""

import collections
import json
import os
import pathlib
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


def read_obj(path):
    """Positions of the corners of each face, in the order of the file."""
    places, faces = [], []
    for line in path.read_text(errors="replace").splitlines():
        words = line.split()
        if words[:1] == ["v"]:
            places.append(tuple(float(w) for w in words[1:4]))
        elif words[:1] == ["f"] and len(words) > 3:
            ids = [int(w.split("/")[0]) for w in words[1:]]
            faces.append(tuple(places[i - 1 if i > 0 else i] for i in ids))
    return faces


def single(face):
    import struct
    return tuple(struct.unpack("3f", struct.pack("3f", *p)) for p in face)


def trip(program, mesh, name, work):
    """What is lost; an empty text if nothing that the format keeps."""
    there, back = work / ("there." + name), work / "back.obj"
    for source, target in ((mesh, there), (there, back)):
        code, text = run(program, "unwrap", source, "-o", target, "--quiet")
        if code != 0:
            return f"{source.name}: code {code}: {text.strip().splitlines()[-1:]}"
    before = [single(f) for f in read_obj(mesh)]
    after = [single(f) for f in read_obj(back)]
    if name in TRIANGLES_ONLY:
        triangles = sum(len(f) - 2 for f in before)
        if len(after) != triangles:
            return f"{triangles} triangles became {len(after)}"
        if {p for f in before for p in f} != {p for f in after for p in f}:
            return "positions differ"
        return ""
    if collections.Counter(before) != collections.Counter(after):
        return f"of {len(before)} polygons {sum((collections.Counter(before) - collections.Counter(after)).values())} differ"
    return ""


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
