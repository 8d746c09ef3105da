#include "atlas/charts/merge.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

int bit_length(size_t n) {
    int bits = 0;
    for (; n != 0; n >>= 1)
        bits++;
    return bits;
}

} // namespace

Merger::Merger(Flattener& flattener, const MergeOptions& options)
    : flattener_(flattener), set_(flattener.set), options_(options) {
    const size_t charts = set_.charts.size();
    version_.assign(charts, 0);
    failures_.resize(charts);
    shared_.assign(charts, 0);
    box_.resize(charts);
    parent_.resize(charts);
    for (uint32_t a = 0; a < charts; a++) {
        parent_[a] = a;
        set_.outline(set_.charts[a], outline_);
        box_[a] = box_of(outline_);
    }
    depth_.assign(set_.node.size(), k_none);
    in_band_.assign(set_.surface.face_count, 0);
    face_sums_.resize(set_.surface.face_count);
    for (uint32_t t = 0; t < set_.surface.face_count; t++)
        remember_face(t);
}

/// Offers every neighbour of a chart: long common borders first, small pairs first.
void Merger::push_pairs(uint32_t a) {
    const Chart& chart = set_.charts[a];
    if (round_ == Round::exact && !hard(a))
        return;
    for (uint32_t h : chart.border) {
        const uint32_t mate = set_.surface.mate[h];
        const uint32_t b = mate == k_none ? a : set_.chart[mate / 3];
        if (b == a)
            continue;
        if (shared_[b] == 0)
            touched_.push_back(b);
        shared_[b] += set_.surface.edge_length(h);
    }
    for (uint32_t b : touched_) {
        const Chart& other = set_.charts[b];
        const double least = std::min(chart.border_length, other.border_length);
        const int size = bit_length(chart.faces.size() + other.faces.size());
        const double priority = shared_[b] / least - 0.1 * size;
        shared_[b] = 0;
        const uint32_t low = std::min(a, b), high = std::max(a, b);
        queue_.push({priority, low, high, version_[low], version_[high]});
    }
    touched_.clear();
}

/// A pair is tried again once both charts have changed; in fast mode never.
bool Merger::failed_before(const Pair& p) {
    const bool a_shorter = failures_[p.a].size() <= failures_[p.b].size();
    const uint32_t own = a_shorter ? p.a : p.b, other = a_shorter ? p.b : p.a;
    for (FailedPair& f : failures_[own]) {
        while (parent_[f.other] != f.other)
            f.other = parent_[f.other];
        if (f.other == other && (!options_.thorough || f.own_version == version_[own] ||
                                 f.other_version == version_[other]))
            return true;
    }
    return false;
}

bool Merger::run(Round round, ProgressMeter& progress) {
    round_ = round;
    for (auto& list : failures_)
        list.clear();
    for (uint32_t a = 0; a < set_.charts.size(); a++)
        if (set_.charts[a].alive)
            push_pairs(a);
    size_t done = 0;
    const size_t expected = set_.charts.size();
    while (!queue_.empty()) {
        const Pair p = queue_.top();
        queue_.pop();
        if (!set_.charts[p.a].alive || !set_.charts[p.b].alive || version_[p.a] != p.version_a ||
            version_[p.b] != p.version_b || failed_before(p))
            continue;
        if (try_pair(p.a, p.b)) {
            if (!progress.advance(double(++done) / double(expected)))
                return false;
        } else {
            failures_[p.a].push_back({p.b, version_[p.a], version_[p.b]});
            failures_[p.b].push_back({p.a, version_[p.b], version_[p.a]});
        }
    }
    return true;
}

/// Maximal runs of a's border that b's border follows in reverse, longest first.
void Merger::find_arcs(uint32_t a, uint32_t b, std::vector<Arc>& arcs) const {
    const Chart& chart = set_.charts[a];
    const Surface& s = set_.surface;
    const auto faces_b = [&](uint32_t i) {
        const uint32_t mate = s.mate[chart.border[i]];
        return mate != k_none && set_.chart[mate / 3] == b;
    };
    uint32_t begin = 0;
    for (uint32_t loop = 0; loop < chart.loop_end.size(); begin = chart.loop_end[loop++]) {
        const uint32_t end = chart.loop_end[loop], size = end - begin;
        const auto follows = [&](uint32_t i) { // entry i continues the run of the one before it
            const uint32_t before = i == begin ? end - 1 : i - 1;
            return faces_b(i) && faces_b(before) &&
                   set_.next_border(s.mate[chart.border[i]]) == s.mate[chart.border[before]];
        };
        uint32_t start = begin;
        while (start < end && (!faces_b(start) || follows(start)))
            start++;
        Arc arc;
        arc.loop = loop;
        if (start == end) {
            if (!faces_b(begin))
                continue;
            arc.first = begin; // the whole loop is one closed run
            arc.count = size;
            for (uint32_t i = begin; i < end; i++)
                arc.length += s.edge_length(chart.border[i]);
            arcs.push_back(arc);
            continue;
        }
        for (uint32_t k = 0; k < size; k++) {
            const uint32_t i = start + k < end ? start + k : start + k - size;
            if (!faces_b(i))
                continue;
            if (!follows(i)) {
                if (arc.count != 0)
                    arcs.push_back(arc);
                arc.first = i;
                arc.count = 0;
                arc.length = 0;
            }
            arc.count++;
            arc.length += s.edge_length(chart.border[i]);
        }
        if (arc.count != 0)
            arcs.push_back(arc);
    }
    std::stable_sort(arcs.begin(), arcs.end(),
                     [](const Arc& x, const Arc& y) { return x.length > y.length; });
}

bool Merger::try_pair(uint32_t a, uint32_t b) {
    if (set_.charts[a].faces.size() > set_.charts[b].faces.size())
        std::swap(a, b);
    std::vector<Arc> arcs;
    find_arcs(a, b, arcs);
    const size_t most = options_.thorough || round_ == Round::exact ? 2 : 1;
    for (size_t i = 0; i < arcs.size() && i < most; i++) {
        if (i > 0 && arcs[i].length < 0.3 * arcs[0].length)
            break;
        if (try_arc(a, b, arcs[i]))
            return true;
    }
    return false;
}

void Merger::take_arc(uint32_t a, const Arc& arc) {
    const Chart& chart = set_.charts[a];
    const uint32_t begin = arc.loop == 0 ? 0 : chart.loop_end[arc.loop - 1];
    const uint32_t end = chart.loop_end[arc.loop];
    edges_.clear();
    for (uint32_t k = 0, i = arc.first; k < arc.count; k++, i = i + 1 == end ? begin : i + 1)
        edges_.push_back(chart.border[i]);
    const auto fill = [&]() {
        node_a_.clear();
        node_b_.clear();
        for (uint32_t h : edges_) {
            node_a_.push_back(set_.node[h]);
            node_b_.push_back(set_.node[next_corner(set_.surface.mate[h])]);
        }
        node_a_.push_back(set_.node[next_corner(edges_.back())]);
        node_b_.push_back(set_.node[set_.surface.mate[edges_.back()]]);
    };
    fill();
    // A loop glued all around would close the chart: one edge stays open.
    if (edges_.size() > 1 &&
        (node_a_.front() == node_a_.back() || node_b_.front() == node_b_.back())) {
        edges_.pop_back();
        fill();
    }
}

/// Cuts the arc down to its longest stretch along which both sides turn alike.
void Merger::keep_fitting_part() {
    const auto direction = [&](uint32_t from, uint32_t to) {
        const Vec2 d = set_.uv[to] - set_.uv[from];
        const double size = length(d);
        return size > 0 ? d * (1 / size) : Vec2{};
    };
    const auto turn = [&](const std::vector<uint32_t>& node, size_t i) { // of the line at vertex i
        const Vec2 in = direction(node[i - 1], node[i]), out = direction(node[i], node[i + 1]);
        return Vec2{dot(in, out), cross(in, out)};
    };
    size_t best = 0, best_count = 0;
    double best_length = 0;
    for (size_t first = 0, i = 0; i < edges_.size(); first = i) {
        double size = 0;
        do
            size += set_.surface.edge_length(edges_[i++]);
        while (i < edges_.size() && length(turn(node_a_, i) - turn(node_b_, i)) < 1e-3);
        if (size > best_length) {
            best_length = size;
            best = first;
            best_count = i - first;
        }
    }
    const auto cut = [&](std::vector<uint32_t>& v, size_t count) {
        v = std::vector<uint32_t>(v.begin() + long(best), v.begin() + long(best + count));
    };
    cut(edges_, best_count);
    cut(node_a_, best_count + 1);
    cut(node_b_, best_count + 1);
}

/// The rigid motion that lays a's side of the arc onto b's; gives the root mean square residual.
double Merger::align(Rigid& motion) const {
    const size_t count = node_a_.size();
    std::vector<double> weight(count, 0.0);
    for (size_t i = 0; i + 1 < count; i++) {
        const double half = 0.5 * set_.surface.edge_length(edges_[i]);
        weight[i] += half;
        weight[i + 1] += half;
    }
    std::vector<Vec2> from(count), to(count);
    for (size_t i = 0; i < count; i++) {
        from[i] = set_.uv[node_a_[i]];
        to[i] = set_.uv[node_b_[i]];
    }
    return fit_rigid(from, to, weight, motion);
}

/// The border that a and b have once the arc is glued.
void Merger::splice_border(uint32_t a, uint32_t b, Chart& joined) const {
    const Surface& s = set_.surface;
    const uint32_t first_a = edges_.front(), last_a = edges_.back();
    const auto copy_loops = [&](const Chart& from, uint32_t skip, uint32_t& at, uint32_t& begin,
                                uint32_t& end) {
        for (uint32_t loop = 0, start = 0; loop < from.loop_end.size();
             start = from.loop_end[loop++]) {
            const auto first = from.border.begin() + start;
            const auto last = from.border.begin() + from.loop_end[loop];
            const auto found = at == k_none ? std::find(first, last, skip) : last;
            if (found != last) {
                at = uint32_t(found - from.border.begin());
                begin = start;
                end = from.loop_end[loop];
                continue;
            }
            joined.border.insert(joined.border.end(), first, last);
            joined.loop_end.push_back(uint32_t(joined.border.size()));
        }
    };
    uint32_t at_a = k_none, begin_a = 0, end_a = 0, at_b = k_none, begin_b = 0, end_b = 0;
    const Chart& chart_a = set_.charts[a];
    const Chart& chart_b = set_.charts[b];
    copy_loops(chart_a, last_a, at_a, begin_a, end_a);
    copy_loops(chart_b, s.mate[first_a], at_b, begin_b, end_b);
    const uint32_t arc = uint32_t(edges_.size());
    const auto rest = [&](const Chart& from, uint32_t at, uint32_t begin, uint32_t end) {
        for (uint32_t k = arc; k < end - begin; k++) {
            at = at + 1 == end ? begin : at + 1;
            joined.border.push_back(from.border[at]);
        }
    };
    rest(chart_b, at_b, begin_b, end_b); // from the arc's first vertex to its last
    rest(chart_a, at_a, begin_a, end_a); // and back
    joined.loop_end.push_back(uint32_t(joined.border.size()));
    double arc_length = 0;
    for (uint32_t h : edges_)
        arc_length += s.edge_length(h);
    joined.border_length = chart_a.border_length + chart_b.border_length - 2 * arc_length;
}

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

void Merger::commit(uint32_t a, uint32_t b, Chart&& joined, const Box& box) {
    Chart& from = set_.charts[a];
    Chart& to = set_.charts[b];
    for (uint32_t t : from.faces)
        set_.chart[t] = b;
    joined.faces = std::move(to.faces);
    joined.faces.insert(joined.faces.end(), from.faces.begin(), from.faces.end());
    to = std::move(joined);
    from = Chart{};
    from.alive = false;
    parent_[a] = b;
    version_[b]++;
    box_[b] = box;
    failures_[a] = {};
    push_pairs(b);
}

} // namespace tessora::atlas
