/// The smallest distance between two charts, and between a chart and the texture's border.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

#include <cstdint>
#include <optional>

namespace measure {

struct Gap {
    double texels = 0.0;        ///< Euclidean
    uint32_t triangles[2] = {}; ///< one of each chart
};

/// Nothing when there are fewer than two charts. Charts of one outline inside the other's area are
/// the overlap search's business.
/// Cost: O(n log n) for n outline edges when charts are compact.
std::optional<Gap> smallest_gap(const Layout& layout, const Texture& texture,
                                const ChartTable& charts);

/// Least distance in texels of any UV of a mapped triangle from the border of the unit square,
/// negative outside; nothing without UVs.
std::optional<double> border_distance(const Layout& layout, const Texture& texture,
                                      const ChartTable& charts);

} // namespace measure
