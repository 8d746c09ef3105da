"""Between Blender's meshes and the engine's arrays: several objects become one mesh, and its result goes back."""

import numpy

from . import engine


def _read(collection, name, kind, columns=1):
    values = numpy.empty(len(collection) * columns, kind)
    collection.foreach_get(name, values)
    return values


class Part:
    """The faces of one object that take part."""

    def __init__(self, obj, selected_only):
        mesh = obj.data
        self.name = obj.name
        sizes = _read(mesh.polygons, "loop_total", numpy.int32)
        chosen = _read(mesh.polygons, "select", bool) if selected_only else numpy.ones(len(sizes), bool)
        self.loops = numpy.flatnonzero(numpy.repeat(chosen, sizes))
        self.sizes = sizes[chosen]
        self.vertices = _read(mesh.loops, "vertex_index", numpy.int32)[self.loops]
        self.edges = _read(mesh.loops, "edge_index", numpy.int32)[self.loops]
        self.positions = _read(mesh.vertices, "co", numpy.float32, 3).reshape(-1, 3)
        self.seams = _read(mesh.edges, "use_seam", bool)


def read_parts(objects, selected_only):
    """Parts of the objects with faces; an object data block that two objects share counts once."""
    parts, known = [], set()
    for obj in objects:
        if obj.type != "MESH" or obj.data in known:
            continue
        known.add(obj.data)
        part = Part(obj, selected_only)
        if len(part.sizes):
            parts.append((obj, part))
    return parts


def unselected(objects):
    """A bool per face of read_parts(objects, False)."""
    return numpy.concatenate([~_read(obj.data.polygons, "select", bool) for obj, _ in read_parts(objects, False)])


def join(parts, use_seams):
    """One mesh of all parts. Several are measured in the scene's space, so that their sizes compare."""
    positions, corners, sizes, cuts, passed = [], [], [], [], 0
    for obj, part in parts:
        points = part.positions.astype(numpy.float64)
        if len(parts) > 1:
            matrix = numpy.array(obj.matrix_world, numpy.float64)
            points = points @ matrix[:3, :3].T + matrix[:3, 3]
        positions.append(points)
        corners.append(part.vertices + passed)
        sizes.append(part.sizes)
        cuts.append(part.seams[part.edges])
        passed += len(points)
    offsets = numpy.concatenate([[0], numpy.cumsum(numpy.concatenate(sizes))])
    return engine.Mesh(numpy.concatenate(positions), numpy.concatenate(corners), offsets,
                       numpy.concatenate(cuts) if use_seams else None)


def uv_layer(mesh, name):
    """The named layer, or the active one; made if it is missing. None if no further layer is possible."""
    layer = mesh.uv_layers.get(name) if name else mesh.uv_layers.active
    return layer or mesh.uv_layers.new(name=name or "UVMap")


def read_uvs(parts, layer_name):
    """UVs per corner of all parts; None if an object lacks the layer."""
    lists = []
    for obj, part in parts:
        layers = obj.data.uv_layers
        layer = layers.get(layer_name) if layer_name else layers.active
        if layer is None:
            return None
        lists.append(_read(layer.data, "uv", numpy.float32, 2).reshape(-1, 2)[part.loops])
    return numpy.concatenate(lists)


def write(parts, atlas, layer_name, mark_seams):
    """Writes the UVs, and seams at the borders of the islands. Returns the names of objects that take no layer."""
    first, refused = 0, []
    for obj, part in parts:
        count = len(part.loops)
        layer = uv_layer(obj.data, layer_name)
        if layer is None:
            refused.append(obj.name)
        else:
            obj.data.uv_layers.active = layer
            values = _read(layer.data, "uv", numpy.float32, 2).reshape(-1, 2)
            values[part.loops] = atlas.uvs[first:first + count]
            layer.data.foreach_set("uv", values.ravel())
            if mark_seams:
                _mark_seams(obj.data, part, atlas.corner_vertices[first:first + count])
            obj.data.update()
        first += count
    return refused


def _mark_seams(mesh, part, corner_vertices):
    """An edge is a seam if two of its faces do not share both of its ends in the texture."""
    following = numpy.arange(1, len(part.loops) + 1)
    ends = numpy.cumsum(part.sizes)
    following[ends - 1] = ends - part.sizes
    here, there = corner_vertices, corner_vertices[following]
    swap = part.vertices > part.vertices[following]
    pair = numpy.where(swap, there, here).astype(numpy.uint64) << numpy.uint64(32) | numpy.where(swap, here, there)
    order = numpy.argsort(part.edges, kind="stable")
    edges, pair = part.edges[order], pair[order]
    split = (edges[1:] == edges[:-1]) & (pair[1:] != pair[:-1])
    seams = part.seams.copy()
    seams[part.edges] = False
    seams[edges[1:][split]] = True
    mesh.edges.foreach_set("use_seam", seams)
