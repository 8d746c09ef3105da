// The geometry of one merge: the arc, cheap refusals, gluing, the local solve, and taking it back.
#include "atlas/charts/merge_trial.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {
namespace {

// Thresholds of the merge rules. docs/atlas.md, "Merging", explains them; its table holds the
// measurements behind those for exact unions (charts that stay undistorted when glued).

/// Maximum residual of aligning the two sides of an arc, relative to the arc's length.
constexpr double k_max_residual = 0.25;
/// The same in quality mode under the caller's limit, when the merges that fit better are made.
constexpr double k_max_last_residual = 0.3;
/// The same for the last two charts of a surface, which have nothing else to be merged with.
constexpr double k_max_whole_residual = 0.45;
/// Maximum residual in the exact round, relative to the arc's length.
constexpr double k_max_exact_residual = 1e-4;
/// Minimum length of an arc in the exact round, relative to the shorter of the two borders.
constexpr double k_min_exact_arc = 0.08;
/// Maximum length of a union's bounding box, in sides of the square that has the mesh's area.
constexpr double k_max_length = 1;
/// Maximum length of an exact union's bounding box, in the same unit.
constexpr double k_max_exact_length = 1.25;
/// In quality mode, a union that fills its bounding box to less than this share must not have a
/// larger box than the two boxes it replaces. Fast mode leaves that to the price of room.
constexpr double k_min_fill = 0.6;
/// How much an exact union's box may exceed the two boxes it replaces, per length of the arc.
constexpr double k_waste_per_arc = 0.4;
/// Unions with at least this share of the mesh's area are only limited in length, by
/// k_max_length_most, if they are exact or there is nothing left that fits better.
constexpr double k_most_of_mesh = 0.64;
constexpr double k_max_length_most = 1.45;
/// Unions with at least this share count as the whole mesh, limited by k_max_length_whole.
constexpr double k_whole_mesh = 0.999;
constexpr double k_max_length_whole = 2.1;

/// How many times longer a union may be at full slack, and how much more room it may take.
constexpr double k_slack_growth = 4;

// What a union costs; see docs/atlas.md, "What a merge may cost".

/// Seam length that must be saved per added mean L2 stretch, at full hardness and at none.
constexpr double k_seam_per_hard_stretch = 100, k_seam_per_stretch = 20;
/// How many times its length the seam between the last two charts of a surface is worth.
constexpr double k_last_seam_worth = 1.5;
/// Seam length that must be saved per added room, halfway between convex hull and box.
constexpr double k_seam_per_room = 3;
/// The same in fast mode, which does not cut for the texture afterwards, at the usual limit. It
/// falls to k_seam_per_room at the slack of a limit of 0.5, from which on quality mode does not cut
/// either.
constexpr double k_seam_per_room_fast = 18, k_uncut_slack = 0.35 / 0.85;
/// Seam length that one chart less of n is worth in fast mode, times n: where few are left, a small
/// one at the edge of another must not stay alone for the room that it adds.
constexpr double k_seam_per_doubling_fast = 1;

// Constants of the band; see docs/atlas.md, "Merging".

/// Rings of the first band if the gap is small.
constexpr uint32_t k_first_rings = 4;
/// Additional rings per mean arc edge that fits into the widest gap, up to a maximum.
constexpr double k_rings_per_gap = 3;
constexpr double k_max_extra_rings = 200;
/// Factor by which the number of rings grows if the result is not legal.
constexpr uint32_t k_band_growth = 3;
/// A result with L2 - 1 above this multiple of the limit's is given up: a larger band will not
/// help.
constexpr double k_hopeless = 2.5;
/// Maximum number of triangles of a band that fast mode tries to solve a second time.
constexpr size_t k_max_fast_band = 8000;

} // namespace

void MergeTrial::take_arc(const BorderRun& run) {
    const Chart& chart = set_.charts[arc_.a];
    const uint32_t begin = run.loop == 0 ? 0 : chart.loop_end[run.loop - 1];
    const uint32_t end = chart.loop_end[run.loop];
    arc_.edges.clear();
    for (uint32_t k = 0, i = run.first; k < run.count; ++k, i = i + 1 == end ? begin : i + 1)
        arc_.edges.push_back(chart.border[i]);
    list_arc_nodes();
    // A loop glued all around would close the chart: one edge stays open.
    if (arc_.edges.size() > 1 &&
        (arc_.node_a.front() == arc_.node_a.back() || arc_.node_b.front() == arc_.node_b.back())) {
        arc_.edges.pop_back();
        list_arc_nodes();
    }
}

void MergeTrial::list_arc_nodes() {
    const Surface& s = set_.surface;
    arc_.node_a.clear();
    arc_.node_b.clear();
    for (uint32_t h : arc_.edges) {
        arc_.node_a.push_back(set_.node[h]);
        arc_.node_b.push_back(set_.node[next_corner(s.mate[h])]);
    }
    arc_.node_a.push_back(set_.node[next_corner(arc_.edges.back())]);
    arc_.node_b.push_back(set_.node[s.mate[arc_.edges.back()]]);
}

/// Cuts the arc down to its longest part along which both sides turn by the same angles.
void MergeTrial::keep_matching_part() {
    constexpr double k_same_turn = 1e-3; // maximum difference of the turns, as unit vectors
    const auto direction = [&](uint32_t from, uint32_t to) {
        const Vec2 d = set_.uv[to] - set_.uv[from];
        const double size = length(d);
        return size > 0 ? d * (1 / size) : Vec2{};
    };
    const auto turn = [&](const std::vector<uint32_t>& node,
                          size_t i) { // cosine and sine of the turn at vertex i
        const Vec2 in = direction(node[i - 1], node[i]), out = direction(node[i], node[i + 1]);
        return Vec2{dot(in, out), cross(in, out)};
    };
    size_t best = 0, best_count = 0;
    double best_length = 0;
    for (size_t first = 0, i = 0; i < arc_.edges.size(); first = i) {
        double size = 0;
        do {
            size += set_.surface.edge_length(arc_.edges[i]);
            ++i;
        } while (i < arc_.edges.size() &&
                 length(turn(arc_.node_a, i) - turn(arc_.node_b, i)) < k_same_turn);
        if (size > best_length) {
            best_length = size;
            best = first;
            best_count = i - first;
        }
    }
    const auto cut = [&](std::vector<uint32_t>& v, size_t count) {
        v = std::vector<uint32_t>(v.begin() + long(best), v.begin() + long(best + count));
    };
    cut(arc_.edges, best_count);
    cut(arc_.node_a, best_count + 1);
    cut(arc_.node_b, best_count + 1);
}

/// The rigid motion that lays a's side of the arc onto b's. Returns the root mean square residual,
/// or -1 if the arc determines no motion.
double MergeTrial::align(Rigid& motion) const {
    const size_t count = arc_.node_a.size();
    std::vector<double> weight(count, 0.0);
    for (size_t i = 0; i + 1 < count; ++i) {
        const double half = 0.5 * set_.surface.edge_length(arc_.edges[i]);
        weight[i] += half;
        weight[i + 1] += half;
    }
    std::vector<Vec2> from(count), to(count);
    for (size_t i = 0; i < count; ++i) {
        from[i] = set_.uv[arc_.node_a[i]];
        to[i] = set_.uv[arc_.node_b[i]];
    }
    return fit_rigid(from, to, weight, motion);
}

/// Whether the aligned sides of the arc lie close enough together. The exact round also refuses
/// arcs that are short against the borders of both charts.
bool MergeTrial::sides_fit(double residual) {
    if (residual < 0)
        return false;
    if (state_.round == MergeRound::exact) {
        const double shorter =
            std::min(set_.charts[arc_.a].border_length, set_.charts[arc_.b].border_length);
        return residual <= k_max_exact_residual * arc_.length &&
               arc_.length >= k_min_exact_arc * shorter;
    }
    if (residual <= k_max_residual * arc_.length)
        return true;
    if (residual <= k_max_whole_residual * arc_.length && alone_)
        return true;
    return state_.options.thorough && residual <= k_max_last_residual * arc_.length &&
           is_last_limit();
}

/// Whether the limit has risen to the caller's. If not, the pair could fare better then.
bool MergeTrial::is_last_limit() {
    const double last = flattener_.options.limit;
    next_limit_ = std::min(next_limit_, last);
    return state_.terms.limit >= last;
}

/// Whether both charts border on each other and themselves only.
bool MergeTrial::nothing_else_borders() const {
    const auto ends_here = [&](uint32_t h) {
        const uint32_t mate = set_.surface.mate[h];
        return mate == k_none || set_.chart[mate / 3] == arc_.a || set_.chart[mate / 3] == arc_.b;
    };
    const auto ends_all = [&](const Chart& chart) {
        return std::all_of(chart.border.begin(), chart.border.end(), ends_here);
    };
    return ends_all(set_.charts[arc_.a]) && ends_all(set_.charts[arc_.b]);
}

/// The border that both charts will have once the arc is glued. Its last loop is the one that the
/// arc was on: first b's part, from the arc's first vertex to its last, then a's part back.
void MergeTrial::splice_border() {
    struct Opened { // the loop that contains the arc
        uint32_t at = k_none, begin = 0, end = 0;
    };
    joined_ = Chart();
    const auto copy_other_loops = [&](const Chart& from, uint32_t arc_edge) {
        Opened opened;
        for (uint32_t loop = 0, start = 0; loop < from.loop_end.size(); ++loop) {
            const auto first = from.border.begin() + start;
            const auto last = from.border.begin() + from.loop_end[loop];
            const auto found = opened.at == k_none ? std::find(first, last, arc_edge) : last;
            if (found != last) {
                opened = {uint32_t(found - from.border.begin()), start, from.loop_end[loop]};
            } else {
                joined_.border.insert(joined_.border.end(), first, last);
                joined_.loop_end.push_back(uint32_t(joined_.border.size()));
            }
            start = from.loop_end[loop];
        }
        return opened;
    };
    const auto append_rest = [&](const Chart& from, const Opened& opened) {
        uint32_t at = opened.at;
        for (size_t k = arc_.edges.size(); k < opened.end - opened.begin; ++k) {
            at = at + 1 == opened.end ? opened.begin : at + 1;
            joined_.border.push_back(from.border[at]);
        }
    };
    const Chart& chart_a = set_.charts[arc_.a];
    const Chart& chart_b = set_.charts[arc_.b];
    const Opened opened_a = copy_other_loops(chart_a, arc_.edges.back());
    const Opened opened_b = copy_other_loops(chart_b, set_.surface.mate[arc_.edges.front()]);
    append_rest(chart_b, opened_b);
    append_rest(chart_a, opened_a);
    joined_.loop_end.push_back(uint32_t(joined_.border.size()));
    joined_.border_length = chart_a.border_length + chart_b.border_length - 2 * arc_.length;
}

/// The joined outline if each chart stayed rigid: a's part moved, and the gap at the two ends of
/// the arc faded out over a few border vertices on both sides.
void MergeTrial::preview_outline(const Rigid& motion) {
    constexpr uint32_t k_fade = 5; // border vertices
    outline_.clear();
    for (uint32_t h : joined_.border) {
        const Vec2 p = set_.uv[set_.node[h]];
        outline_.point.push_back(set_.chart[h / 3] == arc_.a ? motion(p) : p);
    }
    outline_.loop_end = joined_.loop_end;
    const uint32_t begin = joined_.loop_end.size() > 1 ? *(joined_.loop_end.end() - 2) : 0;
    const uint32_t end = joined_.loop_end.back(), size = end - begin;
    if (size == 0)
        return;
    uint32_t split = begin; // where b's part of the last loop ends and a's begins
    while (split < end && set_.chart[joined_.border[split] / 3] != arc_.a)
        ++split;
    const auto at = [&](uint32_t i) -> Vec2& { return outline_.point[begin + (i - begin) % size]; };
    const auto half_gap = [&](uint32_t node_a, uint32_t node_b) {
        return (motion(set_.uv[node_a]) - set_.uv[node_b]) * 0.5;
    };
    const Vec2 start_gap = half_gap(arc_.node_a.front(), arc_.node_b.front());
    const Vec2 end_gap = half_gap(arc_.node_a.back(), arc_.node_b.back());
    const uint32_t b_size = split - begin, a_size = end - split;
    for (uint32_t i = 0; i < k_fade; ++i) {
        const double part = 1 - double(i) / k_fade;
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

/// Whether gluing unfolds undistorted charts without distorting them.
bool MergeTrial::is_exact(double residual) const {
    constexpr double k_tolerance = 1e-5;
    const auto undistorted = [&](uint32_t chart) {
        return set_.charts[chart].stretch.l2() < 1 + k_tolerance;
    };
    return residual < k_tolerance * arc_.length && undistorted(arc_.a) && undistorted(arc_.b);
}

/// Refuses unions whose box would waste the texture. Lengths are measured in sides of the square
/// that has the area of the mesh: a strip longer than that square wastes room whatever else there
/// is to pack. An exact union (the net of a box, an unrolled tube) may waste more, the longer the
/// border that it removes; so may, under the caller's limit, one that leaves few other charts to
/// fill the gaps.
bool MergeTrial::box_allowed(const Box& box, bool exact) {
    if (state_.terms.slack >= 1)
        return true;
    const double looser = 1 + (k_slack_growth - 1) * state_.terms.slack;
    const double side = looser * std::sqrt(set_.surface.total_area);
    const double area = set_.charts[arc_.a].stretch.area + set_.charts[arc_.b].stretch.area;
    const double room =
        looser * (state_.extent[arc_.a].box.area() + state_.extent[arc_.b].box.area());
    const double share = area / set_.surface.total_area;
    const double most = share >= k_whole_mesh ? k_max_length_whole : k_max_length_most;
    const bool fits_as_most = share >= k_most_of_mesh && box.longer <= most * side;
    if (exact && share >= k_most_of_mesh)
        return fits_as_most;
    const bool filled = !state_.options.thorough || area >= k_min_fill * box.area();
    if (exact)
        return box.longer <= k_max_exact_length * side &&
               (filled || box.area() <= room + k_waste_per_arc * arc_.length * side);
    if (box.longer <= k_max_length * side && (filled || box.area() <= room))
        return true;
    return fits_as_most && is_last_limit();
}

/// Sets what L2 stretch the union may reach. The seam that it saves has to pay for the room that it
/// wastes and for the stretch that it adds, which costs more the harder the surface is. False if
/// the room alone costs more. The slack lowers both prices. Lengths are measured in sides of the
/// square that has the area of the mesh.
bool MergeTrial::set_affordable_stretch(const Box& box, bool exact) {
    affordable_l2_ = std::numeric_limits<double>::infinity();
    const double discount = 1 - state_.terms.slack;
    if (!(discount > 0))
        return true;
    const double total = set_.surface.total_area;
    double budget = arc_.length / std::sqrt(total);
    if (alone_)
        budget *= k_last_seam_worth;
    if (!exact && state_.round == MergeRound::free) {
        const auto likely_room = [](const Box& b) { return 0.5 * (b.hull + b.area()); };
        const double wasted = likely_room(box) - likely_room(state_.extent[arc_.a].box) -
                              likely_room(state_.extent[arc_.b].box);
        double price = k_seam_per_room;
        if (!state_.options.thorough) {
            budget += k_seam_per_doubling_fast / state_.charts;
            price += (k_seam_per_room_fast - k_seam_per_room) *
                     std::max(0.0, 1 - state_.terms.slack / k_uncut_slack);
        }
        budget -= discount * price * std::max(0.0, wasted) / total;
        if (budget < 0)
            return false;
    }
    const double hard = state_.hardness(arc_.a, arc_.b);
    const double price =
        discount * (hard * k_seam_per_hard_stretch + (1 - hard) * k_seam_per_stretch);
    const auto loss = [](const StretchSums& s) { return s.area * (s.l2() - 1); };
    const StretchSums& a = set_.charts[arc_.a].stretch;
    const StretchSums& b = set_.charts[arc_.b].stretch;
    affordable_l2_ = 1 + (loss(a) + loss(b) + budget / price * total) / (a.area + b.area);
    return true;
}

/// Glues the arc, whose nodes become b's, and moves chart a onto b.
void MergeTrial::glue(const Rigid& motion) {
    for (uint32_t h : arc_.edges)
        set_.set_glued(h, true);
    for (uint32_t n : arc_.node_b)
        set_.rename_node(n);
    for (uint32_t t : set_.charts[arc_.a].faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            if (set_.node[c] == c) // corner c carries its node's number: once per node
                set_uv(c, motion(set_.uv[c]));
}

/// Restores both charts to the state before glue().
void MergeTrial::unglue() {
    for (uint32_t h : arc_.edges)
        set_.set_glued(h, false);
    for (uint32_t n : arc_.node_a)
        set_.rename_node(n);
    for (uint32_t n : arc_.node_b)
        set_.rename_node(n);
    for (auto it = moved_.rbegin(); it != moved_.rend(); ++it)
        set_.uv[it->first] = it->second;
    moved_.clear();
}

void MergeTrial::set_uv(uint32_t node, Vec2 p) {
    moved_.push_back({node, set_.uv[node]});
    set_.uv[node] = p;
}

/// Fades the gap between the two sides of the arc out over the band, ring by ring: a node moves by
/// the mean of its neighbours one ring closer to the arc, slightly reduced.
void MergeTrial::spread_gap(const std::vector<Vec2>& gap, uint32_t rings) {
    std::vector<Vec2>& shift = shift_;
    shift.resize(band_.nodes().size());
    for (size_t i = 0; i < arc_.node_b.size(); ++i) {
        const uint32_t n = arc_.node_b[i];
        shift[i] = gap[i] * 0.5;
        set_uv(n, set_.uv[n] + gap[i] * 0.5);
    }
    for (size_t i = arc_.node_b.size(); i < band_.nodes().size(); ++i) {
        const uint32_t n = band_.nodes()[i], ring = band_.ring(n);
        if (ring >= rings)
            continue;
        Vec2 sum;
        uint32_t count = 0;
        set_.for_node(n, [&](uint32_t c) {
            for (uint32_t m : {set_.node[next_corner(c)], set_.node[previous_corner(c)]})
                if (band_.ring(m) == ring - 1) {
                    // a's side moves against the gap, b's side with it. The arc's nodes belong to
                    // both, so the sign is chosen where the first ring reads them.
                    const double sign = ring == 1 && set_.chart[c / 3] == arc_.a ? -1 : 1;
                    sum = sum + shift[band_.place(m)] * sign;
                    ++count;
                }
        });
        const double fade = double(rings - ring) / double(rings + 1 - ring);
        shift[i] = sum * (fade / count);
        set_uv(n, set_.uv[n] + shift[i]);
    }
}

/// Whether a merge that has failed at first deserves a more expensive solve. In fast mode it does
/// not if the band is large: such merges are few and often fail in the end, but would take a third
/// of the time.
bool MergeTrial::worth_more_work() const {
    return state_.options.thorough || band_.faces().size() <= k_max_fast_band;
}

/// Solves the band; nodes of its outermost ring stay fixed. False if triangles remain flipped.
bool MergeTrial::relax_band(uint32_t rings, bool global) {
    PatchCopy& copy = flattener_.copy;
    Patch& patch = copy.patch;
    copy.clear();
    patch.reserve(band_.nodes().size(), band_.faces().size());
    for (size_t i = 0; i < band_.nodes().size(); ++i) {
        const uint32_t n = band_.nodes()[i];
        copy.add_node(n, set_.uv[n], band_.rings()[i] >= rings);
    }
    for (uint32_t t : band_.faces())
        patch.add_face(set_.surface.frame[t], copy.vertex(set_.node[3 * t]),
                       copy.vertex(set_.node[3 * t + 1]), copy.vertex(set_.node[3 * t + 2]));
    for (uint32_t t : band_.leads())
        copy.add_guards(t, true);
    uint32_t flipped = patch.flipped();
    const auto untangle = [&](int rounds) {
        patch.untangle(rounds);
        flipped = patch.flipped();
    };
    // A few flipped triangles can be untangled at once; many mean that the start is bad.
    if (flipped != 0 && flipped < band_.faces().size() / 16 + 4)
        untangle(4);
    if (flipped != 0 && !worth_more_work())
        return false;
    const int steps = state_.options.thorough ? 4 : 2;
    if (global || flipped != 0) {
        patch.arap(steps);
        flipped = patch.flipped();
    }
    if (flipped != 0)
        untangle(6);
    if (flipped != 0)
        return false;
    patch.relax(steps);
    for (uint32_t i = 0; i < copy.nodes.size(); ++i)
        set_uv(copy.nodes[i], patch.uv[i]);
    return true;
}

/// The stretch sums of both charts together, with the band's triangles measured again.
StretchSums MergeTrial::joined_sums() {
    StretchSums sums = set_.charts[arc_.a].stretch;
    sums.add(set_.charts[arc_.b].stretch);
    band_sums_.clear();
    for_measured_faces([&](uint32_t t) {
        const StretchSums now = set_.measure_face(t);
        const MergeState::FaceSums& before = state_.face_sums[t];
        sums.inverse += now.inverse - before.inverse;
        sums.flat_area += now.flat_area - before.flat_area;
        sums.excess += now.excess - before.excess;
        sums.flipped += now.flipped;
        band_sums_.push_back({now.inverse, now.flat_area, now.excess});
    });
    return sums;
}

/// Puts the arc's nodes in the middle of a negligible gap. False if that flips a triangle.
bool MergeTrial::close_without_solving(const std::vector<Vec2>& gap) {
    band_.grow(arc_.node_b, 1);
    for (size_t i = 0; i < gap.size(); ++i)
        set_uv(arc_.node_b[i], set_.uv[arc_.node_b[i]] + gap[i] * 0.5);
    joined_.stretch = joined_sums();
    return joined_.stretch.flipped == 0;
}

/// Whether the stretch keeps to the limit and is worth its seam. If only the limit refuses it, the
/// same outcome will do under a limit as large as the stretch.
bool MergeTrial::within_limit(const StretchSums& sums) {
    if (sums.l2() > affordable_l2_)
        return false;
    const double l2 = sums.worst_l2();
    if (l2 <= state_.terms.limit)
        return true;
    next_limit_ = std::min(next_limit_, l2);
    return false;
}

/// Whether the stretch is so far above the limit, or what its seam is worth, that a larger band
/// will not help. If it is the limit, the same outcome will not be under one that is large enough.
bool MergeTrial::hopeless(const StretchSums& sums) {
    constexpr double k_rounding = 1e-9; // a limit that is nearly large enough counts as such
    if (sums.l2() > 1 + k_hopeless * (affordable_l2_ - 1))
        return true;
    const double l2 = sums.worst_l2();
    if (!(l2 > 1 + k_hopeless * (state_.terms.limit - 1)))
        return false;
    next_limit_ = std::min(next_limit_, (1 + (l2 - 1) / k_hopeless) * (1 - k_rounding));
    return true;
}

/// Closes the gap and brings the joined chart within the stretch limit; fills joined_.stretch.
bool MergeTrial::solve(const std::vector<Vec2>& gap) {
    constexpr double k_negligible_gap = 1e-7; // of the mean edge length
    double widest = 0;
    for (const Vec2 g : gap)
        widest = std::max(widest, length(g));
    const double edge = arc_.length / double(arc_.edges.size());
    if (widest <= k_negligible_gap * edge && close_without_solving(gap))
        return within_limit(joined_.stretch);
    const double extra = k_rings_per_gap * widest / edge;
    uint32_t rings = k_first_rings + uint32_t(std::min(k_max_extra_rings, extra));
    bool whole = band_.grow(arc_.node_b, rings);
    spread_gap(gap, rings);
    for (int attempt = 0;; ++attempt) {
        const bool valid = relax_band(rings, whole && attempt > 0);
        joined_.stretch = joined_sums();
        if (valid && joined_.stretch.flipped == 0 && within_limit(joined_.stretch))
            return true;
        // Solving all of the chart a second time differs only where it adds a global solve, and a
        // first solve that failed has made one.
        const bool exhausted = whole && (attempt > 0 || !valid);
        if (exhausted || !worth_more_work() || (!state_.options.thorough && attempt > 0) ||
            (valid && hopeless(joined_.stretch)))
            return false;
        rings *= k_band_growth;
        if (!whole)
            whole = band_.grow(arc_.node_b, rings);
    }
}

/// Closes the joined chart's slits and judges it. Triangles that this moves join the band, so that
/// their sums are measured again.
bool MergeTrial::legal_once_slits_close() {
    bool legal = true;
    const size_t before = moved_.size();
    flattener_.close_slits(joined_, moved_);
    for (size_t i = before; i < moved_.size(); ++i)
        set_.for_node(moved_[i].first, [&](uint32_t c) {
            legal = legal && set_.measure_face(c / 3).flipped == 0;
            band_.add_face(c / 3);
        });
    if (moved_.size() != before)
        joined_.stretch = joined_sums();
    return legal && joined_.stretch.flipped == 0 && within_limit(joined_.stretch) &&
           flattener_.judge_outline(joined_);
}

} // namespace tessora::atlas
