/// How much of the charts' straight border is parallel to the texture's axes.
///
/// Border edges count as parallel to a direction up to 1 degree, and as straight if consecutive
/// ones parallel to the same direction have at least 12 texels together.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

namespace measure {

struct Straightness {
    double parallel = 0.0; ///< texels of straight border parallel to an axis
    double best = 0.0;     ///< that length if every chart were turned by itself to where it is most
};

/// Tries every chart in steps of a quarter of a degree.
/// Cost: O(border edges), times 360.
Straightness straightness(const Layout& layout, const Texture& texture,
                          const std::vector<uint32_t>& triangle_chart,
                          const std::vector<uint32_t>& outline);

} // namespace measure
