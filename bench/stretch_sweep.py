#!/usr/bin/env python3
"""Unwraps every model of a folder under rising stretch limits and prints the number of charts: more
stretch must not take more charts.

    bench/stretch_sweep.py MODELS
    bench/stretch_sweep.py MODELS --only koala,boot --high_quality --random 0

Exits with 1 if charts rise anywhere by more than one and more than 1 %."""

import argparse
import pathlib
import random
import sys
import tempfile

import unwrap_runs as runs

LIMITS = [0, 0.01, 0.03, 0.05, 0.1, 0.15, 0.3, 0.5, 1]


def rises(counts):
    """Places at which the count rises by more than max(1, 1 %) over the lowest before it."""
    found, lowest = [], None
    for i, count in enumerate(counts):
        if lowest is not None and count > lowest + max(1, 0.01 * lowest):
            found.append(i)
        lowest = count if lowest is None else min(lowest, count)
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files")
    parser.add_argument("--program", default="build/release/bin/tessora")
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--high_quality", action="store_true")
    parser.add_argument("--random", type=int, default=5, help="random limits beside the fixed ones (5)")
    parser.add_argument("--seed", type=int, default=1)
    arguments = parser.parse_args()
    chance = random.Random(arguments.seed)
    limits = sorted(LIMITS + [round(chance.random(), 3) for _ in range(arguments.random)])
    print(f"{'model':16}" + "".join(f"{limit:>7g}" for limit in limits))
    broken = False
    for mesh in runs.models_in(arguments.models, arguments.only):
        counts = []
        for limit in limits:
            with tempfile.TemporaryDirectory() as folder:
                options = ["--stretch", limit] + ["--high_quality"] * arguments.high_quality
                # A texture in which all charts fit: their number is what counts here.
                options += ["--width", 2048, "--height", 2048, "--padding", 0]
                run, report = runs.unwrap(arguments.program, mesh,
                                          pathlib.Path(folder) / mesh.name, options)
            if run.code != 0:
                raise SystemExit(f"{mesh.stem}: exit {run.code}: {run.text.strip()[:200]}")
            counts.append(report["charts"])
        bad = rises(counts)
        broken |= bool(bad)
        note = "  RISES at " + ", ".join(f"{limits[i]:g}" for i in bad) if bad else ""
        if counts[-1] >= counts[limits.index(0.1)]:
            note += "  at 1 no fewer than at 0.1"
        print(f"{mesh.stem:16}" + "".join(f"{count:>7}" for count in counts) + note, flush=True)
    sys.exit(1 if broken else 0)


if __name__ == "__main__":
    main()
