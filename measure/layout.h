/// The input of all measures: a mesh with one UV set and a triangulation of its polygons.
///
/// Indices are in range and positions finite; a corner without UV has k_none. UVs may have any
/// value, including NaN. A texture of width x height texels spans the unit square.
#pragma once

#include <cstdint>
#include <vector>

namespace measure {

inline constexpr uint32_t k_none = 0xFFFFFFFFu;

/// Shape: positions[3*nv], uvs[2*nu], corner_vertex[nc], corner_uv[nc], triangle_corners[3*nt],
///        triangle_polygon[nt]. Triangles wind like their polygons. A polygon of n corners has them
///        in order under consecutive numbers, and n - 2 triangles in a row.
struct Layout {
    std::vector<float> positions;           ///< object space, as multiples of `unit`
    std::vector<float> uvs;                 ///< u v, 0..1 within the texture
    std::vector<uint32_t> corner_vertex;    ///< per polygon corner
    std::vector<uint32_t> corner_uv;        ///< per polygon corner, k_none without UV
    std::vector<uint32_t> triangle_corners; ///< polygon corners
    std::vector<uint32_t> triangle_polygon; ///< polygon ids, as reported in findings
    uint32_t polygon_count = 0;
    double unit = 1.0; ///< length of 1 in `positions`, in the mesh's own unit

    uint32_t vertex_count() const { return static_cast<uint32_t>(positions.size() / 3); }
    uint32_t triangle_count() const { return static_cast<uint32_t>(triangle_polygon.size()); }
};

struct Texture {
    double width = 512.0;  ///< texels, > 0
    double height = 512.0; ///< texels, > 0
};

} // namespace measure
