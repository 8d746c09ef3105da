#include "atlas/road/make_charts.h"

#include "atlas/charts/merge.h"
#include "atlas/charts/regions.h"
#include "atlas/geometry/buckets.h"
#include "atlas/parallel.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <memory>

namespace tessora::atlas {
namespace {

/// Mean hardness from which a pair of charts counts as part of a hard surface.
constexpr double k_hard_pair = 0.5;

/// Up to here stretch is spent as if it were scarce: the seam that a union saves pays for stretch,
/// and it must not waste the texture. Both rules fade out between here and 1.
constexpr double k_usual_stretch = 0.15;

/// A chart with more is likely not to need it; below, global steps gain too little for their time.
constexpr double k_much_stretch = 0.2;
/// The same where any stretch is allowed: charts are few and were not made for little stretch.
constexpr double k_much_stretch_of_any = 0.05;

/// Lowers the stretch of charts. Where more than the usual stretch is allowed, charts that have
/// much were made for few seams, and most of it is not needed.
bool polish_charts(ChartStages& stages, ProgressMeter& progress) {
    const int sweeps = stages.flattener.options.thorough ? 8 : 2;
    std::vector<Chart>& charts = stages.set.charts;
    WorkspacePool<Flattener> flatteners(stages.flattener);
    const auto another = [&] {
        return std::make_unique<Flattener>(stages.set, stages.flattener.options);
    };
    const double much =
        stretch_limit(float(stages.max_stretch >= 1 ? k_much_stretch_of_any : k_much_stretch));
    std::atomic<size_t> done{0};
    parallel_for(stages.executor, charts.size(), [&](size_t i) {
        if (!progress.advance(double(done++) / double(charts.size())) || !charts[i].alive)
            return;
        const auto lease = flatteners.lease(another);
        if (stages.max_stretch > k_usual_stretch + 1e-6 && charts[i].stretch.worst_l2() > much)
            lease->flatten_further(charts[i], [&] { return progress.poll(); });
        lease->polish(charts[i], sweeps);
        lease->straighten(charts[i]);
    });
    return progress.advance(1);
}

/// Charts are merged under limits that rise to the caller's in these steps. Unions that need little
/// stretch come first, and a caller who allows more gets at most as many charts: the steps below
/// are the same.
constexpr double k_steps[] = {0.01, 0.03, 0.05, 0.1, 0.15, 0.2, 0.3, 0.4, 0.5, 0.7, 1};
/// The first step of smooth surfaces, and the limit of the regions that merging starts from.
constexpr double k_first_smooth_step = 0.03;

MergeTerms terms_of_step(double step, double max_stretch) {
    MergeTerms terms;
    terms.limit = stretch_limit(float(step));
    // The caller's 0.15 is a float a little above that, but merging must not take it for another
    // slack than 0: it would try all pairs anew.
    const double beyond = step - k_usual_stretch;
    terms.slack = beyond > 1e-6 ? beyond / (1 - k_usual_stretch) : 0;
    if (step < std::min(k_first_smooth_step, max_stretch))
        terms.min_hardness = k_hard_pair;
    return terms;
}

bool merge_charts(ChartStages& stages, Merger& merger, ProgressMeter& progress) {
    const double max_stretch = double(stages.max_stretch);
    MergeTerms terms = terms_of_step(0, max_stretch);
    terms.limit = stretch_limit(stages.max_stretch);
    terms.min_hardness = k_hard_pair;
    progress.stage(Stage::merging);
    progress.part(0, 0.375);
    if (!merger.run(MergeRound::exact, terms, progress))
        return false;
    double begin = 0.375;
    for (double step : k_steps) {
        const bool last = step >= max_stretch - 1e-6; // the caller's 0.15 is a float
        const double end = last ? 1 : begin + 0.625 / double(std::size(k_steps));
        progress.part(begin, end);
        terms = terms_of_step(last ? max_stretch : step, max_stretch);
        if (!merger.run(MergeRound::free, terms, progress))
            return false;
        if (last)
            break;
        begin = end;
    }
    // What shares several sides, such as two faces of a solid, may unfold along one of them.
    terms.min_hardness = 0;
    return merger.run(MergeRound::exact, terms, progress);
}

/// Where any stretch is allowed, a component that is open as a disk or a planar ring needs no
/// further cut. Smooth ones become charts at once; the others are left to merging, which often
/// unfolds hard surfaces without any stretch. False if the callback asked to stop.
bool flatten_smooth_components(ChartStages& stages, double limit, ProgressMeter& progress) {
    constexpr double k_mostly_smooth = 0.1;
    const Surface& s = stages.surface;
    const Components components = find_components(s);
    const Buckets faces(components.of_face, components.count);
    RegionTerms terms;
    terms.max_stretch = limit;
    terms.may_skip_solver = true;
    std::vector<Chart> charts(components.count);
    WorkspacePool<Flattener> flatteners(stages.flattener);
    const auto another = [&] {
        return std::make_unique<Flattener>(stages.set, stages.flattener.options);
    };
    parallel_for(stages.executor, components.count, [&](size_t i) {
        const uint32_t* const begin = faces.item.data() + faces.begin[i];
        const uint32_t* const end = faces.item.data() + faces.begin[i + 1];
        if (!progress.poll() || mean_hardness(s, stages.hardness, begin, end) >= k_mostly_smooth)
            return;
        Vec3 normal;
        for (const uint32_t* t = begin; t != end; ++t)
            normal = normal + s.normal[*t] * s.frame[*t].area();
        const auto lease = flatteners.lease(another);
        if (!lease->flatten_region(begin, end, normal, terms, charts[i]))
            lease->flatten_disk(
                {begin, end}, [&] { return progress.poll(); }, charts[i]);
    });
    for (Chart& chart : charts)
        if (!chart.faces.empty())
            stages.set.add_chart(std::move(chart));
    return progress.poll();
}

/// Open components that merging has left in several charts, or cut inside of one, become one chart
/// where any stretch is allowed.
void unite_open_components(ChartStages& stages, ProgressMeter& progress) {
    const Components components = find_components(stages.surface);
    const Buckets faces(components.of_face, components.count);
    for (uint32_t c = 0; c < components.count; ++c) {
        const std::vector<uint32_t> group(faces.item.begin() + faces.begin[c],
                                          faces.item.begin() + faces.begin[c + 1]);
        const uint32_t first = stages.set.chart[group[0]];
        const auto has_cut = [&](uint32_t t) {
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
                if (stages.surface.mate[h] != k_none && !stages.set.glued[h])
                    return true;
            return stages.set.chart[t] != first;
        };
        if (std::any_of(group.begin(), group.end(), has_cut))
            stages.flattener.flatten_component(group, [&] { return progress.poll(); });
    }
}

/// Flattens regions of the cluster tree, the charts that merging starts from, and frees what no
/// later stage needs.
bool grow_regions(ChartStages& stages, ProgressMeter& progress) {
    const FlattenOptions& options = stages.flattener.options;
    progress.stage(Stage::regions);
    const double limit = std::min(options.limit, stretch_limit(float(k_first_smooth_step)));
    const double component_limit = std::min(options.limit, stretch_limit(float(k_usual_stretch)));
    if (stages.max_stretch >= 1 && !flatten_smooth_components(stages, component_limit, progress))
        return false;
    const bool done = make_regions(stages.flattener, stages.atoms, stages.tree, stages.hardness,
                                   {limit, component_limit}, stages.executor, progress);
    stages.tree = {};
    stages.surface.normal = {};
    return done;
}

bool is_thorough(const Options& options) { return options.quality == Quality::quality; }

} // namespace

ChartStages::ChartStages(Surface& s, const Options& options, ProgressMeter& progress)
    : ChartStages(s, options, progress, find_flat_pieces(s)) {}

ChartStages::ChartStages(Surface& s, const Options& options, ProgressMeter& progress,
                         const Components& flat_pieces)
    : surface(s), atoms(build_atoms(s)), polygons(s, atoms),
      hardness(measure_hardness(s, flat_pieces)),
      planes(find_planes(s, atoms, flat_pieces, hardness)), max_stretch(options.max_stretch),
      executor(s.face_count < options.min_parallel ? nullptr : options.executor),
      clustered(progress.stage(Stage::clusters) &&
                build_cluster_tree(s, planes, {hardness, !is_thorough(options)}, progress, tree)),
      set(s), flattener(set, {stretch_limit(options.max_stretch), is_thorough(options)}) {
    set.polygons = &polygons;
}

bool make_charts(ChartStages& stages, ProgressMeter& progress) {
    if (!stages.clustered || !grow_regions(stages, progress))
        return false;
    Merger merger(stages.flattener, {stages.hardness, stages.flattener.options.thorough},
                  stages.executor);
    if (!merge_charts(stages, merger, progress))
        return false;
    if (stages.max_stretch >= 1)
        unite_open_components(stages, progress);
    stages.smoother.emplace(stages.flattener, stages.atoms, stages.hardness);
    progress.stage(Stage::smoothing);
    for (int pass = 0; pass < 2; ++pass) {
        progress.part(0.15 * pass, 0.15 * (pass + 1));
        if (!stages.smoother->run(stages.executor, progress))
            return false;
    }
    progress.part(0.3, 1);
    if (!polish_charts(stages, progress))
        return false;
    merger.zip();
    return true;
}

uint32_t cut_charts(ChartStages& stages, const CutOptions& options,
                    const std::function<double()>& pack) {
    ChartCutter cutter(stages.flattener, stages.atoms, stages.planes, *stages.smoother);
    return cut_for_packing(cutter, options, pack);
}

} // namespace tessora::atlas
