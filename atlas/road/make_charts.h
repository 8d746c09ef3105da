/// The stages between a safe surface and packing, in their order.
#pragma once

#include "atlas/charts/chart_set.h"
#include "atlas/progress.h"

namespace tessora::atlas {

/// Partitions and flattens. Charts that lost their triangles to others are no longer alive; the
/// others are legal, but for single polygons that cannot be laid flat within the limit.
/// False when the callback asked to stop.
bool make_charts(Surface& surface, const Options& options, ProgressMeter& progress, ChartSet& set);

} // namespace tessora::atlas
