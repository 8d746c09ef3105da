#include "atlas/charts/merge_trial.h"

#include "atlas/parallel.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {
namespace {

/// The least box around an outline.
Box box_of(const Outline& outline) {
    std::vector<Vec2> points = outline.point;
    return min_area_box(points);
}

} // namespace

MergeState::MergeState(const ChartSet& charts, const MergeOptions& o, ParallelFor executor)
    : set(charts), options(o), extent(charts.charts.size()), face_sums(charts.surface.face_count),
      band_flags(charts) {
    parallel_for(executor, extent.size(), [&](size_t a) {
        Outline outline;
        set.outline(set.charts[a], outline);
        extent[a].box = box_of(outline);
        for (uint32_t t : set.charts[a].faces)
            extent[a].hard_area += set.surface.frame[t].area() * double(options.hardness[t]);
    });
    for_blocks(executor, set.surface.face_count, [&](size_t begin, size_t end) {
        for (uint32_t t = uint32_t(begin); t < end; ++t) {
            const StretchSums sums = set.measure_face(t);
            face_sums[t] = {sums.inverse, sums.flat_area, sums.excess};
        }
    });
}

MergeTrial::MergeTrial(Flattener& flattener, MergeState& state)
    : flattener_(flattener), set_(flattener.set), state_(state),
      band_(flattener.set, state.band_flags) {}

/// The smaller chart moves.
void MergeTrial::begin(uint32_t a, uint32_t b) {
    if (set_.charts[a].faces.size() > set_.charts[b].faces.size())
        std::swap(a, b);
    arc_.a = a;
    arc_.b = b;
    moved_.clear();
    find_runs();
    alone_ = nothing_else_borders();
    next_limit_ = std::numeric_limits<double>::infinity();
}

/// Tries the longest common runs.
bool MergeTrial::run() {
    constexpr double k_second_run =
        0.3; // minimum length of the second run, relative to the longest
    const size_t max_tries = state_.options.thorough || state_.round == MergeRound::exact ? 2 : 1;
    for (size_t i = 0; i < runs_.size() && i < max_tries; ++i) {
        if (i > 0 && runs_[i].length < k_second_run * runs_[0].length)
            break;
        if (try_run(runs_[i]))
            return true;
    }
    return false;
}

/// Maximal runs of a's border that are also runs of b's border, longest first.
void MergeTrial::find_runs() {
    runs_.clear();
    for (uint32_t loop = 0; loop < set_.charts[arc_.a].loop_end.size(); ++loop)
        find_runs_of_loop(loop);
    std::stable_sort(runs_.begin(), runs_.end(),
                     [](const BorderRun& x, const BorderRun& y) { return x.length > y.length; });
}

/// Whether half-edge h has chart b on its other side.
bool MergeTrial::borders_chart(uint32_t h, uint32_t b) const {
    const uint32_t mate = set_.surface.mate[h];
    return mate != k_none && set_.chart[mate / 3] == b;
}

/// Appends the runs on one border loop of a.
void MergeTrial::find_runs_of_loop(uint32_t loop) {
    const Chart& chart = set_.charts[arc_.a];
    const Surface& s = set_.surface;
    const uint32_t begin = loop == 0 ? 0 : chart.loop_end[loop - 1];
    const uint32_t end = chart.loop_end[loop], size = end - begin;
    const auto faces_b = [&](uint32_t i) { return borders_chart(chart.border[i], arc_.b); };
    const auto follows = [&](uint32_t i) { // whether entry i continues the run of the one before it
        const uint32_t before = i == begin ? end - 1 : i - 1;
        return faces_b(i) && faces_b(before) &&
               set_.next_border(s.mate[chart.border[i]]) == s.mate[chart.border[before]];
    };
    uint32_t start = begin;
    while (start < end && (!faces_b(start) || follows(start)))
        ++start;
    const bool closed = start == end; // no run begins anywhere: the loop is one run, or none
    if (closed && !faces_b(begin))
        return;
    if (closed)
        start = begin;
    BorderRun run;
    run.loop = loop;
    run.first = start;
    for (uint32_t k = 0; k < size; ++k) {
        const uint32_t i = start + k < end ? start + k : start + k - size;
        if (!faces_b(i))
            continue;
        if (!closed && !follows(i)) {
            if (run.count != 0)
                runs_.push_back(run);
            run.first = i;
            run.count = 0;
            run.length = 0;
        }
        ++run.count;
        run.length += s.edge_length(chart.border[i]);
    }
    if (run.count != 0)
        runs_.push_back(run);
}

/// One merge: cheap refusals first, then gluing and solving, which are taken back if the joined
/// chart is not legal or not worth it.
bool MergeTrial::try_run(const BorderRun& run) {
    constexpr double k_preview_residual = 0.05; // relative to the arc; with larger residuals the
                                                // preview is too rough for quality mode to trust
    take_arc(run);
    if (state_.round == MergeRound::exact)
        keep_matching_part();
    arc_.length = 0;
    for (uint32_t h : arc_.edges)
        arc_.length += set_.surface.edge_length(h);
    Rigid motion;
    const double residual = align(motion);
    if (!sides_fit(residual))
        return false;
    splice_border();
    preview_outline(motion);
    const Box box = box_of(outline_);
    const bool exact = is_exact(residual);
    if (!box_allowed(box, exact) || !set_affordable_stretch(box, exact))
        return false;
    if ((!state_.options.thorough || residual < k_preview_residual * arc_.length) &&
        !tester_.simple(outline_))
        return false;
    std::vector<Vec2> gap(arc_.node_a.size()); // per arc vertex: from b's side to the moved a's
    for (size_t i = 0; i < gap.size(); ++i)
        gap[i] = motion(set_.uv[arc_.node_a[i]]) - set_.uv[arc_.node_b[i]];
    glue(motion);
    if (solve(gap) && legal_once_slits_close())
        return true;
    band_.clear();
    unglue();
    return false;
}

Union MergeTrial::take_union() {
    Union result;
    result.a = arc_.a;
    result.b = arc_.b;
    set_.outline(joined_, outline_);
    result.box = box_of(outline_);
    result.chart = std::move(joined_);
    auto sums = band_sums_.begin();
    for_measured_faces([&](uint32_t t) { result.face_sums.push_back({t, *sums++}); });
    band_.clear();
    return result;
}

void MergeTrial::take_back(Union::Change& change) {
    change.edges = arc_.edges;
    change.nodes = arc_.node_b;
    for (const auto& [node, before] : moved_)
        change.uv.push_back({node, set_.uv[node]});
    unglue();
}

} // namespace tessora::atlas
