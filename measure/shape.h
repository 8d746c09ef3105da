/// Triangles in object space and in texels, and the resolution of single-precision UVs.
#pragma once

#include "measure/layout.h"

#include <cmath>

namespace measure {

struct Point2 {
    double x = 0.0;
    double y = 0.0;
};

inline Point2 operator-(Point2 a, Point2 b) { return {a.x - b.x, a.y - b.y}; }
inline double dot(Point2 a, Point2 b) { return a.x * b.x + a.y * b.y; }
inline double cross(Point2 a, Point2 b) { return a.x * b.y - a.y * b.x; }
inline double length(Point2 a) { return std::sqrt(dot(a, a)); }

/// A triangle's corners in texels.
struct Triangle2 {
    Point2 p[3];
    /// Twice the signed area; positive when the corners run counter-clockwise.
    double cross_area() const { return cross(p[1] - p[0], p[2] - p[0]); }
};

/// A triangle's shape in space: the Gram matrix of its edges from corner 0.
struct Triangle3 {
    double aa = 0.0; ///< |p1 - p0|^2
    double ab = 0.0; ///< (p1 - p0) . (p2 - p0)
    double bb = 0.0; ///< |p2 - p0|^2
    double area = 0.0;
    double longest_edge = 0.0;
    double min_height() const { return longest_edge > 0.0 ? 2.0 * area / longest_edge : 0.0; }
};

inline bool is_finite_uv(const Layout& layout, uint32_t corner) {
    const uint32_t uv = layout.corner_uv[corner];
    return uv != k_none && std::isfinite(layout.uvs[2 * uv]) &&
           std::isfinite(layout.uvs[2 * uv + 1]);
}

/// True if all three corners have finite UVs.
inline bool is_mapped(const Layout& layout, uint32_t triangle) {
    const uint32_t* const corners = &layout.triangle_corners[size_t(3) * triangle];
    return is_finite_uv(layout, corners[0]) && is_finite_uv(layout, corners[1]) &&
           is_finite_uv(layout, corners[2]);
}

/// The corners of a mapped triangle in texels.
Triangle2 texel_triangle(const Layout& layout, const Texture& texture, uint32_t triangle);

Triangle3 space_triangle(const Layout& layout, uint32_t triangle);

/// The same for any three polygon corners.
Triangle2 texel_triangle(const Layout& layout, const Texture& texture, const uint32_t* corners);
Triangle3 space_triangle(const Layout& layout, const uint32_t* corners);

/// 3D length of the edge between two vertices.
double edge_length(const Layout& layout, uint32_t vertex_a, uint32_t vertex_b);

/// The maximum spacing of single-precision UVs in texels: 2^-23 times the longer texture side, more
/// if UVs lie outside the unit square.
double uv_spacing(const Layout& layout, const Texture& texture);

} // namespace measure
