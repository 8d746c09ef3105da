/// Runs the chart stages in order, from atoms to polished charts.
#pragma once

#include "atlas/charts/cut.h"
#include "atlas/charts/smooth.h"
#include "atlas/progress.h"

#include <functional>

namespace tessora::atlas {

/// The charts of a surface and what the chart stages share. It stays alive after make_charts(), so
/// that cutting for the texture continues with the same atoms, flattener and smoother.
/// `surface` must outlive it; false edges that no polygon can have become real edges there.
struct ChartStages {
    ChartStages(Surface& surface, const Options& options);

    const Surface& surface;
    const Atoms atoms;
    const Polygons polygons;
    const std::vector<float> hardness; ///< per triangle, from measure_hardness
    const float max_stretch;           ///< the caller's, 0..1
    const ParallelFor executor;        ///< null also for small meshes
    ChartSet set;
    Flattener flattener;
    BorderSmoother smoother;
};

/// Partitions and flattens. Charts that were merged into others are no longer alive; the others are
/// legal, except single polygons that cannot be flattened within the limit.
/// False if the callback asked to stop.
bool make_charts(ChartStages& stages, ProgressMeter& progress);

/// Cuts charts in two where that lets all charts grow; see cut_for_packing in charts/cut.h.
void cut_charts(ChartStages& stages, uint32_t max_charts, const std::function<double()>& pack);

} // namespace tessora::atlas
