from typing import Any, Callable, List, Optional, Sequence, Tuple, Union

import numpy
from numpy.typing import ArrayLike, NDArray

__version__: str

Faces = Union[ArrayLike, Sequence[Sequence[int]]]
Progress = Callable[[str, float], Any]

class Error(ValueError):
    status: str
    element: Optional[int]
    def __init__(self, text: str, status: str = ..., element: Optional[int] = ...) -> None: ...

class Atlas:
    uvs: NDArray[numpy.float32]
    vmapping: NDArray[numpy.uint32]
    indices: NDArray[numpy.uint32]
    corner_vertices: NDArray[numpy.uint32]
    triangle_corners: NDArray[numpy.uint32]
    charts: NDArray[numpy.uint32]
    over_limit: NDArray[numpy.uint32]
    lost: NDArray[numpy.uint32]
    chart_count: int
    stretch: float
    coverage: NDArray[numpy.float64]
    tiles: NDArray[numpy.uint32]
    texels_per_unit: float
    @property
    def corner_uvs(self) -> NDArray[numpy.float32]: ...

class Measures:
    polygons: int
    triangles: int
    charts: int
    stretch: float
    angle_mean: float
    coverage: float
    seam_length: float
    seam_relative: float
    seam_edges: int
    texels_per_unit: float
    flipped: int
    collapsed: int
    mirrored: int
    outside: int
    overlaps: int
    gap: Optional[float]
    breaches: List[Tuple[str, str, List[int]]]

def unwrap(
    vertices: ArrayLike,
    faces: Faces,
    *,
    offsets: Optional[ArrayLike] = ...,
    stretch: float = ...,
    width: int = ...,
    height: int = ...,
    gutter: float = ...,
    quality: str = ...,
    cuts: Optional[ArrayLike] = ...,
    normals: Optional[ArrayLike] = ...,
    weld: bool = ...,
    max_charts: int = ...,
    stack: bool = ...,
    cut_to_pack: bool = ...,
    threads: int = ...,
    effort: int = ...,
    progress: Optional[Progress] = ...,
) -> Atlas: ...
def pack(
    vertices: ArrayLike,
    faces: Faces,
    uvs: ArrayLike,
    *,
    offsets: Optional[ArrayLike] = ...,
    charts: Optional[ArrayLike] = ...,
    keep: Optional[ArrayLike] = ...,
    width: int = ...,
    height: int = ...,
    gutter: float = ...,
    tiles: int = ...,
    turns: str = ...,
    align: bool = ...,
    density: str = ...,
    texels_per_unit: float = ...,
    stack: str = ...,
    effort: int = ...,
    quality: str = ...,
    weld: bool = ...,
    progress: Optional[Progress] = ...,
) -> Atlas: ...
def measure(
    vertices: ArrayLike,
    faces: Faces,
    uvs: ArrayLike,
    *,
    offsets: Optional[ArrayLike] = ...,
    width: int = ...,
    height: int = ...,
    gutter: float = ...,
    stretch: float = ...,
) -> Measures: ...
def parametrize(
    vertices: ArrayLike, faces: ArrayLike
) -> Tuple[NDArray[numpy.uint32], NDArray[numpy.uint32], NDArray[numpy.float32]]: ...
