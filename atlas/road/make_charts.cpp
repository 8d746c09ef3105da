#include "atlas/road/make_charts.h"

#include "atlas/charts/merge.h"
#include "atlas/charts/regions.h"
#include "atlas/charts/smooth.h"

namespace tessora::atlas {

bool make_charts(Surface& surface, const Options& options, ProgressMeter& progress, ChartSet& set) {
    const bool thorough = options.quality == Quality::quality;
    progress.stage(0.05, 0.15);
    const Atoms atoms = build_atoms(surface);
    ClusterOptions clustering;
    clustering.seed_groups = !thorough;
    clustering.hard = find_hard_faces(surface);
    const ClusterTree tree = build_cluster_tree(surface, atoms, clustering);
    FlattenOptions flattening;
    flattening.limit = stretch_limit(options.max_stretch);
    flattening.thorough = thorough;
    Flattener flattener(set, flattening);
    progress.stage(0.15, 0.35);
    if (!make_regions(flattener, atoms, tree, clustering.hard, progress))
        return false;
    MergeOptions merging;
    merging.limit = flattening.limit;
    merging.thorough = thorough;
    merging.hard = clustering.hard;
    Merger merger(flattener, merging);
    progress.stage(0.35, 0.5);
    if (!merger.run(Merger::Round::exact, progress))
        return false;
    progress.stage(0.5, 0.75);
    if (!merger.run(Merger::Round::free, progress))
        return false;
    progress.stage(0.75, 0.78);
    BorderSmoother smoother(flattener, atoms, clustering.hard);
    for (int pass = 0; pass < 2; pass++)
        if (!smoother.run(progress))
            return false;
    progress.stage(0.78, 0.85);
    for (size_t i = 0; i < set.charts.size(); i++) {
        if (!progress.advance(double(i) / double(set.charts.size())))
            return false;
        if (set.charts[i].alive)
            flattener.polish(set.charts[i], thorough ? 8 : 2);
    }
    merger.zip();
    return true;
}

} // namespace tessora::atlas
