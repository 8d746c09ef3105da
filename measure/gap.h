/// The minimum distance between two charts, and from charts to the texture's border.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

#include <cstdint>
#include <optional>

namespace measure {

struct Gap {
    double texels = 0.0;        ///< Euclidean distance
    uint32_t triangles[2] = {}; ///< one of each chart
};

/// The minimum distance between outlines of different charts; none if there are fewer than two. A
/// chart nested inside another chart's area counts as an overlap, not as a gap of 0.
/// Cost: O(n log n) for n outline edges when charts are compact.
std::optional<Gap> smallest_gap(const Layout& layout, const Texture& texture,
                                const ChartTable& charts);

/// The minimum distance in texels from any UV of a mapped triangle to the border of the unit
/// square, negative outside; none without UVs.
std::optional<double> border_distance(const Layout& layout, const Texture& texture,
                                      const ChartTable& charts);

} // namespace measure
