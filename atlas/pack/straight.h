/// Directions in which charts stand straight: with most of their straight border parallel to the
/// axes.
#pragma once

#include "atlas/pack/chains.h"

namespace tessora::atlas {

/// Border edges count as parallel to an axis up to 1 degree, and as straight if consecutive ones
/// that are parallel to the same axis have at least the length `min_run` together.
struct StraightBorder {
    Vec2 axis{1, 0};      ///< unit length; turn this to the x axis
    double length = 0;    ///< straight border that is then parallel to an axis, chart units
    double perimeter = 0; ///< of all the chart's border
};

/// Looks for the direction with the most straight border, among those that most border has.
/// Cost: linear in the border's edges.
StraightBorder find_straight_border(const ChartChains& chains, const ChartShape& shape,
                                    double min_run);

/// Sets a shape's axis, and its length and width along it.
void stand_along(const ChartChains& chains, Vec2 axis, ChartShape& shape);

} // namespace tessora::atlas
