"""Inside Blender, started by bench/reach.py --blender: unwraps OBJ files by the add-on and by the Python package.

Both get the mesh as Blender holds it: its polygons, and positions in single precision. Prints for every file
"reach:", the two hashes of the coordinates per corner, the number of corners and the file."""

import pathlib
import sys

import bpy
import numpy

build, addon, mode, *files = sys.argv[sys.argv.index("--") + 1:]
sys.path[:0] = [str(pathlib.Path(__file__).resolve().parent), str(pathlib.Path(build) / "python")]
import reach
import tessora


def read(collection, name, kind, columns=1):
    values = numpy.empty(len(collection) * columns, kind)
    collection.foreach_get(name, values)
    return values


bpy.ops.wm.read_factory_settings(use_empty=True)
bpy.ops.preferences.addon_install(filepath=addon)
bpy.ops.preferences.addon_enable(module="tessora_uv")
for path in files:
    source = reach.Mesh(path)
    data = bpy.data.meshes.new("mesh")
    data.from_pydata(source.positions.tolist(), [], [c.tolist() for c in numpy.split(source.corners, source.offsets[1:-1])])
    data.validate()  # drops polygons that repeat a vertex
    if not data.polygons:
        print("reach: - - 0", path, flush=True)
        continue
    obj = bpy.data.objects.new("mesh", data)
    bpy.context.collection.objects.link(obj)
    bpy.context.view_layer.objects.active = obj
    obj.select_set(True)
    bpy.ops.uv.tessora_unwrap(width=512, height=512, gutter=2, quality=mode == "quality")
    sizes = read(data.polygons, "loop_total", numpy.int32)
    atlas = tessora.unwrap(read(data.vertices, "co", numpy.float32, 3).reshape(-1, 3).astype(float),
                           read(data.loops, "vertex_index", numpy.int32), offsets=numpy.concatenate([[0], numpy.cumsum(sizes)]),
                           quality=mode)
    uvs = read(data.uv_layers.active.data, "uv", numpy.float32, 2)
    print("reach:", reach.digest(uvs), reach.digest(atlas.corner_uvs), len(data.loops), path, flush=True)
    bpy.data.objects.remove(obj)
    bpy.data.meshes.remove(data)
