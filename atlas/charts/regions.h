/// The first charts: the largest regions of the cluster tree that can be flattened legally.
#pragma once

#include "atlas/charts/clusters.h"
#include "atlas/charts/flatten.h"
#include "atlas/progress.h"

namespace tessora::atlas {

/// Limits on L2 stretch.
struct RegionLimits {
    double region;
    double component; ///< for a region that is a whole connected component
};

/// Descends the tree until every triangle is in a legal chart, or in one that is legal except that
/// it is a single polygon beyond the stretch limit. Every other region is within its limit; the
/// harder its triangles (`hardness`, from measure_hardness), the closer that is to k_hard_stretch.
/// The roots of the tree are descended from on the executor. A root whose triangles are in a chart
/// before is left out.
/// False if the callback asked to stop.
bool make_regions(Flattener& flattener, const Atoms& atoms, const ClusterTree& tree,
                  const std::vector<float>& hardness, const RegionLimits& limits,
                  ParallelFor executor, ProgressMeter& progress);

} // namespace tessora::atlas
