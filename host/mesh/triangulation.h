/// The triangles of a whole mesh.
#pragma once

#include "host/mesh/connectivity.h"

#include <cstdint>
#include <vector>

namespace host {

struct Float3;

struct Triangulation {
    /// Local corner numbers, three per triangle; a polygon of n corners whose first corner is c has
    /// 3 (n - 2) of them from 3 (c - 2 p) on, for polygon p. Each triangle winds like its polygon
    /// and starts at its smallest corner; triangles are in ascending order.
    std::vector<std::uint32_t> corners;
    /// One per polygon; 0 when the outline crosses itself or has no area.
    std::vector<std::uint8_t> is_valid;
    /// How many elementary steps it took (orientation tests, moves along a structure, exchanges of
    /// diagonals): a measure of cost that no machine's speed blurs.
    std::uint64_t steps = 0;

    static std::size_t first_corner(const Connectivity& connectivity, std::uint32_t polygon) {
        return 3 * (static_cast<std::size_t>(connectivity.first_corner(polygon)) -
                    2 * static_cast<std::size_t>(polygon));
    }
};

/// Triangulates every polygon in order. A diagonal that joins vertices already joined, by a mesh
/// edge or by a diagonal of an earlier polygon, is taken only where there is no other choice.
/// Errors: std::bad_alloc.
/// Cost:   O(n log n) for n corners.
MHOST_EXPORT Triangulation triangulate(const Connectivity& connectivity,
                                       const std::vector<Float3>& points);

} // namespace host
