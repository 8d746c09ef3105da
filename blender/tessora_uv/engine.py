"""The engine's C library (tessora_atlas.h) by ctypes: numpy arrays in, numpy arrays out. Knows nothing of Blender.

A call releases the interpreter's lock, so it may run on a thread of its own."""

import ctypes
import os

import numpy

ABI_VERSION = 1
NAMES = ("libtessora_atlas.so.1", "tessora_atlas.dll", "libtessora_atlas.1.dylib")
TURNS = ("ANY", "QUARTER", "NONE")
DENSITIES = ("AS_IS", "UNIFORM", "FIXED")
STACKS = ("NONE", "CONGRUENT", "MIRRORED")
_TYPES = {"float32": 1, "float64": 2, "uint8": 3, "uint16": 4, "uint32": 5}
CANCELLED = 7


class EngineError(Exception):
    """A sentence for the user; `cancelled` if the progress function stopped the work."""

    def __init__(self, text, code=1):
        super().__init__(text)
        self.cancelled = code == CANCELLED


class _Array(ctypes.Structure):
    _fields_ = [("data", ctypes.c_void_p), ("count", ctypes.c_size_t), ("stride", ctypes.c_size_t),
                ("type", ctypes.c_int32)]


class _Mesh(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t)] + [
        (name, _Array) for name in ("positions", "indices", "offsets", "cuts", "normals", "neighbours", "false_edges")
    ] + [("normals_per_corner", ctypes.c_int32), ("weld", ctypes.c_int32)]


class _Uvs(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("uvs", _Array), ("charts", _Array), ("keep", _Array)]


_PROGRESS = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_char_p, ctypes.c_float, ctypes.c_void_p)
_CALLBACKS = [("progress", _PROGRESS), ("user", ctypes.c_void_p), ("parallel_for", ctypes.c_void_p)]


class _Options(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("max_stretch", ctypes.c_float), ("max_charts", ctypes.c_uint32),
                ("width", ctypes.c_uint32), ("height", ctypes.c_uint32), ("gutter", ctypes.c_float),
                ("quality", ctypes.c_int32), ("stack", ctypes.c_int32), ("cut_to_pack", ctypes.c_int32),
                ("texture_uvs", ctypes.c_int32)] + _CALLBACKS + [("threads", ctypes.c_uint32), ("effort", ctypes.c_int32)]


class _PackOptions(ctypes.Structure):
    _fields_ = [("struct_size", ctypes.c_size_t), ("width", ctypes.c_uint32), ("height", ctypes.c_uint32),
                ("gutter", ctypes.c_float), ("tiles", ctypes.c_uint32), ("turns", ctypes.c_int32),
                ("align", ctypes.c_int32), ("density", ctypes.c_int32), ("stack", ctypes.c_int32),
                ("effort", ctypes.c_int32), ("quality", ctypes.c_int32), ("texels_per_unit", ctypes.c_double)
                ] + _CALLBACKS


class _Error(ctypes.Structure):
    _fields_ = [("code", ctypes.c_int32), ("element", ctypes.c_uint32), ("text", ctypes.c_char * 248)]


class Mesh:
    """Polygons: positions (n, 3), a vertex per corner, offsets[m + 1], and a bool per corner for cuts or None."""

    def __init__(self, positions, corners, offsets, cuts=None):
        # Double precision: the engine then brings the mesh to a unit and a place of its own.
        self.positions = numpy.ascontiguousarray(positions, numpy.float64)
        self.corners = numpy.ascontiguousarray(corners, numpy.uint32)
        self.offsets = numpy.ascontiguousarray(offsets, numpy.uint32)
        self.cuts = None if cuts is None else numpy.ascontiguousarray(cuts, numpy.uint8)


class Atlas:
    """uvs (c, 2) per corner; corner_vertices (c,): corners are connected in the texture if they are equal."""

    def __init__(self, uvs, corner_vertices, charts, stretch, over_limit):
        self.uvs = uvs
        self.corner_vertices = corner_vertices
        self.charts = charts
        self.stretch = stretch
        self.over_limit = over_limit


def _array(values, components=1):
    if values is None or values.size == 0:
        return _Array()
    return _Array(values.ctypes.data, values.size // components, 0, _TYPES[values.dtype.name])


def find_library(chosen=""):
    """The file to load: the chosen one, the one beside this file, or what the system finds by name."""
    if chosen:
        return chosen
    beside = (os.path.join(os.path.dirname(os.path.abspath(__file__)), name) for name in NAMES)
    return next(filter(os.path.exists, beside), NAMES[1] if os.name == "nt" else NAMES[0])


class Engine:
    """The loaded library. Raises EngineError if it cannot be loaded."""

    def __init__(self, path=""):
        self.path = find_library(path)
        try:
            self._library = ctypes.CDLL(self.path)
            version = self._library.tessora_abi_version()
        except (OSError, AttributeError) as error:
            raise EngineError(f"The library {self.path} cannot be loaded: {error}. Install the package of Tessora, "
                              "or name the library in the add-on's preferences") from None
        if version != ABI_VERSION:
            raise EngineError(f"{self.path} has interface {version}; this add-on needs {ABI_VERSION}")
        self._declare()

    def _declare(self):
        library, pointer = self._library, ctypes.c_void_p
        count = ctypes.POINTER(ctypes.c_size_t)
        library.tessora_version.restype = ctypes.c_char_p
        library.tessora_atlas_free.argtypes = [pointer]
        library.tessora_atlas_chart_count.argtypes = [pointer]
        library.tessora_atlas_chart_count.restype = ctypes.c_uint32
        library.tessora_atlas_stretch.argtypes = [pointer]
        library.tessora_atlas_stretch.restype = ctypes.c_float
        for name, element in (("uvs", ctypes.c_float), ("corner_vertices", ctypes.c_uint32),
                              ("over_limit", ctypes.c_uint32)):
            function = getattr(library, "tessora_atlas_" + name)
            function.argtypes, function.restype = [pointer, count], ctypes.POINTER(element)

    @property
    def version(self):
        return self._library.tessora_version().decode()

    def unwrap(self, mesh, progress=None, **options):
        """Options are the members of tessora_options."""
        return self._run("tessora_create", mesh, None, self._options(_Options, "tessora_options_init", options, progress))

    def pack(self, mesh, uvs, keep=None, progress=None, **options):
        """uvs (c, 2) per corner; keep: a bool per polygon or None. Options are the members of
        tessora_pack_options."""
        uvs = numpy.ascontiguousarray(uvs, numpy.float32)
        keep = None if keep is None else numpy.ascontiguousarray(keep, numpy.uint8)
        given = _Uvs()
        self._library.tessora_uvs_init(ctypes.byref(given), ctypes.c_size_t(ctypes.sizeof(given)))
        given.uvs, given.keep = _array(uvs, 2), _array(keep)
        given.held = (uvs, keep)
        return self._run("tessora_pack", mesh, given,
                         self._options(_PackOptions, "tessora_pack_options_init", options, progress))

    def _options(self, kind, initialise, options, progress):
        made = kind()
        getattr(self._library, initialise)(ctypes.byref(made), ctypes.c_size_t(ctypes.sizeof(made)))
        for name, value in options.items():
            setattr(made, name, value)
        if progress is not None:
            made.progress = _PROGRESS(lambda stage, fraction, _: 0 if progress(stage.decode(), fraction) else 1)
        return made

    def _run(self, function, mesh, uvs, options):
        given = _Mesh()
        self._library.tessora_mesh_init(ctypes.byref(given), ctypes.c_size_t(ctypes.sizeof(given)))
        given.positions, given.indices = _array(mesh.positions, 3), _array(mesh.corners)
        given.offsets, given.cuts = _array(mesh.offsets), _array(mesh.cuts)
        handle, error = ctypes.c_void_p(), _Error()
        structs = [given] + ([] if uvs is None else [uvs]) + [options]
        code = getattr(self._library, function)(*map(ctypes.byref, structs), ctypes.byref(handle), ctypes.byref(error))
        if code:
            raise EngineError(error.text.decode(), code)
        try:
            return self._read(handle)
        finally:
            self._library.tessora_atlas_free(handle)

    def _read(self, handle):
        def copy(name, columns=1):
            count = ctypes.c_size_t()
            first = getattr(self._library, "tessora_atlas_" + name)(handle, ctypes.byref(count))
            if count.value == 0:
                return numpy.zeros((0, columns), numpy.float32) if columns > 1 else numpy.zeros(0, numpy.uint32)
            values = numpy.ctypeslib.as_array(first, (count.value * columns,)).copy()
            return values.reshape(-1, columns) if columns > 1 else values

        vertices = copy("corner_vertices")
        return Atlas(copy("uvs", 2)[vertices], vertices, self._library.tessora_atlas_chart_count(handle),
                     self._library.tessora_atlas_stretch(handle), copy("over_limit"))
