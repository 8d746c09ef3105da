#!/usr/bin/env python3
"""Unwraps every model of a folder with every setting of a fixed list and prints, from the written
files alone, whether the result keeps what is promised: no flips, overlaps or mirrored charts, every
corner mapped, all UVs in the unit square, the gutter kept, every chart under the stretch limit.

    bench/road_table.py MODELS
    bench/road_table.py MODELS --only koala,boot --settings default,wide
    bench/road_table.py MODELS --high_quality --json table.json

Exits with 1 if any line is broken. A refusal because the charts do not fit the texture (exit code 5)
is accepted if there are more than a quarter as many charts as the gutter leaves room for."""

import argparse
import json
import pathlib
import re
import sys
import tempfile

import unwrap_runs as runs

SETTINGS = {
    "default": {},
    "stretch": {"stretch": 0.05},
    "creases": {"use_grooves": "on", "use_ridges": "on", "groove_angle": 40, "ridge_angle": 40},
    "keep_seams": {"keep_seams": "on"},
    "wide": {"width": 1024, "height": 256, "padding": 8},
}
GAP_TOLERANCE = 0.01  # texels
HEADER = ["model", "setting", "exit", "charts", "flips", "overlaps", "mirrored", "L2 worst", "limit",
          "gap", "UV range", "over", "cover", "seconds", "MB", "verdict"]


def faults(m, padding):
    """The violated guarantees of a measured file."""
    found = []
    for key, name in [("unmapped_corners", "unmapped"), ("flipped", "flipped"),
                      ("dented", "dented"), ("turned", "turned"),
                      ("collapsed", "collapsed"), ("mirrored_charts", "mirrored"),
                      ("outside", "outside")]:
        if m[key]:
            found.append(f"{name} {m[key]}")
    pairs = m["overlap_pairs_within"] + m["overlap_pairs_between"]
    if pairs:
        found.append(f"overlaps {pairs}")
    if m["gap_texels"] is not None and m["gap_texels"] < padding - GAP_TOLERANCE:
        found.append(f"gap {m['gap_texels']:.3f}")
    if m["over_limit_broken"]:
        found.append(f"over limit {len(m['over_limit_broken'])}")
    return found


def refusal_verdict(text, charts, width, height, padding):
    """Whether exit code 5 was justified. `charts`: the number of charts with another setting, used if
    `text` does not name one."""
    numbers = [int(n) for n in re.findall(r"(\d+) charts", text)]
    count = max(numbers) if numbers else charts
    capacity = runs.gutter_capacity(width, height, padding)
    room = f"{count} charts, room for {capacity}"
    return f"ok: does not fit ({room})" if count and count > capacity / 4 else f"BROKEN: {room}"


def one_line(program, mesh, name, setting, folder, charts_elsewhere, quality):
    width, height = setting.get("width", 512), setting.get("height", 512)
    padding, stretch = setting.get("padding", 2), setting.get("stretch", 0.15)
    output = pathlib.Path(folder) / f"{mesh.stem}_{name}.obj"
    output.unlink(missing_ok=True)
    options = [word for key, value in setting.items() for word in (f"--{key}", value)]
    run, report = runs.unwrap(program, mesh, output, options + (["--high_quality"] if quality else []))
    line = {"model": mesh.stem, "setting": name, "exit": run.code, "seconds": run.seconds,
            "peak_mb": (report or {}).get("peak_mb"), "measures": None}
    if run.code == 5:
        line["verdict"] = refusal_verdict(run.text, charts_elsewhere, width, height, padding)
    elif run.code != 0 or not output.exists():
        words = (report or {}).get("reason") or run.text.strip() or "no output"
        line["verdict"] = "BROKEN: " + " ".join(words.split())[:160]
    else:
        m = runs.measure(program, output, width, height, stretch)
        m["worst_l2"] = 1.0 / (1.0 - m["worst_chart_stretch"])
        found = faults(m, padding)
        line["measures"] = m
        line["verdict"] = "BROKEN: " + ", ".join(found) if found else "ok"
        output.unlink()
    line["limit"] = 1.0 / (1.0 - stretch)
    return line


def cells(line):
    m = line["measures"]
    start = [line["model"], line["setting"], line["exit"]]
    end = [f"{line['seconds']:.2f}", f"{line['peak_mb']:.0f}" if line["peak_mb"] else "-",
           line["verdict"]]
    if m is None:
        return start + ["-"] * (len(HEADER) - len(start) - len(end)) + end
    low, high = min(m["uv_min"]), max(m["uv_max"])
    return start + [
        m["charts"], m["flipped"] + m["collapsed"],
        m["overlap_pairs_within"] + m["overlap_pairs_between"], m["mirrored_charts"],
        f"{m['worst_l2']:.4f}", f"{line['limit']:.4f}",
        "-" if m["gap_texels"] is None else f"{m['gap_texels']:.3f}", f"{low:.4f}..{high:.4f}",
        len(m["over_limit_polygons"]), f"{m['coverage']:.3f}"] + end


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files")
    parser.add_argument("--program", help="the tessora program; default: build/release/bin/tessora")
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--settings", default=",".join(SETTINGS), help="of: " + ", ".join(SETTINGS))
    parser.add_argument("--high_quality", action="store_true", help="with --high_quality")
    parser.add_argument("--json", help="also write all figures to this file")
    words = parser.parse_args()
    program = runs.find_program(words.program)
    unknown = set(words.settings.split(",")) - set(SETTINGS)
    if unknown:
        parser.error(f"no such setting: {', '.join(sorted(unknown))}")
    lines = []
    with tempfile.TemporaryDirectory(prefix="road_table.") as folder:
        for mesh in runs.models_in(words.models, words.only):
            charts = 0
            for name in words.settings.split(","):
                if name == "keep_seams" and not runs.has_uvs(mesh):
                    continue
                line = one_line(program, mesh, name, SETTINGS[name], folder, charts,
                                words.high_quality)
                charts = line["measures"]["charts"] if line["measures"] else charts
                lines.append(line)
                print(f"{line['model']:16} {line['setting']:11} {line['seconds']:7.2f} s  "
                      f"{line['verdict']}", file=sys.stderr, flush=True)
    runs.print_table(HEADER, [cells(line) for line in lines], left=2)
    broken = sum(line["verdict"].startswith("BROKEN") for line in lines)
    print(f"\n{len(lines)} lines, {broken} broken")
    if words.json:
        for line in lines:
            (line["measures"] or {}).pop("chart_list", None)
        pathlib.Path(words.json).write_text(json.dumps(lines, indent=1) + "\n")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
