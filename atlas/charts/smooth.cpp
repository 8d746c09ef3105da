#include "atlas/charts/smooth.h"

#include "atlas/geometry/rigid.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

constexpr size_t k_most_faces = 32; // of an ear; larger polygons are no teeth of a border

} // namespace

BorderSmoother::BorderSmoother(Flattener& flattener, const Atoms& atoms,
                               const std::vector<uint8_t>& hard)
    : flattener_(flattener), set_(flattener.set), atoms_(atoms), hard_(hard),
      faces_(atoms.of_face, atoms.count) {}

bool BorderSmoother::run(ProgressMeter& progress) {
    for (uint32_t a = 0; a < set_.charts.size(); a++) {
        if (!set_.charts[a].alive)
            continue;
        if (!progress.advance(double(a) / double(set_.charts.size())))
            return false;
        list_neighbours(a);
        for (uint32_t b : neighbours_)
            smooth(a, b);
    }
    return true;
}

/// Charts with a higher number that a shares a border with.
void BorderSmoother::list_neighbours(uint32_t a) {
    neighbours_.clear();
    for (uint32_t h : set_.charts[a].border) {
        const uint32_t mate = set_.surface.mate[h];
        if (mate != k_none && set_.chart[mate / 3] > a)
            neighbours_.push_back(set_.chart[mate / 3]);
    }
    std::sort(neighbours_.begin(), neighbours_.end());
    neighbours_.erase(std::unique(neighbours_.begin(), neighbours_.end()), neighbours_.end());
}

void BorderSmoother::smooth(uint32_t a, uint32_t b) {
    todo_.clear();
    offer_atoms(a, b);
    offer_atoms(b, a);
    undo_ = {};
    for (size_t i = 0; i < todo_.size(); i++) { // grows while ears come to light behind ears
        const uint32_t atom = todo_[i];
        const uint32_t from = set_.chart[faces_.item[faces_.begin[atom]]], to = from == a ? b : a;
        if (find_ear(atom, to) && place_ear(atom))
            move_ear(atom, to);
    }
    if (undo_.chart.empty())
        return;
    regroup(a, b);
    if (flattener_.judge_as_it_is(set_.charts[a]) && flattener_.judge_as_it_is(set_.charts[b]))
        return;
    take_back();
    regroup(a, b);
    set_.refresh(set_.charts[a]);
    set_.refresh(set_.charts[b]);
}

void BorderSmoother::offer_atoms(uint32_t from, uint32_t to) {
    for (uint32_t h : set_.charts[from].border) {
        const uint32_t mate = set_.surface.mate[h], atom = atoms_.of_face[h / 3];
        if (mate != k_none && set_.chart[mate / 3] == to && (todo_.empty() || todo_.back() != atom))
            todo_.push_back(atom);
    }
}

/// The outer half-edges of an atom into loop_; false when it is none that could be an ear.
bool BorderSmoother::trace_atom(uint32_t atom) {
    loop_.clear();
    const uint32_t begin = faces_.begin[atom], end = faces_.begin[atom + 1];
    if (end - begin > k_most_faces)
        return false;
    size_t outer = 0;
    uint32_t first = k_none;
    for (uint32_t i = begin; i < end; i++) {
        const uint32_t t = faces_.item[i];
        if (set_.surface.degenerate[t])
            return false;
        for (uint32_t h = 3 * t; h < 3 * t + 3; h++)
            if (!set_.surface.false_edge[h]) {
                outer++;
                first = std::min(first, h);
            }
    }
    uint32_t h = first;
    do {
        loop_.push_back(h);
        h = next_corner(h);
        while (set_.surface.false_edge[h])
            h = next_corner(set_.surface.mate[h]);
    } while (h != first);
    return loop_.size() == outer;
}

/// Fills run_ and stays_; false unless moving the atom shortens the border and leaves both charts
/// what they are topologically.
bool BorderSmoother::find_ear(uint32_t atom, uint32_t to) {
    if (!trace_atom(atom))
        return false;
    enum Kind { stays, faces, other };
    const auto kind = [&](size_t i) {
        const uint32_t h = loop_[i % loop_.size()], mate = set_.surface.mate[h];
        if (set_.glued[h])
            return stays;
        return mate != k_none && set_.chart[mate / 3] == to ? faces : other;
    };
    const auto one_run = [&](Kind wanted, std::vector<uint32_t>& run) {
        run.clear();
        size_t start = loop_.size(), runs = 0;
        for (size_t i = 0; i < loop_.size(); i++)
            if (kind(i) != wanted && kind(i + 1) == wanted) {
                start = i + 1;
                runs++;
            }
        for (size_t i = start; runs == 1 && kind(i) == wanted; i++)
            run.push_back(loop_[i % loop_.size()]);
        return runs == 1;
    };
    if (!one_run(faces, run_) || !one_run(stays, stays_))
        return false;
    double saved = 0, added = 0;
    for (uint32_t h : run_)
        saved += weight(h);
    for (uint32_t h : stays_)
        added += weight(h);
    constexpr double k_worth = 0.98;
    if (added > k_worth * saved)
        return false;
    for (size_t i = 1; i < stays_.size(); i++)
        if (!is_interior(stays_[i])) // the chart hangs together at this corner alone
            return false;
    for (size_t i = 1; i < run_.size(); i++)
        if (set_.next_border(set_.surface.mate[run_[i]]) != set_.surface.mate[run_[i - 1]])
            return false;
    return true;
}

bool BorderSmoother::is_interior(uint32_t corner) const {
    uint32_t at = corner;
    do {
        const uint32_t in = previous_corner(at);
        if (!set_.glued[in])
            return false;
        at = set_.surface.mate[in];
    } while (at != corner);
    return true;
}

/// Length, but down to a third of it where the surface bends by 45 degrees or more.
double BorderSmoother::weight(uint32_t h) const {
    constexpr double k_full_bend = 0.2928932188134524; // 1 - cos 45
    const Surface& s = set_.surface;
    const double bend = 1 - dot(s.normal[h / 3], s.normal[s.mate[h] / 3]);
    const double part = std::sqrt(std::min(1.0, std::max(0.0, bend / k_full_bend)));
    return s.edge_length(h) * (1 - 0.7 * part);
}

/// Where the ear's corners would lie in the other chart; false when they do not fit there.
bool BorderSmoother::place_ear(uint32_t atom) {
    const Surface& s = set_.surface;
    std::vector<uint32_t> nodes;
    std::vector<Vec2> from, to;
    for (uint32_t h : run_) {
        nodes.push_back(set_.node[h]);
        to.push_back(set_.uv[set_.node[next_corner(s.mate[h])]]);
    }
    nodes.push_back(set_.node[next_corner(run_.back())]);
    to.push_back(set_.uv[set_.node[s.mate[run_.back()]]]);
    for (uint32_t n : nodes)
        from.push_back(set_.uv[n]);
    Rigid motion;
    if (fit_rigid(from, to, std::vector<double>(nodes.size(), 1), motion) < 0)
        return false;
    placed_.clear();
    StretchSums sums;
    for (uint32_t i = faces_.begin[atom]; i < faces_.begin[atom + 1]; i++) {
        const uint32_t t = faces_.item[i];
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++) {
            const auto found = std::find(nodes.begin(), nodes.end(), set_.node[c]);
            placed_.push_back({c, found == nodes.end() ? motion(set_.uv[set_.node[c]])
                                                       : to[size_t(found - nodes.begin())]});
        }
        const Placed* p = &placed_[placed_.size() - 3];
        sums.add(triangle_stretch(s.frame[t], p[0].uv, p[1].uv, p[2].uv));
    }
    const double most =
        hard_[run_[0] / 3] ? k_hard_stretch : std::min(2.0, flattener_.options.limit);
    return sums.flipped == 0 && sums.l2() <= most;
}

void BorderSmoother::set_node(uint32_t corner, Vec2 p) {
    set_.for_node(corner, [&](uint32_t c) {
        undo_.node.push_back({c, set_.node[c]});
        set_.node[c] = corner;
    });
    undo_.uv.push_back({corner, set_.uv[corner]});
    set_.uv[corner] = p;
}

void BorderSmoother::set_glued(uint32_t h, uint8_t value) {
    undo_.glued.push_back({h, set_.glued[h]});
    set_.set_glued(h, value != 0);
}

void BorderSmoother::move_ear(uint32_t atom, uint32_t to) {
    const Surface& s = set_.surface;
    for (const std::vector<uint32_t>* side : {&stays_, &run_})
        for (uint32_t h : *side) // what the neighbours keep, on both sides
            for (uint32_t c : {s.mate[h], next_corner(s.mate[h])})
                placed_.push_back({c, set_.uv[set_.node[c]]});
    for (uint32_t h : stays_)
        set_glued(h, 0);
    for (uint32_t h : run_)
        set_glued(h, 1);
    for (const Placed& p : placed_)
        set_node(p.corner, p.uv);
    for (uint32_t i = faces_.begin[atom]; i < faces_.begin[atom + 1]; i++) {
        undo_.chart.push_back({faces_.item[i], set_.chart[faces_.item[i]]});
        set_.chart[faces_.item[i]] = to;
    }
    for (uint32_t h : stays_)
        todo_.push_back(atoms_.of_face[s.mate[h] / 3]);
}

void BorderSmoother::take_back() {
    const auto restore = [](const auto& log, auto&& put) {
        for (auto it = log.rbegin(); it != log.rend(); ++it)
            put(it->first, it->second);
    };
    restore(undo_.chart, [&](uint32_t t, uint32_t chart) { set_.chart[t] = chart; });
    restore(undo_.glued, [&](uint32_t h, uint8_t glued) { set_.set_glued(h, glued != 0); });
    restore(undo_.node, [&](uint32_t c, uint32_t node) { set_.node[c] = node; });
    restore(undo_.uv, [&](uint32_t node, Vec2 p) { set_.uv[node] = p; });
}

void BorderSmoother::regroup(uint32_t a, uint32_t b) {
    std::vector<uint32_t> all = std::move(set_.charts[a].faces);
    all.insert(all.end(), set_.charts[b].faces.begin(), set_.charts[b].faces.end());
    set_.charts[a].faces.clear();
    set_.charts[b].faces.clear();
    for (uint32_t t : all)
        set_.charts[set_.chart[t]].faces.push_back(t);
}

} // namespace tessora::atlas
