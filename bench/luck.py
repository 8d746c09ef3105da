#!/usr/bin/env python3
"""Unwraps models with their faces shuffled, rotated as a whole, and with vertices moved by 1e-4 edge lengths,
and prints how far charts and coverage spread. None of it changes the shape, so a spread is luck.

    bench/luck.py MODELS --only koala,boot
    bench/luck.py MODELS --high_quality --shuffles 3 --rotations 0 --jitters 0

Exits with 1 if charts leave +-10 % (or +-1) of the unchanged mesh's, or coverage +-0.015."""

import argparse
import pathlib
import subprocess
import sys
import tempfile

import unwrap_runs as runs


def spread(counts, coverages):
    """Whether both stay near the first entry."""
    near = all(abs(c - counts[0]) <= max(1, 0.1 * counts[0]) for c in counts)
    return near, all(abs(c - coverages[0]) <= 0.015 for c in coverages)


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files")
    parser.add_argument("--program", default="build/release/bin/tessora")
    parser.add_argument("--variants", default="build/release/bin/mesh_variants")
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--high_quality", action="store_true")
    parser.add_argument("--shuffles", type=int, default=10)
    parser.add_argument("--rotations", type=int, default=5)
    parser.add_argument("--jitters", type=int, default=5)
    arguments = parser.parse_args()
    kinds = [("shuffle", arguments.shuffles), ("rotate", arguments.rotations),
             ("noise", arguments.jitters)]
    broken = False
    for mesh in runs.models_in(arguments.models, arguments.only):
        with tempfile.TemporaryDirectory() as folder:
            inputs = [("as it is", mesh)]
            for kind, count in kinds:
                for seed in range(count):
                    path = pathlib.Path(folder) / f"{kind}{seed}.obj"
                    size = ["1e-4"] if kind == "noise" else []
                    subprocess.run([arguments.variants, str(mesh), str(path), kind, *size,
                                    str(seed + 1)], check=True)
                    inputs.append((kind, path))
            figures = []
            for kind, path in inputs:
                output = pathlib.Path(folder) / "out.obj"
                run, _ = runs.unwrap(arguments.program, path, output,
                                     ["--high_quality"] * arguments.high_quality)
                if run.code != 0:
                    raise SystemExit(f"{mesh.stem}: exit {run.code}: {run.text.strip()[:200]}")
                m = runs.measure(arguments.program, output, 512, 512, 0.15)
                figures.append((kind, m["charts"], m["coverage"]))
        charts, coverage = spread([f[1] for f in figures], [f[2] for f in figures])
        broken |= not (charts and coverage)
        print(f"{mesh.stem}: {figures[0][1]} charts, coverage {figures[0][2]:.3f}"
              f"{'' if charts else '  CHARTS SPREAD'}{'' if coverage else '  COVERAGE SPREADS'}")
        for kind, _ in kinds:
            own = [f for f in figures if f[0] == kind]
            if own:
                print(f"  {kind:8} {' '.join(str(f[1]) for f in own)}; "
                      f"coverage {min(f[2] for f in own):.3f}..{max(f[2] for f in own):.3f}", flush=True)
    sys.exit(1 if broken else 0)


if __name__ == "__main__":
    main()
