/// Charts, chart borders and seams, found from the layout alone.
///
/// Two triangles hang together where they share a 3D edge (two places in space, whether or not the
/// file has one vertex for each) and their UVs have the same values at both of its ends. A chart is
/// what hangs together. An edge of two triangles or
/// more whose UVs do not all agree is a seam.
#pragma once

#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

struct ChartTable {
    std::vector<uint32_t> triangle_chart; ///< k_none where the triangle is not wholly mapped
    uint32_t chart_count = 0;             ///< numbered by their first triangles
    /// Edges on a chart's outline, as 3 * triangle + k (from corner k to corner (k+1)%3): no
    /// neighbour hangs there, or the layout folds over along the edge.
    std::vector<uint32_t> outline;
    double seam_length = 0.0; ///< in space
    uint32_t seam_edges = 0;
};

/// Cost: O(n log d) for n triangles and at most d triangles at one vertex.
ChartTable find_charts(const Layout& layout);

} // namespace measure
