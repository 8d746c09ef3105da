#include "atlas/road/make_charts.h"

#include "atlas/charts/merge.h"
#include "atlas/charts/regions.h"

namespace tessora::atlas {
namespace {

bool polish_charts(ChartStages& stages, ProgressMeter& progress) {
    const int sweeps = stages.flattener.options.thorough ? 8 : 2;
    std::vector<Chart>& charts = stages.set.charts;
    for (size_t i = 0; i < charts.size(); ++i) {
        if (!progress.advance(double(i) / double(charts.size())))
            return false;
        if (charts[i].alive)
            stages.flattener.polish(charts[i], sweeps);
    }
    return true;
}

} // namespace

ChartStages::ChartStages(Surface& s, const Options& options)
    : surface(s), atoms(build_atoms(s)), hard(find_hard_faces(s)), set(s),
      flattener(set, {stretch_limit(options.max_stretch), options.quality == Quality::quality}),
      smoother(flattener, atoms, hard) {}

bool make_charts(ChartStages& stages, ProgressMeter& progress) {
    const FlattenOptions& options = stages.flattener.options;
    progress.stage(0.05, 0.15);
    ClusterOptions clustering;
    clustering.seed_groups = !options.thorough;
    clustering.hard = stages.hard;
    const ClusterTree tree = build_cluster_tree(stages.surface, stages.atoms, clustering);
    progress.stage(0.15, 0.35);
    if (!make_regions(stages.flattener, stages.atoms, tree, stages.hard, progress))
        return false;
    Merger merger(stages.flattener, {stages.hard, options.limit, options.thorough});
    progress.stage(0.35, 0.5);
    if (!merger.run(Merger::Round::exact, progress))
        return false;
    progress.stage(0.5, 0.75);
    if (!merger.run(Merger::Round::free, progress))
        return false;
    progress.stage(0.75, 0.78);
    for (int pass = 0; pass < 2; ++pass)
        if (!stages.smoother.run(progress))
            return false;
    progress.stage(0.78, 0.85);
    if (!polish_charts(stages, progress))
        return false;
    merger.zip();
    return true;
}

bool cut_charts(ChartStages& stages, uint32_t max_charts, double scale,
                const std::function<double()>& pack) {
    ChartCutter cutter(stages.flattener, stages.atoms, stages.smoother);
    return cut_for_packing(cutter, max_charts, scale, pack);
}

} // namespace tessora::atlas
