// The geometry of one merge: cheap refusals, gluing, the local solve, and the way back.
#include "atlas/charts/merge.h"

#include <algorithm>

namespace tessora::atlas {

void Merger::remember_face(uint32_t t) {
    const StretchSums sums = set_.measure_face(t);
    face_sums_[t] = {sums.inverse, sums.flat_area};
}

/// The outline as it will be after gluing, if the rest of each chart stays rigid: a's part moved,
/// the gap at the two ends of the arc closed gradually along the border.
void Merger::preview_outline(uint32_t a, const Chart& joined, const Rigid& motion) {
    outline_.clear();
    for (uint32_t h : joined.border) {
        const Vec2 p = set_.uv[set_.node[h]];
        outline_.point.push_back(set_.chart[h / 3] == a ? motion(p) : p);
    }
    outline_.loop_end = joined.loop_end;
    // The last loop runs first along b (from the arc's start to its end), then along a.
    const uint32_t begin = joined.loop_end.size() > 1 ? *(joined.loop_end.end() - 2) : 0;
    const uint32_t end = joined.loop_end.back(), size = end - begin;
    if (size == 0)
        return;
    uint32_t split = begin;
    while (split < end && set_.chart[joined.border[split] / 3] != a)
        split++;
    const auto at = [&](uint32_t i) -> Vec2& { return outline_.point[begin + (i - begin) % size]; };
    const Vec2 a_start = motion(set_.uv[node_a_.front()]), b_start = set_.uv[node_b_.front()];
    const Vec2 a_end = motion(set_.uv[node_a_.back()]), b_end = set_.uv[node_b_.back()];
    const uint32_t fade = 5;
    const Vec2 start_gap = (a_start - b_start) * 0.5, end_gap = (a_end - b_end) * 0.5;
    const uint32_t b_size = split - begin, a_size = end - split;
    for (uint32_t i = 0; i < fade; i++) {
        const double part = 1 - double(i) / fade;
        if (i < b_size)
            at(begin + i) = at(begin + i) + start_gap * part;
        if (i < a_size)
            at(split + i) = at(split + i) - end_gap * part;
        if (i > 0 && i < b_size)
            at(split - i) = at(split - i) + end_gap * part;
        if (i > 0 && i < a_size)
            at(end - i) = at(end - i) - start_gap * part;
    }
}

bool Merger::packable(const Box& box, uint32_t a, uint32_t b, bool exact, double arc_length) const {
    if (!options_.packable)
        return true;
    // Measured in sides of the square that all charts would fill: a strip longer than that wastes
    // the texture. An exact unfolding (the net of a box, a rolled-out tube) is worth some waste:
    // the longer the border that disappears, the more (docs/atlas.md has the curve).
    const double side = std::sqrt(set_.surface.total_area);
    const double area = set_.charts[a].stretch.area + set_.charts[b].stretch.area;
    const double room = box_[a].area() + box_[b].area();
    const double share = area / set_.surface.total_area;
    if (exact && share >= 0.64) // most of the mesh: little else could fill the gaps
        return box.longer <= (share >= 0.999 ? 2.1 : 1.7) * side;
    if (exact)
        return box.longer <= 1.25 * side &&
               (area >= 0.6 * box.area() || box.area() <= room + 0.4 * arc_length * side);
    return box.longer <= side && (area >= 0.6 * box.area() || box.area() <= room);
}

Box Merger::box_of(const Outline& outline) const {
    std::vector<Vec2> points = outline.point;
    return least_box(points);
}

/// On hard surfaces stretch has to buy seams: what was flat should stay undistorted unless the
/// border that disappears is long.
bool Merger::pays(uint32_t a, uint32_t b, const Chart& joined, double arc_length) const {
    if (!hard(a))
        return true;
    const auto loss = [](const StretchSums& s) { return s.area * (s.l2() - 1); };
    const double price =
        (loss(joined.stretch) - loss(set_.charts[a].stretch) - loss(set_.charts[b].stretch)) /
        set_.surface.total_area;
    constexpr double k_seam_per_stretch = 100, k_most_stretch = 1.03;
    return joined.stretch.l2() <= k_most_stretch &&
           price * k_seam_per_stretch <= arc_length / std::sqrt(set_.surface.total_area);
}

void Merger::glue() {
    for (uint32_t h : edges_)
        set_.set_glued(h, true);
    for (uint32_t n : node_b_)
        set_.rename_node(n);
}

void Merger::unglue() {
    for (uint32_t h : edges_)
        set_.set_glued(h, false);
    for (uint32_t n : node_a_)
        set_.rename_node(n);
    for (uint32_t n : node_b_)
        set_.rename_node(n);
    for (auto it = backup_.rbegin(); it != backup_.rend(); ++it)
        set_.uv[it->first] = it->second;
    backup_.clear();
}

void Merger::set_uv(uint32_t n, Vec2 p) {
    backup_.push_back({n, set_.uv[n]});
    set_.uv[n] = p;
}

/// Triangles and nodes within `rings` of the arc. True when that is all of both charts.
bool Merger::grow_band(uint32_t rings) {
    clear_band();
    for (uint32_t n : node_b_) {
        depth_[n] = 0;
        band_nodes_.push_back(n);
    }
    bool whole = true;
    for (size_t i = 0; i < band_nodes_.size(); i++) {
        const uint32_t n = band_nodes_[i], depth = depth_[n];
        if (depth == rings) {
            whole = false;
            continue;
        }
        set_.for_node(n, [&](uint32_t c) {
            const uint32_t t = c / 3;
            if (in_band_[t])
                return;
            in_band_[t] = 1;
            band_faces_.push_back(t);
            for (uint32_t k = 3 * t; k < 3 * t + 3; k++) {
                const uint32_t m = set_.node[k];
                if (depth_[m] == k_none) {
                    depth_[m] = depth + 1;
                    band_nodes_.push_back(m);
                }
            }
        });
    }
    return whole;
}

void Merger::clear_band() {
    for (uint32_t n : band_nodes_)
        depth_[n] = k_none;
    for (uint32_t t : band_faces_)
        in_band_[t] = 0;
    band_nodes_.clear();
    band_faces_.clear();
}

/// Lets the gap between the two sides of the arc fade out over the band, ring by ring: a node moves
/// like the mean of its neighbours one ring further in.
void Merger::spread_gap(uint32_t a, const std::vector<Vec2>& gap, uint32_t rings) {
    // gap[i]: from b's side to a's at arc vertex i. Node numbers of the arc are those of b.
    std::vector<Vec2>& shift = shift_;
    shift.resize(set_.node.size());
    for (size_t i = 0; i < node_b_.size(); i++) {
        shift[node_b_[i]] = gap[i] * 0.5;
        set_uv(node_b_[i], set_.uv[node_b_[i]] + gap[i] * 0.5);
    }
    for (size_t i = node_b_.size(); i < band_nodes_.size(); i++) {
        const uint32_t n = band_nodes_[i], depth = depth_[n];
        if (depth >= rings)
            continue;
        Vec2 sum;
        uint32_t count = 0;
        set_.for_node(n, [&](uint32_t c) {
            for (uint32_t m : {set_.node[next_corner(c)], set_.node[previous_corner(c)]})
                if (depth_[m] == depth - 1) {
                    // a's side moves against the gap, b's along it; only arc nodes know both.
                    const double sign = depth == 1 && set_.chart[c / 3] == a ? -1 : 1;
                    sum = sum + shift[m] * sign;
                    count++;
                }
        });
        const double fade = double(rings - depth) / double(rings + 1 - depth);
        shift[n] = sum * (fade / count);
        set_uv(n, set_.uv[n] + shift[n]);
    }
}

/// Whether a merge that has failed at first is worth more. In fast mode not with a large band: such
/// merges are few, often fail in the end, and would take a third of the time.
bool Merger::patient() const {
    constexpr size_t k_most_faces = 8000;
    return options_.thorough || band_faces_.size() <= k_most_faces;
}

/// Solves the band with everything around it held. False when triangles stay flipped.
bool Merger::relax_band(uint32_t rings, bool global) {
    Flattener& f = flattener_;
    f.patch.clear();
    f.nodes.clear();
    for (uint32_t n : band_nodes_) {
        f.local[n] = f.patch.add_vertex(set_.uv[n], depth_[n] >= rings);
        f.nodes.push_back(n);
    }
    for (uint32_t t : band_faces_)
        f.patch.add_face(set_.surface.frame[t], f.local[set_.node[3 * t]],
                         f.local[set_.node[3 * t + 1]], f.local[set_.node[3 * t + 2]]);
    for (uint32_t n : band_nodes_)
        f.local[n] = k_none;
    // A few flipped triangles turn over by themselves; many mean that the start is bad.
    const uint32_t flipped = f.patch.flipped();
    if (flipped != 0 && flipped < band_faces_.size() / 16 + 4)
        f.patch.untangle(4);
    if (f.patch.flipped() != 0 && !patient())
        return false;
    if (global || f.patch.flipped() != 0)
        f.patch.arap(options_.thorough ? 4 : 2);
    if (f.patch.flipped() != 0)
        f.patch.untangle(6);
    if (f.patch.flipped() != 0)
        return false;
    f.patch.relax(options_.thorough ? 4 : 2);
    for (uint32_t i = 0; i < f.nodes.size(); i++)
        set_uv(f.nodes[i], f.patch.uv[i]);
    return true;
}

/// The sums of the joined chart, the band's triangles measured anew.
StretchSums Merger::joined_sums(uint32_t a, uint32_t b) const {
    StretchSums sums = set_.charts[a].stretch;
    sums.add(set_.charts[b].stretch);
    for (uint32_t t : band_faces_) {
        const StretchSums now = set_.measure_face(t);
        sums.inverse += now.inverse - face_sums_[t].inverse;
        sums.flat_area += now.flat_area - face_sums_[t].flat_area;
        sums.flipped += now.flipped;
    }
    return sums;
}

bool Merger::solve(uint32_t a, uint32_t b, Chart& joined, const std::vector<Vec2>& gap) {
    double largest = 0, edge = 0;
    for (const Vec2 g : gap)
        largest = std::max(largest, length(g));
    for (uint32_t h : edges_)
        edge += set_.surface.edge_length(h);
    edge /= double(edges_.size());
    if (largest <= 1e-7 * edge) { // the sides fit: nothing to solve
        grow_band(1);
        for (size_t i = 0; i < gap.size(); i++)
            set_uv(node_b_[i], set_.uv[node_b_[i]] + gap[i] * 0.5);
        joined.stretch = joined_sums(a, b);
        if (joined.stretch.flipped == 0)
            return joined.stretch.l2() <= options_.limit;
    }
    const double reach = 3 * largest / edge;
    uint32_t rings = 4 + uint32_t(std::min(200.0, reach));
    bool whole = grow_band(rings);
    spread_gap(a, gap, rings);
    const double hopeless = 1 + 2.5 * (options_.limit - 1);
    for (int attempt = 0;; attempt++) {
        const bool valid = relax_band(rings, whole && attempt > 0);
        joined.stretch = joined_sums(a, b);
        const double l2 = joined.stretch.l2();
        if (valid && joined.stretch.flipped == 0 && l2 <= options_.limit)
            return true;
        if ((whole && attempt > 0) || (valid && l2 > hopeless) || !patient() ||
            (!options_.thorough && attempt > 0))
            return false;
        rings *= 3;
        if (!whole)
            whole = grow_band(rings);
    }
}

bool Merger::try_arc(uint32_t a, uint32_t b, const Arc& arc) {
    take_arc(a, arc);
    if (round_ == Round::exact)
        keep_fitting_part();
    Rigid motion;
    const double residual = align(motion);
    double arc_length = 0;
    for (uint32_t h : edges_)
        arc_length += set_.surface.edge_length(h);
    const double most = round_ == Round::exact ? 1e-4 : 0.25;
    if (residual < 0 || residual > most * arc_length)
        return false;
    const double least = std::min(set_.charts[a].border_length, set_.charts[b].border_length);
    if (round_ == Round::exact && arc_length < 0.08 * least)
        return false;
    Chart joined;
    splice_border(a, b, joined);
    preview_outline(a, joined, motion);
    const Box box = box_of(outline_);
    const bool exact = residual < 1e-5 * arc_length && set_.charts[a].stretch.l2() < 1 + 1e-5 &&
                       set_.charts[b].stretch.l2() < 1 + 1e-5;
    if (!packable(box, a, b, exact, arc_length))
        return false;
    if ((!options_.thorough || residual < 0.05 * arc_length) && !tester_.simple(outline_))
        return false;
    std::vector<Vec2> gap(node_a_.size());
    for (size_t i = 0; i < gap.size(); i++)
        gap[i] = motion(set_.uv[node_a_[i]]) - set_.uv[node_b_[i]];
    glue();
    for (uint32_t t : set_.charts[a].faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++)
            if (set_.node[c] == c) // one corner of each node; the arc's nodes are b's
                set_uv(c, motion(set_.uv[c]));
    bool legal = solve(a, b, joined, gap);
    if (legal) {
        const size_t before = backup_.size();
        flattener_.close_slits(joined, backup_);
        for (size_t i = before; i < backup_.size(); i++)
            set_.for_node(backup_[i].first, [&](uint32_t c) {
                legal = legal && set_.measure_face(c / 3).flipped == 0;
                if (!in_band_[c / 3]) {
                    in_band_[c / 3] = 1;
                    band_faces_.push_back(c / 3);
                }
            });
        joined.stretch = joined_sums(a, b);
        legal = legal && joined.stretch.l2() <= options_.limit && pays(a, b, joined, arc_length) &&
                flattener_.judge_outline(joined);
    }
    if (!legal) {
        clear_band();
        unglue();
        return false;
    }
    for (uint32_t t : band_faces_)
        remember_face(t);
    clear_band();
    backup_.clear();
    joined.stretch.flipped = 0;
    set_.outline(joined, outline_);
    commit(a, b, std::move(joined), box_of(outline_));
    return true;
}

} // namespace tessora::atlas
