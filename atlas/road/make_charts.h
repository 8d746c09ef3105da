/// Runs the chart stages in order, from atoms to polished charts.
#pragma once

#include "atlas/charts/cut.h"
#include "atlas/charts/smooth.h"
#include "atlas/progress.h"

#include <functional>
#include <optional>

namespace tessora::atlas {

/// The charts of a surface and what the chart stages share. It stays alive after make_charts(), so
/// that cutting for the texture continues with the same atoms, flattener and smoother.
/// `surface` must outlive it, and loses its normals once regions are made; false edges that no
/// polygon can have become real edges there.
struct ChartStages {
    /// Clusters the triangles; see `clustered`.
    ChartStages(Surface& surface, const Options& options, ProgressMeter& progress);

    Surface& surface;
    const Atoms atoms;
    Polygons polygons;
    const std::vector<float> hardness; ///< per triangle, from measure_hardness
    const Components planes;           ///< from find_planes
    const float max_stretch;           ///< the caller's, 0..1
    const ParallelFor executor;        ///< null also for small meshes
    ClusterTree tree;                  ///< until make_charts has made regions of it
    const bool clustered; ///< false if the callback asked to stop; then no charts can be made
    // What follows takes a third of the memory that clustering needs, so it comes afterwards.
    ChartSet set;
    Flattener flattener;
    std::optional<BorderSmoother> smoother; ///< from make_charts on

private:
    ChartStages(Surface& surface, const Options& options, ProgressMeter& progress,
                const Components& flat_pieces);
};

/// Partitions and flattens. Charts that were merged into others are no longer alive; the others are
/// legal, except single polygons that cannot be flattened within the limit.
/// False if the callback asked to stop.
bool make_charts(ChartStages& stages, ProgressMeter& progress);

/// Cuts charts in two where that lets all charts grow; see cut_for_packing in charts/cut.h, which
/// also says what is returned.
uint32_t cut_charts(ChartStages& stages, const CutOptions& options,
                    const std::function<double()>& pack);

} // namespace tessora::atlas
