/// The first charts: the largest regions of the cluster tree that can be flattened legally.
#pragma once

#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "atlas/progress.h"

namespace tessora::atlas {

/// Descends the tree until every triangle is in a legal chart, or in one that is legal except that
/// it is a single polygon beyond the stretch limit. Every other region has an L2
/// stretch of at most `limit`; the harder its triangles (`hardness`, from measure_hardness), the
/// closer its own limit is to k_hard_stretch. For a region that is a whole connected component,
/// `component_limit` takes the place of `limit`.
/// False if the callback asked to stop.
bool make_regions(Flattener& flattener, const Atoms& atoms, const ClusterTree& tree,
                  const std::vector<float>& hardness, double limit, double component_limit,
                  ProgressMeter& progress);

} // namespace tessora::atlas
