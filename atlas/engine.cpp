#include "atlas/engine.h"

#include "atlas/merge.h"
#include "atlas/regions.h"

namespace tessora::atlas {

bool make_charts(Surface& surface, const Options& options, ProgressMeter& progress, ChartSet& set) {
    const bool thorough = options.quality == Quality::quality;
    progress.stage(0.05, 0.15);
    const Atoms atoms = build_atoms(surface);
    ClusterOptions clustering;
    clustering.seed_groups = !thorough;
    const ClusterTree tree = build_cluster_tree(surface, atoms, clustering);
    FlattenOptions flattening;
    flattening.limit = stretch_limit(options.max_stretch);
    flattening.thorough = thorough;
    Flattener flattener(set, flattening);
    progress.stage(0.15, 0.35);
    if (!make_regions(flattener, atoms, tree, progress))
        return false;
    MergeOptions merging;
    merging.limit = flattening.limit;
    merging.thorough = thorough;
    progress.stage(0.35, 0.75);
    return Merger(flattener, merging).run(progress);
}

} // namespace tessora::atlas
