/// Triangles that overlap in the texture.
///
/// Separating axis test: two triangles overlap if no line through an edge of either separates them,
/// allowing penetration up to the rounding error of single-precision UVs. Neighbours that share an
/// edge, and the two sides of a slit, touch without overlapping. Pairs are only compared if the
/// outlines do not prove at once that there are no overlaps (measure/coverage.h).
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

struct Overlaps {
    uint64_t pairs_within = 0;  ///< both triangles in one chart
    uint64_t pairs_between = 0; ///< triangles of different charts
    /// True if counting stopped at k_max_pairs pairs (a palette texture may map all triangles to
    /// the same place); `triangles` is complete nevertheless.
    bool is_cut_short = false;
    std::vector<uint32_t> triangles; ///< in at least one pair, ascending
};

inline constexpr uint64_t k_max_pairs = 4'000'000;

/// `depth`: penetration in texels that does not count as overlap.
/// Cost: O(n log n + pairs whose extents intersect).
Overlaps find_overlaps(const Layout& layout, const Texture& texture, const ChartTable& charts,
                       double depth);

/// The same without the attempt at a proof.
Overlaps compare_all_pairs(const Layout& layout, const Texture& texture, const ChartTable& charts,
                           double depth);

} // namespace measure
