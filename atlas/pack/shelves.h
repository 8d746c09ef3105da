/// The last resort when charts are so many for the texture that no grid resolves them: boxes on
/// shelves, computed without a grid.
#pragma once

#include "atlas/pack/chains.h"

namespace tessora::atlas {

/// Puts the charts' least-area boxes, each widened by half the gutter, on shelves of falling height
/// at the largest scale that bisection finds.
/// Units:  width, height, gutter in texels of the inner rectangle; the largest scale tried and the
///         least that is still a layout in texels per chart unit.
/// Errors: false when even `least_scale` does not fit.
/// Source: next-fit decreasing height (Coffman, Garey, Johnson and Tarjan, "Performance bounds for
///         level-oriented two-dimensional packing algorithms", 1980).
bool pack_boxes(const Outlines& outlines, double width, double height, double gutter,
                double largest_scale, double least_scale, Packing& packing);

} // namespace tessora::atlas
