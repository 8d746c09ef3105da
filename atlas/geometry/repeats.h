/// Components of a surface that are congruent: the same part placed several times, or its mirror
/// image. Laid out once, they look alike in the texture, and the others cost nothing.
#pragma once

#include "atlas/geometry/surface.h"

namespace tessora::atlas {

/// A component and an earlier one that it is congruent to, half-edge by half-edge.
struct Repeat {
    std::vector<uint32_t> faces;       ///< of the component
    std::vector<uint32_t> source_edge; ///< per corner of those; k_none for false edges
    /// Per corner of those: a corner of the source at the corresponding vertex of the corresponding
    /// polygon.
    std::vector<uint32_t> source_corner;
    bool mirrored = false;
    double difference = 0; ///< of corresponding lengths: the sum of all over the sum of lengths
};

/// Finds, among the triangles with a 1 in `candidate`, components that repeat another. Every entry
/// of the array that holds a component's triangle has to hold them all. Two components correspond
/// when a walk over the polygons of both at once, from half-edge to half-edge, meets the same
/// number of sides, the same lengths, angles and bends up to the rounding of coordinates. Diagonals
/// of polygons may differ. Repeats name sources that are no repeats themselves.
///
/// Linear in the triangles but for sorting the components; a pair whose first half-edges cannot be
/// matched within a few walks counts as different.
std::vector<Repeat> find_repeats(const Surface& surface, const std::vector<uint8_t>& candidate);

} // namespace tessora::atlas
