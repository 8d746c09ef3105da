/// The engine for meshes as programs keep them: polygons of any size, arrays of any stride and
/// type, vertices that are split at normals.
///
/// The functions here triangulate (diagonals become false edges), find neighbours, call the engine
/// (atlas/atlas.h) and return the results per corner of the caller's polygons. atlas/c offers the
/// same to C.
///
/// None throws or ends the process; results are empty after a failure.
#pragma once

#include "atlas/atlas.h"

namespace tessora::atlas {

enum class Type : int32_t { none, float32, float64, uint8, uint16, uint32 };

/// A read-only array of the caller's.
struct Array {
    const void* data = nullptr;
    size_t count = 0;  ///< elements; 0 = the array is not given
    size_t stride = 0; ///< bytes from one element to the next; 0 = without gaps
    Type type = Type::none;
};

/// Corner c is at vertex `indices[c]`; edge c runs from corner c to the next corner of its polygon.
struct PolygonMesh {
    Array positions; ///< 3 float32 or float64 per vertex, any unit. float64 positions are centred
                     ///< if the mesh is far from the origin for its size, and divided by a power of
                     ///< ten, before they are rounded to single precision
    Array indices;   ///< a uint16 or uint32 per corner
    Array offsets;   ///< polygon p has the corners offsets[p] .. offsets[p+1]-1, three or more:
                     ///< polygons + 1 uint32, the first 0, the last the number of corners.
                     ///< Not given: all polygons are triangles
    Array cuts;      ///< a uint8 per corner: edge c becomes a seam if not 0, on either side.
                     ///< Optional
    Array normals;   ///< 3 float32 or float64 per vertex, or per corner if `normals_per_corner`: an
                     ///< edge becomes a seam where they differ by over one degree between its two
                     ///< sides. Optional
    bool normals_per_corner = false;
    bool weld = false; ///< vertices at equal positions count as one for the neighbours
    Array neighbours;  ///< triangles only: a uint32 per corner, the triangle across edge c or
                       ///< k_none. Not given: found as by find_neighbours()
    Array false_edges; ///< triangles only: a uint8 per corner, not 0 where edge c is a diagonal
                       ///< inside one polygon. Optional
};

/// What went wrong, and where.
struct Fault {
    Status status = Status::ok;
    uint32_t element = k_none; ///< index into the array that `text` names, or as for the status
    char text[248] = "";       ///< one English sentence without a full stop; "" if ok
};

/// Texture coordinates that exist, for pack().
struct PolygonUvs {
    Array uvs;    ///< 2 float32 or float64 per corner, of the texture. Corners at one vertex (one
                  ///< place, if the mesh is welded) with equal coordinates are connected
    Array charts; ///< a uint32 per polygon, any numbers; equal ones are one chart. Not given:
                  ///< polygons with a common corner are one chart
    Array keep;   ///< a uint8 per polygon: its chart stays where it is, if not 0. Optional
};

/// An atlas of a polygon mesh.
struct PolygonAtlas {
    Result triangles; ///< of the triangulated mesh; source_vertex holds the caller's vertices
    std::vector<uint32_t> triangle_corner; ///< 3 per triangle: the caller's corners
    std::vector<uint32_t> corner_vertex;   ///< per corner of the caller's: its new vertex
    std::vector<uint32_t> neighbours;      ///< 3 per triangle, k_none at every chart border; empty
                                           ///< unless made by partition()
    // Of pack(); see PackResult.
    std::vector<PackedChart> packed; ///< per chart
    std::vector<double> coverage;    ///< per tile
    double texels_per_unit = 0;
};

enum class UvSpace {
    isotropic, ///< of atlas.h: in units of the longer texture side
    texture    ///< of the final texture: after to_texture()
};

/// Partitions, flattens and packs. In UvSpace::texture the coordinates have the bits that the
/// plug-in writes.
Fault create(const PolygonMesh& mesh, const Options& options, UvSpace space,
             PolygonAtlas& atlas) noexcept;

/// Partitions and flattens only; see atlas.h.
Fault partition(const PolygonMesh& mesh, const Options& options, PolygonAtlas& atlas) noexcept;

/// Packs charts that exist, without touching their shape; the coordinates are those of the final
/// texture.
Fault pack(const PolygonMesh& mesh, const PolygonUvs& uvs, const PackSettings& settings,
           PolygonAtlas& atlas) noexcept;

/// Triangulates the polygons in order.
/// Shape:  triangle_corner[3*(corners - 2*polygons)].
Fault triangulate(const PolygonMesh& mesh, std::vector<uint32_t>& triangle_corner) noexcept;

/// The triangle across each edge of the triangles of triangulate(), k_none on a border, at a cut
/// and where normals differ. An edge of two triangles makes them neighbours whichever way round
/// they are wound; at an edge of more they are paired by sheet (docs/atlas.md).
/// Shape:  neighbours[3*(corners - 2*polygons)].
Fault find_neighbours(const PolygonMesh& mesh, std::vector<uint32_t>& neighbours) noexcept;

/// Brings isotropic coordinates into the unit square of the final texture: the shorter side is
/// stretched to it, and a margin of half a gutter is left. The arithmetic is single precision.
/// Shape:  uvs[2*count], changed in place.
void to_texture(float* uvs, size_t count, uint32_t width, uint32_t height, float gutter) noexcept;

} // namespace tessora::atlas
