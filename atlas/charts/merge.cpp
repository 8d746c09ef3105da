// Which charts to merge: the queue of pairs, their common borders, bookkeeping and zipping.
#include "atlas/charts/merge.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {
namespace {

int bit_length(size_t n) {
    int bits = 0;
    for (; n != 0; n >>= 1)
        ++bits;
    return bits;
}

uint64_t pair_key(uint32_t a, uint32_t b) { return uint64_t(a) << 32 | b; }

} // namespace

Merger::Merger(Flattener& flattener, const MergeOptions& options)
    : flattener_(flattener), set_(flattener.set), options_(options), band_(flattener.set) {
    const size_t charts = set_.charts.size();
    history_.resize(charts);
    shared_.length.assign(charts, 0);
    for (uint32_t a = 0; a < charts; ++a) {
        history_[a].parent = a;
        set_.outline(set_.charts[a], outline_);
        history_[a].box = box_of(outline_);
        for (uint32_t t : set_.charts[a].faces)
            history_[a].hard_area += set_.surface.frame[t].area() * double(options_.hardness[t]);
    }
    face_sums_.resize(set_.surface.face_count);
    for (uint32_t t = 0; t < set_.surface.face_count; ++t) {
        const StretchSums sums = set_.measure_face(t);
        face_sums_[t] = {sums.inverse, sums.flat_area, sums.excess};
    }
}

/// Queues a chart with each of its neighbours. Long common borders come first and small pairs
/// before large ones, which keeps the growth of charts balanced.
void Merger::push_pairs(uint32_t a) {
    constexpr double k_priority_per_doubling = 0.1; // docs/atlas.md, "Merging"
    const Chart& chart = set_.charts[a];
    if (hardness(a, a) < terms_.min_hardness)
        return;
    for (uint32_t h : chart.border) {
        const uint32_t mate = set_.surface.mate[h];
        const uint32_t b = mate == k_none ? a : set_.chart[mate / 3];
        if (b == a || hardness(b, b) < terms_.min_hardness)
            continue;
        if (shared_.length[b] == 0)
            shared_.charts.push_back(b);
        shared_.length[b] += set_.surface.edge_length(h);
    }
    for (uint32_t b : shared_.charts) {
        const Chart& other = set_.charts[b];
        const double shorter = std::min(chart.border_length, other.border_length);
        const int size = bit_length(chart.faces.size() + other.faces.size());
        const double priority = shared_.length[b] / shorter - k_priority_per_doubling * size;
        shared_.length[b] = 0;
        const uint32_t low = std::min(a, b), high = std::max(a, b);
        queue_.push({priority, low, high, history_[low].version, history_[high].version});
    }
    shared_.charts.clear();
}

/// A pair is retried once both of its charts have changed; in fast mode never.
bool Merger::failed_before(const Pair& p) {
    const bool a_shorter = history_[p.a].failures.size() <= history_[p.b].failures.size();
    const uint32_t own = a_shorter ? p.a : p.b, other = a_shorter ? p.b : p.a;
    for (FailedPair& f : history_[own].failures) {
        while (history_[f.other].parent != f.other)
            f.other = history_[f.other].parent;
        if (f.other == other && (!options_.thorough || f.own_version == history_[own].version ||
                                 f.other_version == history_[other].version))
            return true;
    }
    return false;
}

/// Whether an earlier run has tried these versions of the pair, and the limit has not risen enough
/// since for another result.
bool Merger::refused_before(const Pair& p) const {
    const auto found = refusals_.find(pair_key(p.a, p.b));
    return found != refusals_.end() && found->second.version_a == p.version_a &&
           found->second.version_b == p.version_b && terms_.limit < found->second.below;
}

/// Tries a pair unless it is known to fail. True if it was merged.
bool Merger::try_or_remember(const Pair& p) {
    if (refused_before(p))
        return false;
    next_limit_ = std::numeric_limits<double>::infinity();
    if (try_pair(p.a, p.b))
        return true;
    refusals_[pair_key(p.a, p.b)] = {p.version_a, p.version_b, next_limit_};
    return false;
}

/// Refusals hold for any limit, but only as long as nothing else that decides changes.
void Merger::forget_refusals_unless_same(Round round, const MergeTerms& terms) {
    if (round != round_ || terms.slack != terms_.slack ||
        terms.hardness_weight != terms_.hardness_weight)
        refusals_.clear();
}

/// The mean over both charts, weighted by area.
double Merger::hardness(uint32_t a, uint32_t b) const {
    return (history_[a].hard_area + history_[b].hard_area) /
           (set_.charts[a].stretch.area + set_.charts[b].stretch.area);
}

bool Merger::run(Round round, const MergeTerms& terms, ProgressMeter& progress) {
    forget_refusals_unless_same(round, terms);
    round_ = round;
    terms_ = terms;
    for (History& history : history_)
        history.failures.clear();
    for (uint32_t a = 0; a < set_.charts.size(); ++a)
        if (set_.charts[a].alive)
            push_pairs(a);
    size_t done = 0;
    const size_t expected = set_.charts.size();
    while (!queue_.empty()) {
        const Pair p = queue_.top();
        queue_.pop();
        History& a = history_[p.a];
        History& b = history_[p.b];
        if (!set_.charts[p.a].alive || !set_.charts[p.b].alive || a.version != p.version_a ||
            b.version != p.version_b || failed_before(p))
            continue;
        if (try_or_remember(p)) {
            if (!progress.advance(double(++done) / double(expected)))
                return false;
        } else {
            a.failures.push_back({p.b, a.version, b.version});
            b.failures.push_back({p.a, b.version, a.version});
        }
    }
    return true;
}

/// Maximal runs of a's border that are also runs of b's border, longest first.
void Merger::find_runs(uint32_t a, uint32_t b, std::vector<BorderRun>& runs) const {
    for (uint32_t loop = 0; loop < set_.charts[a].loop_end.size(); ++loop)
        find_runs_of_loop(a, b, loop, runs);
    std::stable_sort(runs.begin(), runs.end(),
                     [](const BorderRun& x, const BorderRun& y) { return x.length > y.length; });
}

/// Whether half-edge h has chart b on its other side.
bool Merger::borders_chart(uint32_t h, uint32_t b) const {
    const uint32_t mate = set_.surface.mate[h];
    return mate != k_none && set_.chart[mate / 3] == b;
}

/// Appends the runs on one border loop of a.
void Merger::find_runs_of_loop(uint32_t a, uint32_t b, uint32_t loop,
                               std::vector<BorderRun>& runs) const {
    const Chart& chart = set_.charts[a];
    const Surface& s = set_.surface;
    const uint32_t begin = loop == 0 ? 0 : chart.loop_end[loop - 1];
    const uint32_t end = chart.loop_end[loop], size = end - begin;
    const auto faces_b = [&](uint32_t i) { return borders_chart(chart.border[i], b); };
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
                runs.push_back(run);
            run.first = i;
            run.count = 0;
            run.length = 0;
        }
        ++run.count;
        run.length += s.edge_length(chart.border[i]);
    }
    if (run.count != 0)
        runs.push_back(run);
}

/// Tries the longest common runs of two charts; the smaller chart moves. True if one was glued.
bool Merger::try_pair(uint32_t a, uint32_t b) {
    constexpr double k_second_run =
        0.3; // minimum length of the second run, relative to the longest
    if (set_.charts[a].faces.size() > set_.charts[b].faces.size())
        std::swap(a, b);
    std::vector<BorderRun> runs;
    find_runs(a, b, runs);
    const size_t max_tries = options_.thorough || round_ == Round::exact ? 2 : 1;
    for (size_t i = 0; i < runs.size() && i < max_tries; ++i) {
        if (i > 0 && runs[i].length < k_second_run * runs[0].length)
            break;
        if (try_run(a, b, runs[i]))
            return true;
    }
    return false;
}

/// One merge: cheap refusals first, then gluing and solving, which are taken back if the joined
/// chart is not legal or not worth it.
bool Merger::try_run(uint32_t a, uint32_t b, const BorderRun& run) {
    constexpr double k_preview_residual = 0.05; // relative to the arc; with larger residuals the
                                                // preview is too rough for quality mode to trust
    take_arc(a, b, run);
    if (round_ == Round::exact)
        keep_matching_part();
    arc_.length = 0;
    for (uint32_t h : arc_.edges)
        arc_.length += set_.surface.edge_length(h);
    Rigid motion;
    const double residual = align(motion);
    if (!sides_fit(residual))
        return false;
    Chart joined;
    splice_border(joined);
    preview_outline(joined, motion);
    if (!box_allowed(box_of(outline_), is_exact(residual)))
        return false;
    if ((!options_.thorough || residual < k_preview_residual * arc_.length) &&
        !tester_.simple(outline_))
        return false;
    std::vector<Vec2> gap(arc_.node_a.size()); // per arc vertex: from b's side to the moved a's
    for (size_t i = 0; i < gap.size(); ++i)
        gap[i] = motion(set_.uv[arc_.node_a[i]]) - set_.uv[arc_.node_b[i]];
    glue(motion);
    if (!solve(joined, gap) || !legal_once_slits_close(joined)) {
        band_.clear();
        unglue();
        return false;
    }
    commit(std::move(joined));
    return true;
}

/// Replaces chart b by the joined chart; chart a is no longer alive.
void Merger::commit(Chart&& joined) {
    remember_band_sums();
    band_.clear();
    moved_.clear();
    joined.stretch.flipped = 0;
    set_.outline(joined, outline_);
    Chart& from = set_.charts[arc_.a];
    Chart& to = set_.charts[arc_.b];
    for (uint32_t t : from.faces)
        set_.chart[t] = arc_.b;
    joined.faces = std::move(to.faces);
    joined.faces.insert(joined.faces.end(), from.faces.begin(), from.faces.end());
    to = std::move(joined);
    from = Chart{};
    from.alive = false;
    history_[arc_.a].parent = arc_.b;
    history_[arc_.a].failures = {};
    history_[arc_.b].hard_area += history_[arc_.a].hard_area;
    ++history_[arc_.b].version;
    history_[arc_.b].box = box_of(outline_);
    push_pairs(arc_.b);
}

/// Glues h to its mate if both are slit sides in the same place. True if it did.
bool Merger::zip_edge(uint32_t h) {
    const uint32_t mate = set_.surface.mate[h];
    if (mate == k_none || set_.glued[h] || set_.chart[h / 3] != set_.chart[mate / 3])
        return false;
    const uint32_t from = set_.node[h], to = set_.node[next_corner(h)];
    const uint32_t mate_from = set_.node[mate], mate_to = set_.node[next_corner(mate)];
    if (!(set_.uv[from] == set_.uv[mate_to]) || !(set_.uv[to] == set_.uv[mate_from]))
        return false;
    set_.set_glued(h, true);
    set_.rename_node(from);
    if (from != to)
        set_.rename_node(to);
    return true;
}

void Merger::zip() {
    for (Chart& chart : set_.charts) {
        if (!chart.alive)
            continue;
        bool changed = false;
        for (uint32_t h : chart.border)
            changed = zip_edge(h) || changed;
        if (changed)
            set_.trace_border(chart);
    }
}

} // namespace tessora::atlas
