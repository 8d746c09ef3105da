/// Charts, chart borders and seams, found from the layout alone.
///
/// Two triangles are connected if they share a 3D edge (compared by the positions of its ends, not
/// by vertex index) and their UVs are equal at both ends. Charts are the connected components. An
/// edge of two or more triangles whose UVs do not all agree is a seam. Polygons that enclose
/// nothing because every side of them runs back along another make none.
#pragma once

#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

struct ChartTable {
    std::vector<uint32_t> triangle_chart; ///< k_none if a corner of the triangle has no UV
    uint32_t chart_count = 0;             ///< charts are numbered in order of their first triangle
    /// Edges on a chart's outline, as 3 * triangle + k (from corner k to corner (k+1)%3): the
    /// triangle has no connected neighbour there, or the neighbour lies on the same side in UVs.
    std::vector<uint32_t> outline;
    double seam_length = 0.0; ///< in object space
    uint32_t seam_edges = 0;
};

/// What makes two UVs of the same vertex one: equal coordinates, or the same entry of the list of
/// UVs, so that a cut counts before its sides are moved apart.
enum class SameUv { coordinates, entry };

/// Cost: O(n log d) for n triangles and at most d triangles at one vertex.
ChartTable find_charts(const Layout& layout, SameUv same = SameUv::coordinates);

} // namespace measure
