#!/usr/bin/env python3
"""Unwraps the models listed in peers.tsv in fast and quality mode and prints our results beside those
of the peers, with means over all models. Results are measured from the written files. A second table says what an
artist looks at: seam inside planar regions and on edges that hardly bend, straight border along the axes, and equal parts.

    bench/compare_peers.py MODELS
    bench/compare_peers.py MODELS --modes quality --only koala,boot
    bench/compare_peers.py MODELS --modes quality --stretch 0.03
    bench/compare_peers.py MODELS --watlas FOLDER

With --watlas (a folder; the npm package watlas is installed there if Node.js and npm are present)
xatlas' WebAssembly build runs on the same files in the same run, as a black box."""

import argparse
import csv
import json
import pathlib
import shutil
import subprocess
import sys
import tempfile

import seams
import unwrap_runs as runs

HERE = pathlib.Path(__file__).resolve().parent
FIGURES = ["charts", "seam", "l2", "coverage", "seconds"]
PEERS = ["xatlas", "smart_uv"]
TOYS = {"tet", "cube_uv", "keyhole66", "triple_vierbein"}  # excluded from all means
LARGE = {"sword_quads", "koala", "dragon_res2"}            # excluded from the sum of charts


def read_peers(path):
    """mesh -> peer -> figure -> number."""
    lines = [line for line in path.read_text().splitlines() if not line.startswith("#")]
    return {row["mesh"]: {peer: {f: float(row[f"{peer}_{f}"]) for f in FIGURES} for peer in PEERS}
            for row in csv.DictReader(lines, delimiter="\t")}


def better(peers):
    """The best value of each figure over the peers."""
    best = {f: min(p[f] for p in peers.values()) for f in FIGURES}
    best["coverage"] = max(p["coverage"] for p in peers.values())
    return best


def figures_of(measures, seconds):
    return {"charts": measures["charts"], "seam": measures["seam_length_relative"],
            "l2": measures["l2_stretch"], "coverage": measures["coverage"], "seconds": seconds,
            "worst_l2": 1.0 / (1.0 - measures["worst_chart_stretch"])}


def looks_of(measures, mesh):
    """What an artist looks at: shares of all seam under 1 degree and from there to 10, straight border along the axes in
    texels and the most that turning every chart by itself can reach, congruent parts and those laid out alike."""
    flat, slight = seams.seam_shares(mesh)
    congruent, alike = seams.alike_parts(mesh)
    return {"flat": flat, "slight": slight, "straight": measures["straight_texels"],
            "straight_best": measures["straight_texels_best"], "congruent": congruent, "alike": alike}


def looks_summary(ours):
    """Over all meshes but toys."""
    rows = [row for name, row in ours.items() if name not in TOYS]
    best = sum(row["straight_best"] for row in rows)
    return {"straight border along the axes, of the most possible":
            sum(row["straight"] for row in rows) / best if best > 0 else float("nan"),
            "congruent parts": sum(row["congruent"] for row in rows),
            "  laid out alike": sum(row["alike"] for row in rows)}


def short_looks(figures):
    if figures is None:
        return "-"
    best = figures["straight_best"]
    axis = f"{figures['straight'] / best:.3f}" if best > 0 else "-"
    parts = f"{figures['alike']} of {figures['congruent']}" if figures["congruent"] else "-"
    return f"{figures['flat']:.3f} / {figures['slight']:.3f} / {axis} / {parts}"


def unwrap_all(program, meshes, mode, stretch, folder):
    """mesh -> figures, for the meshes that could be unwrapped."""
    ours = {}
    options = ["--stretch", stretch] + (["--high_quality"] if mode == "quality" else [])
    for mesh in meshes:
        output = pathlib.Path(folder) / f"{mesh.stem}.obj"
        run, report = runs.unwrap(program, mesh, output, options)
        if run.code != 0:
            print(f"{mesh.stem}: {mode}: exit {run.code}: {run.text.strip()[:200]}", file=sys.stderr)
            continue
        measures = runs.measure(program, output, 512, 512, stretch)
        ours[mesh.stem] = {**figures_of(measures, report["seconds"]["generate"]),
                           **looks_of(measures, seams.Mesh(output))}
        output.unlink()
        print(f"{mesh.stem}: {mode}: {run.seconds:.2f} s", file=sys.stderr)
    return ours


def summary(ours, peers):
    """Means over all meshes but toys; ratios are ours over the better peer's."""
    names = [name for name in ours if name not in TOYS and name in peers]
    if not names:
        return {}
    best = {name: better(peers[name]) for name in names}
    charts = {n: ours[n]["charts"] / best[n]["charts"] for n in names}
    seams = {n: (ours[n]["seam"] + 0.1) / (best[n]["seam"] + 0.1) for n in names}
    # Coverage is compared with the peer that has fewer charts: many charts make packing easier.
    behind = {n: min(peers[n].values(), key=lambda p: p["charts"])["coverage"] - ours[n]["coverage"]
              for n in names}
    worst = lambda ratios: max(ratios, key=ratios.get)
    small = [n for n in names if n not in LARGE]
    return {
        "meshes": len(names),
        "charts, geometric mean of ratios": runs.geometric_mean(charts.values()),
        f"charts, worst ratio ({worst(charts)})": max(charts.values()),
        f"charts in all, {len(small)} meshes": sum(ours[n]["charts"] for n in small),
        f"  xatlas, the same {len(small)}": sum(peers[n]["xatlas"]["charts"] for n in small),
        "seams, geometric mean of ratios": runs.geometric_mean(seams.values()),
        f"seams, worst ratio ({worst(seams)})": max(seams.values()),
        "coverage, mean": sum(ours[n]["coverage"] for n in names) / len(names),
        "  better peer, mean": sum(best[n]["coverage"] for n in names) / len(names),
        f"coverage, furthest behind ({worst(behind)})": max(behind.values()),
        "L2, geometric mean": runs.geometric_mean(ours[n]["l2"] for n in names),
        "L2, worst chart": max(ours[n]["worst_l2"] for n in names),
    }


def against_quality(fast, quality):
    names = [n for n in fast if n in quality and n not in TOYS]
    if not names:
        return {}
    return {
        "charts, fast over quality, geometric mean":
            runs.geometric_mean(fast[n]["charts"] / quality[n]["charts"] for n in names),
        "seams, fast over quality, geometric mean":
            runs.geometric_mean((fast[n]["seam"] + 0.1) / (quality[n]["seam"] + 0.1)
                                for n in names),
        "coverage, quality less fast, mean":
            sum(quality[n]["coverage"] - fast[n]["coverage"] for n in names) / len(names),
    }


def install_watlas(folder):
    """Installs the package if possible. Returns whether it is present."""
    folder = pathlib.Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    if not shutil.which("node") or not shutil.which("npm"):
        print("Node.js or npm is missing; watlas is left out", file=sys.stderr)
        return False
    if not (folder / "node_modules" / "watlas").exists():
        subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--prefix", str(folder),
                        "watlas@1.0.1"], check=True, stdout=sys.stderr)
    return True


def run_watlas(program, meshes, package, folder):
    """mesh -> figures, measured like ours at the texture size that watlas chose."""
    found = {}
    for mesh in meshes:
        output = pathlib.Path(folder) / f"{mesh.stem}_watlas.obj"
        run = runs.Run(["node", str(HERE / "watlas_run.mjs"), str(package), str(mesh), str(output)],
                       900)
        if run.code != 0:
            print(f"{mesh.stem}: watlas: exit {run.code}: {run.text.strip()[-200:]}",
                  file=sys.stderr)
            continue
        told = json.loads(run.text.strip().splitlines()[-1])
        measures = runs.measure(program, output, told["width"], told["height"], 1)
        found[mesh.stem] = figures_of(measures, told["seconds"])
        output.unlink()
        print(f"{mesh.stem}: watlas: {told['seconds']:.2f} s", file=sys.stderr)
    return found


def short(figures):
    return "-" if figures is None else (f"{figures['charts']:.0f} / {figures['seam']:.2f} / "
                                        f"{figures['l2']:.4f} / {figures['coverage']:.3f} / "
                                        f"{figures['seconds']:.2f}")


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files")
    parser.add_argument("--program", help="the tessora program; default: build/release/bin/tessora")
    parser.add_argument("--modes", default="fast,quality", help="fast, quality or both")
    parser.add_argument("--stretch", default=0.15, type=float)
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--watlas", metavar="FOLDER", help="run xatlas' WebAssembly build as well")
    parser.add_argument("--json", help="also write all figures to this file")
    words = parser.parse_args()
    program, modes = runs.find_program(words.program), words.modes.split(",")
    if set(modes) - {"fast", "quality"}:
        parser.error("modes are fast and quality")
    peers = read_peers(HERE / "peers.tsv")
    meshes = [m for m in runs.models_in(words.models, words.only) if m.stem in peers]
    with tempfile.TemporaryDirectory(prefix="compare_peers.") as folder:
        ours = {mode: unwrap_all(program, meshes, mode, words.stretch, folder) for mode in modes}
        if words.watlas and install_watlas(words.watlas):
            ours["watlas, this run"] = run_watlas(program, meshes, words.watlas, folder)
    print("charts / seam length per sqrt(area) / L2 / coverage / seconds of the unwrap\n")
    runs.print_table(["model"] + list(ours) + PEERS,
                     [[mesh.stem] + [short(rows.get(mesh.stem)) for rows in ours.values()] +
                      [short(peers[mesh.stem][peer]) for peer in PEERS] for mesh in meshes])
    print("\nshare of seam under 1 degree / from 1 to 10 / straight border along the axes, of the most possible / "
          "congruent parts laid out alike\n")
    runs.print_table(["model"] + modes, [[mesh.stem] + [short_looks(ours[mode].get(mesh.stem)) for mode in modes]
                                         for mesh in meshes])
    results = {mode: {**summary(ours[mode], peers), **looks_summary(ours[mode])} for mode in modes}
    if len(modes) == 2:
        results["fast against quality"] = against_quality(ours["fast"], ours["quality"])
    for title, values in results.items():
        print(f"\n{title}, --stretch {words.stretch:g}:")
        for name, value in values.items():
            print(f"  {name:52} {value:.4g}")
    if words.json:
        pathlib.Path(words.json).write_text(json.dumps({"figures": ours, "means": results},
                                                       indent=1) + "\n")
    return 0 if all(len(ours[mode]) == len(meshes) for mode in modes) else 1


if __name__ == "__main__":
    sys.exit(main())
