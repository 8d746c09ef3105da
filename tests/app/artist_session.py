#!/usr/bin/env python3
"""A session of an artist by script, in several processes.

    artist_session.py PROGRAM [MESH]    MESH: an OBJ file instead of a torus with two materials

Opens a mesh, cuts three loops of edges, unwraps along these seams only, moves a chart, packs all and
saves. Another process opens the scene and finds the same texture coordinates and materials; verify
holds for them. Undo all the way back gives the file's own coordinates.
"""
import pathlib
import subprocess
import sys
import tempfile

LOOPS = (0, 40, 160)

SESSION = """
loadPlugin tessora;
file -f -o "{mesh}";
string $meshes[] = `ls -type mesh`;
string $mesh = $meshes[0];
select -cl;
polyMapCut `polySelect -ass -edgeLoop {loops[0]} $mesh`;
polyMapCut `polySelect -ass -edgeLoop {loops[1]} $mesh`;
polyMapCut `polySelect -ass -edgeLoop {loops[2]} $mesh`;
file -f -exportAll "{folder}/cut.obj";
select $mesh;
tessora -keep_seams on -stretch 1;
polyEditUV -u 0.25 -v 0.125 `polyListComponentConversion -toUV -uvShell ($mesh + ".f[0]")`;
polyLayoutUV $mesh;
file -rename "{folder}/session.ma"; file -save;
file -f -exportAll "{folder}/saved.obj";
while (!`undoInfo -q -undoQueueEmpty`)
    undo;
file -f -exportAll "{folder}/undone.obj";
"""


def run(*words):
    ended = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if ended.returncode != 0:
        raise SystemExit(f"{words[1:]} ended with {ended.returncode}:\n{ended.stdout}")
    return ended.stdout


def corners(file):
    """The texture coordinates of the corners of all faces, and the materials of the faces."""
    coordinates, faces, materials, material = [], [], [], None
    for line in file.read_text().splitlines():
        words = line.split()
        if line.startswith("vt "):
            coordinates.append(tuple(map(float, words[1:3])))
        elif line.startswith("usemtl "):
            material = words[1]
        elif line.startswith("f "):
            faces.append([coordinates[int(word.split("/")[1]) - 1] for word in words[1:]])
            materials.append(material)
    return faces, materials


def seams(file):
    """The edges, pairs of vertices, whose two sides have texture coordinates of their own."""
    sides = {}
    for line in file.read_text().splitlines():
        if not line.startswith("f "):
            continue
        corners = [tuple(map(int, word.split("/")[:2])) for word in line.split()[1:]]
        for ends in zip(corners, corners[1:] + corners[:1]):
            (a, uv_a), (b, uv_b) = sorted(ends)
            sides.setdefault((a, b), set()).add((uv_a, uv_b))
    return {edge for edge, uvs in sides.items() if len(uvs) > 1}


def fail_unless(condition, sentence):
    if not condition:
        raise SystemExit(sentence)


def make_torus(program, folder):
    whole = folder / "whole.obj"
    run(program, "-c", f'polyTorus -sx 20 -sy 20; file -f -exportAll "{whole}";')
    lines = [line for line in whole.read_text().splitlines() if not line.startswith("usemtl")]
    first = next(i for i, line in enumerate(lines) if line.startswith("f "))
    lines.insert(first + 100, "usemtl rubber")
    lines.insert(first, "usemtl steel")
    mesh = folder / "ring.obj"
    mesh.write_text("\n".join(lines) + "\n")
    return mesh


def main():
    program = str(pathlib.Path(sys.argv[1]).resolve())
    with tempfile.TemporaryDirectory(prefix="tessora_artist.") as name:
        folder = pathlib.Path(name)
        mesh = pathlib.Path(sys.argv[2]) if len(sys.argv) > 2 else make_torus(program, folder)
        script = folder / "session.mel"
        script.write_text(SESSION.format(mesh=mesh, folder=folder, loops=LOOPS))
        run(program, "script", str(script))
        own, materials = corners(mesh)
        saved, saved_materials = corners(folder / "saved.obj")
        undone, _ = corners(folder / "undone.obj")
        fail_unless(undone == own, "undo all the way does not give the file's own coordinates")
        fail_unless(seams(folder / "saved.obj") == seams(folder / "cut.obj") != seams(mesh),
                    "the charts do not end at the seams that were cut")
        fail_unless(saved != own, "the session changed nothing")
        run(program, "-c", f'loadPlugin tessora; file -f -o "{folder}/session.ma"; '
            f'file -f -exportAll "{folder}/again.obj";')
        again, again_materials = corners(folder / "again.obj")
        fail_unless(again == saved, "another process finds other coordinates in the scene")
        fail_unless(saved_materials == materials and again_materials == materials,
                    "materials are lost")
        print(run(program, "verify", "--stretch", "1", str(folder / "again.obj")))


if __name__ == "__main__":
    main()
