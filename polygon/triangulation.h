/// Triangulation of a whole mesh.
#pragma once

#include "polygon/polygons.h"

#include <cstdint>
#include <vector>

namespace tessora::polygon {

struct Triangulation {
    /// Polygon-relative corner numbers, three per triangle. Polygon p of n corners, with first
    /// corner c, has 3 (n - 2) entries starting at 3 (c - 2 p). Each triangle winds like its
    /// polygon and starts at its smallest corner number; triangles are in ascending order.
    std::vector<uint32_t> corners;
    /// One per polygon; 0 if the outline is self-intersecting or has no area.
    std::vector<uint8_t> is_valid;
    /// Number of elementary steps (orientation tests, steps along a list, flips of diagonals): a
    /// cost measure that does not depend on the machine.
    uint64_t steps = 0;

    static size_t first_corner(const Polygons& polygons, uint32_t polygon) {
        return 3 * (static_cast<size_t>(polygons.corner_begin[polygon]) -
                    2 * static_cast<size_t>(polygon));
    }
};

/// Triangulates the polygons in order. Avoids diagonals between vertices that are already joined by
/// an edge or by a diagonal of an earlier polygon, wherever there is an alternative. Polygons on
/// the same vertices, in the same cyclic order or its reverse, are divided alike. Corners that
/// bound no area (in the place of the corner before, the tip of a spike) are cut off first, so that
/// the rest is divided as if they were not there.
/// Shape:  points[3*nv], every vertex of `polygons` < nv.
/// Errors: std::bad_alloc.
/// Cost:   O(n log n) for n corners.
Triangulation triangulate(const Polygons& polygons, const float* points);

} // namespace tessora::polygon
