/// The first charts: the largest regions of a cluster hierarchy that can be flattened legally.
#pragma once

#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "atlas/progress.h"

namespace tessora::atlas {

/// Goes down the hierarchy until every triangle is in a legal chart (polygons that cannot be laid
/// flat within the limit excepted). False when the callback asked to stop.
/// Where `hard` is set (per triangle), regions have to be all but undistorted.
bool make_regions(Flattener& flattener, const Atoms& atoms, const ClusterTree& tree,
                  const std::vector<uint8_t>& hard, ProgressMeter& progress);

} // namespace tessora::atlas
