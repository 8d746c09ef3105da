#!/usr/bin/env python3
"""Unwraps every model of a folder in variations that must not change the result, and compares:

    again     the same file twice: the same bytes
    uvs       with random texture coordinates: the same bytes (seams are not kept)
    x0.001    scaled by a thousandth: the same partition of polygons into charts
    x1000     scaled by a thousand: the same charts
    others    the programs named by --others (other compilers, other builds): the same bytes

    bench/invariance.py MODELS
    bench/invariance.py MODELS --only tet,castle,wingnut --others build/debug/bin/tessora

Ends with 1 when a comparison fails."""

import argparse
import pathlib
import random
import sys
import tempfile

import unwrap_runs as runs


def with_random_uvs(text, seed):
    """Replaces all texture coordinates by random ones."""
    chance = random.Random(seed)
    lines = [f"vt {chance.random():.6f} {chance.random():.6f}" for _ in range(1000)]
    for line in text.splitlines():
        words = line.split()
        if words[:1] == ["vt"]:
            continue
        if words[:1] == ["f"]:
            line = "f " + " ".join(f"{word.split('/')[0]}/{chance.randint(1, 1000)}"
                                   for word in words[1:])
        lines.append(line)
    return "\n".join(lines) + "\n"


def scaled(text, factor):
    lines = []
    for line in text.splitlines():
        words = line.split()
        if words[:1] == ["v"]:
            line = "v " + " ".join(f"{float(x) * factor:.9g}" for x in words[1:4])
        lines.append(line)
    return "\n".join(lines) + "\n"


def faces_and_uvs(text):
    """Per face its corners as (vertex index, vt index), and the vt lines."""
    faces, uvs = [], []
    for line in text.splitlines():
        words = line.split()
        if words[:1] == ["vt"]:
            uvs.append(line)
        elif words[:1] == ["f"]:
            faces.append([tuple(int(n) for n in word.split("/")[:2]) for word in words[1:]])
    return faces, uvs


def charts(text):
    """Per face the first face of its chart. Faces are connected if they share an edge whose ends
    agree in vertex and texture coordinate."""
    faces, _ = faces_and_uvs(text)
    chart = list(range(len(faces)))

    def find(i):
        while chart[i] != i:
            chart[i] = i = chart[chart[i]]
        return i

    first_at = {}
    for i, face in enumerate(faces):
        for a, b in zip(face, face[1:] + face[:1]):
            j = first_at.setdefault((min(a, b), max(a, b)), i)
            a, b = sorted((find(i), find(j)))
            chart[b] = a
    return [find(i) for i in range(len(faces))]


def corner_uvs(text):
    """The vt line of every corner, independent of numbering."""
    faces, uvs = faces_and_uvs(text)
    return [uvs[corner[1] - 1] for face in faces for corner in face]


class Trial:
    def __init__(self, program, options, folder):
        self.program, self.options, self.folder = program, options, pathlib.Path(folder)

    def unwrap(self, text, program=None):
        mesh = self.folder / "mesh.obj"
        mesh.write_text(text)
        output = self.folder / "out.obj"
        run, _ = runs.unwrap(program or self.program, mesh, output, self.options)
        if run.code != 0:
            raise RuntimeError(f"exit {run.code}: {run.text.strip()[:200]}")
        return output.read_text(errors="replace")

    def row(self, text, others):
        plain = self.unwrap(text)
        results = [plain == self.unwrap(text),
                   corner_uvs(plain) == corner_uvs(self.unwrap(with_random_uvs(text, 7)))]
        for factor in (0.001, 1000):
            results.append(charts(plain) == charts(self.unwrap(scaled(text, factor))))
        return results + [plain == self.unwrap(text, other) for other in others]


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files")
    parser.add_argument("--program", help="the tessora program; default: build/release/bin/tessora")
    parser.add_argument("--others", nargs="*", default=[], help="programs to compare with")
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--high_quality", action="store_true")
    words = parser.parse_args()
    rows, good = [], True
    with tempfile.TemporaryDirectory(prefix="invariance.") as folder:
        trial = Trial(runs.find_program(words.program),
                      ["--high_quality"] if words.high_quality else [], folder)
        for model in runs.models_in(words.models, words.only):
            print(model.stem, file=sys.stderr)
            text = model.read_text(errors="replace").replace("\\\n", " ")  # joined lines
            results = trial.row(text, words.others)
            rows.append([model.stem] + ["same" if same else "DIFFERS" for same in results])
            good = good and all(results)
    runs.print_table(["model", "again", "uvs", "x0.001", "x1000"] + list(words.others), rows)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
