/// The minimum-area bounding box of a set of points, in any orientation, and their convex hull.
#pragma once

#include "atlas/geometry/vec.h"

#include <vector>

namespace tessora::atlas {

struct Box {
    double longer = 0, shorter = 0; ///< sides
    Vec2 axis{1, 0};                ///< along one of them, unit length
    double hull = 0;                ///< area of the convex hull
    double area() const { return longer * shorter; }
};

/// The minimum-area box has one side along an edge of the convex hull (Freeman and Shapira,
/// "Determining the minimum-area encasing rectangle for an arbitrary closed curve", 1975).
/// `points` is reordered and loses those that do not matter. Cost: O(n log n).
Box min_area_box(std::vector<Vec2>& points);

} // namespace tessora::atlas
