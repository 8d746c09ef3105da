"""Automatic UV unwrapping: charts without flips or overlaps under a stretch limit, packed with a gutter.

    import tessora
    atlas = tessora.unwrap(vertices, faces, width=1024, height=1024, gutter=4)
    atlas.corner_uvs     # one UV per corner of the faces
    atlas.uvs, atlas.vmapping, atlas.indices     # one UV per new vertex, as GPUs want it

Meshes are vertices of shape (n, 3) and faces: an array of shape (m, k) for polygons of k corners, a sequence
of sequences for polygons of any size, or all corners in one flat array with `offsets`. The same input gives
the same bits as the program `tessora unwrap` gives, on every machine.
"""

import numpy

from . import _engine
from ._errors import Error

__all__ = ["Atlas", "Error", "Measures", "measure", "pack", "parametrize", "unwrap"]
__version__ = _engine.version

_MOST = 2**32 - 2


def _rows(values, columns, name):
    """A float array of shape (n, columns) whose rows have no gaps; copied only if it has to be."""
    array = numpy.asarray(values)
    if array.size == 0:
        return numpy.zeros((0, columns), numpy.float32)
    if array.ndim != 2 or array.shape[1] != columns:
        raise Error(f"{name}: the shape is {array.shape}; it must be (n, {columns})")
    if array.dtype.kind not in "fiub":
        raise Error(f"{name}: the type is {array.dtype}; it must be a number")
    if array.dtype not in (numpy.float32, numpy.float64):
        array = array.astype(numpy.float64)
    dense = array.strides[1] == array.itemsize and array.strides[0] >= columns * array.itemsize
    return array if dense and array.dtype.isnative else numpy.ascontiguousarray(array, array.dtype.newbyteorder("="))


def _ids(values, name):
    """A flat array of vertex ids, 16 or 32 bits."""
    array = numpy.asarray(values)
    if array.size == 0:
        return numpy.zeros(0, numpy.uint32)
    if array.dtype.kind not in "iu":
        raise Error(f"{name}: the type is {array.dtype}; it must be an integer")
    array = array.reshape(-1)
    if array.dtype in (numpy.uint16, numpy.uint32) and array.strides[0] > 0 and array.dtype.isnative:
        return array
    low, high = int(array.min()), int(array.max())
    if low < 0 or high > _MOST:
        wrong = int(numpy.flatnonzero((array < 0) | (array > _MOST))[0])
        raise Error(f"{name}[{wrong}] is {int(array[wrong])}, no vertex", "index_out_of_range", wrong)
    return array.astype(numpy.uint32)


def _corners(faces, offsets):
    """The flat array of corners, and the offsets or None for triangles."""
    if offsets is not None:
        return _ids(faces, "faces"), numpy.ascontiguousarray(_ids(offsets, "offsets"), numpy.uint32)
    if isinstance(faces, numpy.ndarray) or not any(True for _ in faces):
        array = numpy.asarray(faces)
    else:
        counts = numpy.fromiter((len(face) for face in faces), numpy.int64, len(faces))
        if not (counts == counts[0]).all():
            flat = [corner for face in faces for corner in face]
            return _ids(flat, "faces"), numpy.concatenate(([0], numpy.cumsum(counts))).astype(numpy.uint32)
        array = numpy.asarray(faces)
    if array.size == 0:
        return numpy.zeros(0, numpy.uint32), None
    if array.ndim != 2 or array.shape[1] < 3:
        raise Error(f"faces: the shape is {array.shape}; it must be (n, k) with k at least 3, "
                    "or flat with offsets")
    count, size = array.shape
    return _ids(array, "faces"), None if size == 3 else numpy.arange(count + 1, dtype=numpy.uint32) * size


def _cut_marks(cuts, corners, offsets):
    """A byte per corner from one per corner, or from pairs of vertices."""
    cuts = numpy.asarray(cuts)
    if cuts.dtype.kind == "b" or cuts.dtype == numpy.uint8:
        return numpy.ascontiguousarray(cuts.reshape(-1)).view(numpy.uint8)
    if cuts.size == 0:
        return None
    if cuts.dtype.kind not in "iu" or cuts.ndim != 2 or cuts.shape[1] != 2:
        raise Error("cuts: expected a bool per corner, or pairs of vertices of shape (n, 2)")
    following = numpy.arange(1, len(corners) + 1)
    starts = numpy.arange(0, len(corners), 3) if offsets is None else offsets[:-1]
    ends = starts + 3 if offsets is None else offsets[1:]
    if ends.size and ends.max() <= len(corners):
        following[ends - 1] = starts
    a, b = corners.astype(numpy.uint64), corners[following % max(len(corners), 1)].astype(numpy.uint64)
    edges = numpy.minimum(a, b) << numpy.uint64(32) | numpy.maximum(a, b)
    pairs = numpy.sort(cuts.astype(numpy.uint64), axis=1)
    return numpy.isin(edges, pairs[:, 0] << numpy.uint64(32) | pairs[:, 1]).view(numpy.uint8)


def _polygons(vertices, faces, offsets, cuts=None, normals=None, weld=False):
    positions = _rows(vertices, 3, "vertices")
    corners, offsets = _corners(faces, offsets)
    if cuts is not None:
        cuts = _cut_marks(cuts, corners, offsets)
    per_corner = False
    if normals is not None:
        normals = numpy.asarray(normals)
        normals = _rows(normals.reshape(-1, 3) if normals.ndim == 3 else normals, 3, "normals")
        per_corner = len(normals) == len(corners) != len(positions)
    return _engine.Polygons(positions, corners, offsets, cuts, normals, per_corner, bool(weld)), corners


def _corner_uvs(uvs, corners, vertex_count):
    """UVs per corner, from those or from UVs per vertex."""
    array = numpy.asarray(uvs)
    if array.ndim == 3:
        array = array.reshape(-1, array.shape[2])
    array = _rows(array, 2, "uvs")
    if len(array) != len(corners) and len(array) == vertex_count and (not corners.size or corners.max() < vertex_count):
        array = array[corners]
    return array


def _choice(name, value, choices):
    try:
        return choices.index(value)
    except ValueError:
        raise Error(f"{name} is {value!r}; it must be {', '.join(map(repr, choices[:-1]))} or {choices[-1]!r}") from None


def _whole(name, value, most=2**31 - 1):
    number = int(value)
    if number != value or not 0 <= number <= most:
        raise Error(f"{name} is {value}; it must be a whole number, 0 to {most}")
    return number


class Atlas:
    """The result of unwrap() or pack(). Arrays are views of memory that the atlas owns.

    uvs: float32 (n, 2), one per new vertex, in the texture: 0 to 1
    vmapping: uint32 (n,), the vertex that each new vertex is a copy of
    indices: uint32 (t, 3), the triangles over the new vertices; faces are triangulated in order
    corner_vertices: uint32 (c,), the new vertex of every corner of the faces
    corner_uvs: float32 (c, 2), the UV of every corner of the faces
    triangle_corners: uint32 (t, 3), the corners that each triangle joins
    charts: uint32 (t,), the chart of every triangle, less than chart_count
    over_limit: uint32, triangles of charts over the stretch limit: single faces that cannot be flattened better
    lost: uint32, triangles that rounding collapsed or flipped; normally none
    chart_count, stretch: the number of charts; the stretch reached, 0 to 1
    coverage: float64 per tile, tiles: uint32 per chart, texels_per_unit: of pack() only
    """

    def __init__(self, made):
        self._made = made
        self.uvs = made.uvs
        self.vmapping = made.vmapping
        self.indices = made.indices
        self.corner_vertices = made.corner_vertices
        self.triangle_corners = made.triangle_corners.reshape(-1, 3)
        self.charts = made.charts
        self.over_limit = made.over_limit
        self.lost = made.lost
        self.chart_count = made.chart_count
        self.stretch = made.stretch
        self.coverage = made.coverage
        self.tiles = made.tiles
        self.texels_per_unit = made.texels_per_unit

    @property
    def corner_uvs(self):
        return self.uvs[self.corner_vertices]

    def __repr__(self):
        return (f"<tessora.Atlas: {self.chart_count} charts, {len(self.indices)} triangles, "
                f"stretch {self.stretch:.3g}>")


def unwrap(vertices, faces, *, offsets=None, stretch=0.15, width=512, height=512, gutter=2.0, quality="fast",
           cuts=None, normals=None, weld=False, max_charts=0, stack=False, cut_to_pack=False, threads=0,
           effort=4, progress=None):
    """Unwraps a mesh to a texture and returns an Atlas.

    vertices: numbers of shape (n, 3), any unit
    faces: integers of shape (m, k), a sequence of sequences, or flat with `offsets`
    offsets: face i has the corners offsets[i] to offsets[i + 1] - 1 of `faces`
    stretch: the limit, 0 (isometric) to 1 (any)
    width, height: of the texture, texels; gutter: the least distance of two charts, texels
    quality: "fast" or "quality"
    cuts: edges that become seams: pairs of vertices of shape (n, 2), or a bool per corner for the edge from
        it to the next corner of its face
    normals: per vertex (n, 3) or per corner: edges become seams where normals differ between their sides
    weld: vertices at equal positions count as one, for meshes whose vertices are split at normals
    max_charts: more charts than this are an error; 0 = no limit
    stack: copies of a sheet share its place
    cut_to_pack: cut large charts where that lets all charts grow, however few there are and in fast mode too;
        quality mode does so by itself where several charts share the texture and stretch is below 0.5
    threads: that large meshes are unwrapped on, the calling one included; 0 = one a processor. The result does
        not depend on it
    effort: for the layout, 0 to 10; each step from 4 on about doubles the time. In quality mode more effort also
        makes other cuts
    progress: called with (stage, fraction), a text and 0 to 1. What it raises stops the work and is raised
        here; so is KeyboardInterrupt.

    Raises Error with `status` and `element`. The interpreter's lock is released; arrays must not change
    meanwhile. float32 vertices are used as they are; others are centred if they are far from the origin and
    divided by a power of ten before they are rounded, so that the result does not depend on the unit.
    """
    polygons, _ = _polygons(vertices, faces, offsets, cuts, normals, weld)
    return Atlas(_engine.create(polygons, stretch, _whole("max_charts", max_charts), _whole("width", width),
                                _whole("height", height), gutter, bool(_choice("quality", quality, ["fast", "quality"])),
                                bool(stack), bool(cut_to_pack), _whole("threads", threads), _whole("effort", effort), progress))


def pack(vertices, faces, uvs, *, offsets=None, charts=None, keep=None, width=512, height=512, gutter=2.0, tiles=1,
         turns="any", align=False, density="as_is", texels_per_unit=0.0, stack="none", effort=4, quality="quality",
         weld=False, progress=None):
    """Packs charts that exist, without touching their shape, and returns an Atlas.

    uvs: per corner (c, 2), or per vertex (n, 2). Corners at one vertex with equal UVs are connected
    charts: an integer per face, equal ones are one chart; by default connected faces are
    keep: a bool per face: its chart stays where it is
    tiles: number of textures; tile i is moved by (i % 10, i // 10)
    turns: "any", "quarter" or "none"; align: turn straight borders parallel to the axes first
    density: "as_is", "uniform" (equal texels per length on the surface) or "fixed" (`texels_per_unit`)
    stack: "none", "congruent" or "mirrored": charts of one shape share a place
    effort: 0 to 10; every step doubles the time for the search
    The others are those of unwrap().
    """
    polygons, corners = _polygons(vertices, faces, offsets, weld=weld)
    if charts is not None:
        charts = _ids(charts, "charts").astype(numpy.uint32, copy=False)
    if keep is not None:
        keep = numpy.ascontiguousarray(keep, bool).view(numpy.uint8)
    return Atlas(_engine.pack(polygons, _corner_uvs(uvs, corners, len(vertices)), charts, keep, _whole("width", width),
                              _whole("height", height), gutter, _whole("tiles", tiles),
                              _choice("turns", turns, ["any", "quarter", "none"]), bool(align),
                              _choice("density", density, ["as_is", "uniform", "fixed"]), texels_per_unit,
                              _choice("stack", stack, ["none", "congruent", "mirrored"]), _whole("effort", effort),
                              bool(_choice("quality", quality, ["fast", "quality"])), progress))


class Measures:
    """The figures of a layout; docs/measures.md defines them. `breaches` lists the broken guarantees as
    (name, sentence, faces); it is empty if flips, overlaps, stretch and gutter are as promised."""

    def __init__(self, figures):
        self.__dict__.update(figures)

    def __repr__(self):
        return "<tessora.Measures: " + ", ".join(f"{name} {value}" for name, value in self.__dict__.items()) + ">"


def measure(vertices, faces, uvs, *, offsets=None, width=512, height=512, gutter=2.0, stretch=0.15):
    """Measures any layout and checks it against a gutter (texels) and a stretch limit. Returns Measures.

    uvs: per corner (c, 2), or per vertex (n, 2)
    """
    polygons, corners = _polygons(vertices, faces, offsets)
    return Measures(_engine.measure(polygons, _corner_uvs(uvs, corners, len(vertices)), width, height, gutter, stretch))


def parametrize(vertices, faces):
    """Unwraps triangles with the defaults of unwrap().

    Returns (vmapping, indices, uvs): uint32 (n,), uint32 (t, 3), float32 (n, 2). New vertex i is a copy of
    vertex vmapping[i].
    """
    atlas = unwrap(vertices, faces)
    return atlas.vmapping, atlas.indices, atlas.uvs
