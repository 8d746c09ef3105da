/// The search for the largest scale at which all charts fit, over orders, turns and grids.
#pragma once

#include "atlas/pack/layout.h"

namespace tessora::atlas {

enum class SearchResult { found, not_found, aborted };

/// Fills scale and placements of `packing` with the best layout seen.
/// Units: scales in texels per chart unit.
SearchResult search_layout(const ChartChains& chains, const PackRoom& room, double max_scale,
                           double min_scale, const PackOptions& options, Packing& packing);

} // namespace tessora::atlas
