/// The search for the largest scale at which all charts fit, over orders, turns and grids.
#pragma once

#include "atlas/pack/layout.h"

namespace tessora::atlas {

enum class SearchResult { found, not_found, aborted };

/// Fills scale and placements of `packing` with the best layout seen.
/// Units: `gutter` in texels, safe; scales in texels per chart unit.
SearchResult search_layout(const Outlines& outlines, const InnerRectangle& inner, double gutter,
                           double largest_scale, double least_scale, const PackOptions& options,
                           Packing& packing);

} // namespace tessora::atlas
