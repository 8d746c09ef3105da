/// The search for the largest scale at which all charts fit, over orders, turns and grids.
#pragma once

#include "atlas/pack/layout.h"

namespace tessora::atlas {

enum class SearchResult { found, not_found, aborted };

/// Fills scale and placements of `packing` with the best layout seen.
/// Units: `gutter` in texels, from safe_gutter(); scales in texels per chart unit.
SearchResult search_layout(const ChartChains& chains, const InnerRectangle& inner, double gutter,
                           double max_scale, double min_scale, const PackOptions& options,
                           Packing& packing);

} // namespace tessora::atlas
