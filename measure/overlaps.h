/// Triangles that lie upon each other in the texture.
///
/// Two triangles overlap when no line through an edge of either has both on different sides of it,
/// or only to a depth that the rounding of UVs to single precision explains (the separating axis
/// test for convex shapes). Neighbours that share an edge, and the two sides of a slit, touch
/// without overlapping.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

struct Overlaps {
    uint64_t pairs_within = 0;  ///< both triangles of one chart
    uint64_t pairs_between = 0; ///< of two charts
    /// Palette textures lay all triangles upon each other. Past k_most_pairs pairs no more are
    /// counted, but the triangles are still all found.
    bool is_cut_short = false;
    std::vector<uint32_t> triangles; ///< that take part in any pair, ascending
};

inline constexpr uint64_t k_most_pairs = 4'000'000;

/// `depth` is how far, in texels, two triangles may reach into each other without counting.
/// Cost: O(n log n + pairs that touch).
Overlaps find_overlaps(const Layout& layout, const Texture& texture, const ChartTable& charts,
                       double depth);

} // namespace measure
