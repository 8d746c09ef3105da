/// A quick proof that no two triangles overlap in the texture.
///
/// The number of triangles over a point that lies on no edge is the winding number of the sum of
/// their boundaries, each taken counter-clockwise. Edges between triangles that lie apart cancel,
/// so only the outlines count: if their edges do not cross or touch except at common ends, and the
/// winding number is 1 on the inner side of each and 0 on the outer, it is at most 1 everywhere.
/// Crossings are found by a sweep (Shamos, Hoey, "Geometric intersection problems", 1976), which
/// also knows the winding number below each edge.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

namespace measure {

/// True if it is certain that no point of the texture lies inside two triangles. False proves
/// nothing: triangles may overlap, or only touch, or be too thin for double precision to tell.
/// Cost: O(n + e log e) for n triangles and e outline edges.
bool is_covered_once(const Layout& layout, const ChartTable& charts);

} // namespace measure
