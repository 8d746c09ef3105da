#!/usr/bin/env python3
"""Packs the charts of two other tools again, with `tessora pack`, and prints the coverage that they reached and ours.

    bench/pack_peers.py MODELS --watlas FOLDER
    bench/pack_peers.py MODELS --blender --only mine,spider

Each tool unwraps the models as a black box. Its charts are packed into a texture of the same size with the
smallest gap that it kept between two of them. Results whose charts overlap are left out, for they are no
layout. Exits with 1 if our coverage is not above the tool's on every mesh.

--watlas: xatlas' WebAssembly build; FOLDER as for bench/compare_peers.py. --blender: Blender's Smart UV Project."""

import argparse
import json
import pathlib
import sys
import tempfile

import compare_peers
import unwrap_runs as runs

SMART_UV = """
import bpy, math, sys
source, target = sys.argv[sys.argv.index("--") + 1:]
bpy.ops.wm.read_factory_settings(use_empty=True)
bpy.ops.wm.obj_import(filepath=source)
mesh = bpy.context.selected_objects[0]
bpy.context.view_layer.objects.active = mesh
bpy.ops.object.mode_set(mode="EDIT")
bpy.ops.mesh.select_all(action="SELECT")
bpy.ops.uv.smart_project(angle_limit=math.radians(66), margin_method="FRACTION", island_margin=1 / 512)
bpy.ops.object.mode_set(mode="OBJECT")
bpy.ops.wm.obj_export(filepath=target, export_materials=False, export_normals=False)
"""


def unwrap_by_watlas(package, mesh, output):
    """The size of the tool's texture, None if it failed."""
    run = runs.Run(["node", str(compare_peers.HERE / "watlas_run.mjs"), str(package), str(mesh), str(output)], 900)
    if run.code != 0:
        print(f"{mesh.stem}: watlas: exit {run.code}: {run.text.strip()[-200:]}", file=sys.stderr)
        return None
    told = json.loads(run.text.strip().splitlines()[-1])
    return told["width"], told["height"]


def unwrap_by_blender(mesh, output):
    run = runs.Run(["blender", "--background", "--factory-startup", "--python-expr", SMART_UV, "--",
                    str(mesh), str(output)], 900)
    if run.code != 0 or not output.exists():
        print(f"{mesh.stem}: Blender: exit {run.code}: {run.text.strip()[-200:]}", file=sys.stderr)
        return None
    return 512, 512


def pack_again(program, mesh, size, effort):
    """Charts, gap, their coverage and ours; None if the tool's charts overlap."""
    width, height = size
    theirs = runs.measure(program, mesh, width, height, 1)
    if theirs["overlap_pairs_between"] or not theirs["gap_texels"]:
        return None
    packed = mesh.with_name(mesh.stem + "_again.obj")
    run = runs.Run([str(program), "pack", str(mesh), "-o", str(packed), "--width", str(width), "--height", str(height),
                    "--padding", str(theirs["gap_texels"]), "--effort", str(effort), "--quiet"], 900)
    if run.code != 0:
        raise RuntimeError(f"{mesh}: cannot be packed: {run.text}")
    ours = runs.measure(program, packed, width, height, 1)
    packed.unlink()
    return theirs["charts"], theirs["gap_texels"], theirs["coverage"], ours["coverage"]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("models", help="folder of OBJ files")
    parser.add_argument("--program", help="the tessora program; default: build/release/bin/tessora")
    parser.add_argument("--only", default="", help="names of models, separated by commas")
    parser.add_argument("--watlas", metavar="FOLDER", help="where the npm package watlas is, or is to be, installed")
    parser.add_argument("--blender", action="store_true", help="run Blender")
    parser.add_argument("--effort", type=int, default=4, help="of our packing, 0 to 10")
    words = parser.parse_args()
    program = runs.find_program(words.program)
    tools = {}
    if words.watlas and compare_peers.install_watlas(words.watlas):
        tools["xatlas"] = lambda mesh, output: unwrap_by_watlas(words.watlas, mesh, output)
    if words.blender:
        tools["smart_uv"] = unwrap_by_blender
    if not tools:
        parser.error("name a tool: --watlas FOLDER or --blender")
    table, gains = [], []
    with tempfile.TemporaryDirectory(prefix="pack_peers.") as folder:
        for mesh in runs.models_in(words.models, words.only):
            if mesh.stem in compare_peers.TOYS:
                continue
            for tool, unwrap in tools.items():
                output = pathlib.Path(folder) / f"{mesh.stem}_{tool}.obj"
                size = unwrap(mesh, output)
                found = pack_again(program, output, size, words.effort) if size else None
                print(f"{mesh.stem}: {tool}: {found or 'left out'}", file=sys.stderr)
                output.unlink(missing_ok=True)
                if found is None:
                    continue
                charts, gap, theirs, ours = found
                gains.append(ours - theirs)
                table.append([mesh.stem, tool, str(charts), f"{gap:.2f}", f"{theirs:.4f}", f"{ours:.4f}",
                              f"{ours - theirs:+.4f}"])
    runs.print_table(["model", "tool", "charts", "gap", "theirs", "ours", "more"], table)
    if gains:
        print(f"\n{len(gains)} layouts: mean {sum(gains) / len(gains):+.4f}, least {min(gains):+.4f}")
    return 0 if gains and min(gains) > 0 else 1


if __name__ == "__main__":
    sys.exit(main())
