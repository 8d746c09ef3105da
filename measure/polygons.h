/// What holds for polygons however they are divided into triangles.
///
/// A polygon is convex when every corner turns left about its area vector, the cross product of the
/// two edges along that vector over 1e-3 of the vector's squared length. In the texture such a
/// polygon has to turn left at every corner: then every fan of it, and every other triangulation,
/// is free of flips. Of other polygons, corners that turn left in space must not turn right.
/// Polygons that are not wholly mapped, lie in several charts or have a flipped or collapsed
/// triangle are left out, and so are corners that single-precision UVs cannot tell from straight
/// ones.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"
#include "measure/stretch.h"

#include <cstdint>
#include <vector>

namespace measure {

struct PolygonShapes {
    std::vector<uint32_t> dented; ///< polygons, ascending: convex in space but not in the texture
    std::vector<uint32_t> turned; ///< others with a corner that comes to turn right, ascending
    uint32_t split = 0;           ///< polygons whose triangles lie in several charts: not judged
    std::vector<Quad> quads;
};

/// `maps` are those of map_triangles.
/// Cost: O(corners).
PolygonShapes find_polygon_shapes(const Layout& layout, const Texture& texture,
                                  const ChartTable& charts, const std::vector<TriangleMap>& maps);

} // namespace measure
