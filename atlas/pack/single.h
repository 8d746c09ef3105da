/// The layout of a single chart, which needs no grid: the turn with which its box is largest.
#pragma once

#include "atlas/pack/chains.h"

namespace tessora::atlas {

/// Places `chart`, in the lower left corner of the first tile and as large as the room allows. A
/// chart that does not turn finely stands along its axis or across; with `quarters` false, along
/// it. Units:  max_scale and min_scale, the range of the search, in texels per chart unit. Errors:
/// false if even `min_scale` does not fit. Cost:   linear in the chart's points.
bool place_single(const ChartChains& chains, uint32_t chart, const PackRoom& room, bool quarters,
                  double max_scale, double min_scale, Packing& packing);

} // namespace tessora::atlas
