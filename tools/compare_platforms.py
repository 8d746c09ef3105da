#!/usr/bin/env python3
"""Unwraps meshes with two builds of the program and prints how far the results agree.

    tools/compare_platforms.py BUILD_A BUILD_B MESH... [-- unwrap options]

BUILD is the path of a program; one that ends in .exe runs through tools/with_wine.sh. Meshes with more
than --max-triangles triangles are skipped. Exit code 1 if any mesh differs: in the number of charts, in the
order in which faces use texture coordinates, or by more than 1e-5 in a coordinate."""

import argparse
import json
import pathlib
import subprocess
import sys
import tempfile

TOLERANCE = 1e-5
WITH_WINE = pathlib.Path(__file__).resolve().parent / "with_wine.sh"


def read_layout(text):
    """The texture coordinates, and the face lines verbatim."""
    uvs, faces = [], []
    for line in text.splitlines():
        if line.startswith("vt "):
            words = line.split()
            uvs.append((float(words[1]), float(words[2])))
        elif line.startswith("f "):
            faces.append(line)
    return uvs, faces


def difference(a, b):
    """Largest difference of two coordinates with the same index; None if the counts differ."""
    if len(a) != len(b):
        return None
    return max((max(abs(p[0] - q[0]), abs(p[1] - q[1])) for p, q in zip(a, b)), default=0.0)


def unwrap(program, mesh, options, folder):
    out, report = folder / "out.obj", folder / "report.json"
    command = ([str(WITH_WINE)] if program.suffix == ".exe" else []) + [str(program)]
    with open(folder / "errors.txt", "w+") as errors: # not a pipe: see with_wine.sh
        done = subprocess.run(command + ["unwrap", str(mesh), "-o", str(out), "--report", str(report), "--quiet"]
                              + options, stdin=subprocess.DEVNULL, stdout=errors, stderr=errors, timeout=1200)
        errors.seek(0)
        said = errors.read()
    if done.returncode != 0:
        return {"code": done.returncode, "charts": None, "uvs": [], "faces": [],
                "why": said.strip().splitlines()[-1:]}
    figures = json.loads(report.read_text())
    uvs, faces = read_layout(out.read_text())
    return {"code": 0, "charts": figures["charts"], "stretch": figures["stretch"], "uvs": uvs, "faces": faces}


def triangle_count(mesh):
    text = mesh.read_text(errors="replace").replace("\\\n", " ") # a backslash continues a line
    return sum(len(line.split()) - 3 for line in text.splitlines() if line.startswith("f "))


def compare(a, b):
    """The cells of the table's row, and whether the results are equal."""
    same_order = a["faces"] == b["faces"]
    apart = difference(a["uvs"], b["uvs"])
    agrees = (a["code"] == b["code"] == 0 and a["charts"] == b["charts"] and same_order
              and apart is not None and apart <= TOLERANCE)
    cells = [str(a["charts"]), str(b["charts"]), "yes" if same_order else "no",
             "-" if apart is None else f"{apart:.1e}", "equal" if agrees else "DIFFERS"]
    return cells, agrees


def main():
    words = sys.argv[1:]
    options = words[words.index("--") + 1:] if "--" in words else []
    words = words[:words.index("--")] if "--" in words else words
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--max-triangles", type=int, default=50000)
    parser.add_argument("programs", nargs=2, type=pathlib.Path)
    parser.add_argument("meshes", nargs="+", type=pathlib.Path)
    arguments = parser.parse_args(words)
    print("| mesh | triangles | charts A | charts B | same order | largest UV difference | |")
    print("|---|---|---|---|---|---|---|", flush=True)
    different = 0
    for mesh in arguments.meshes:
        count = triangle_count(mesh)
        if count > arguments.max_triangles:
            continue
        with tempfile.TemporaryDirectory() as folder:
            results = [unwrap(program.resolve(), mesh.resolve(), options, pathlib.Path(folder))
                       for program in arguments.programs]
        cells, agrees = compare(*results)
        different += not agrees
        print("| " + " | ".join([mesh.stem, str(count)] + cells) + " |", flush=True)
        for result in results:
            if result["code"]:
                print(f"{mesh.stem}: exit code {result['code']}: {' '.join(result['why'])}", file=sys.stderr)
    return 1 if different else 0


if __name__ == "__main__":
    sys.exit(main())
