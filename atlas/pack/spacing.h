/// The distance of charts that are where they are.
#pragma once

#include "atlas/pack/uv_charts.h"

namespace tessora::atlas {

/// A kept chart that overlaps another kept one or lies closer to it than `distance` texels; k_none
/// if there is none.
/// Cost: O(n log n) in edges for edges of similar length.
uint32_t find_kept_collision(const UvCharts& charts, double distance);

} // namespace tessora::atlas
