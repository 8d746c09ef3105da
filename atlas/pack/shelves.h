/// The last resort when there are too many charts for any grid to resolve: their bounding boxes on
/// shelves, computed without a grid.
#pragma once

#include "atlas/pack/chains.h"

namespace tessora::atlas {

/// Puts the charts' boxes, a gutter apart, on shelves of decreasing height, one tile after the
/// other, at the largest scale that bisection finds.
/// Units:  max_scale and min_scale, the range of the search, in texels per chart unit.
/// Errors: false if even `min_scale` does not fit.
/// Source: next-fit decreasing height (Coffman, Garey, Johnson and Tarjan, "Performance bounds for
///         level-oriented two-dimensional packing algorithms", 1980).
bool pack_boxes(const ChartChains& chains, PackRoom room, uint32_t tiles, double max_scale,
                double min_scale, Packing& packing);

} // namespace tessora::atlas
