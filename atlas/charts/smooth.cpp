#include "atlas/charts/smooth.h"

#include "atlas/geometry/rigid.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {
namespace {

constexpr size_t k_max_ear_faces = 32; // atoms with more triangles never move
/// An ear moves if its new border is at most this fraction of its old one.
constexpr double k_min_shortening = 0.98;
/// Seam length that must be saved per added mean L2 stretch, with the mesh's area as unit.
constexpr double k_seam_per_stretch = 20;
/// Borders move within so many rings of atoms, or within half as many where that fails, and so on.
constexpr uint32_t k_most_rings = 8, k_fewest_rings = 2;
/// Around atoms that moved so many rings are relaxed, in so many sweeps.
constexpr uint32_t k_relaxed_rings = 3;
constexpr int k_relax_sweeps = 3;
/// L2 stretch up to which atoms are placed on smooth surfaces where they are relaxed afterwards,
/// and where they are not, even if the limit is larger.
constexpr double k_max_moved_stretch = 4, k_max_ear_stretch = 2;

} // namespace

BorderSmoother::BorderSmoother(Flattener& flattener, const Atoms& atoms,
                               const std::vector<float>& hardness)
    : flattener_(flattener), set_(flattener.set), atoms_(atoms), hardness_(hardness),
      faces_of_atoms_(std::make_shared<Buckets>(atoms.of_face, atoms.count)),
      faces_(*faces_of_atoms_), shortest_(set_, atoms, faces_), band_flags_(set_),
      band_(set_, band_flags_) {}

/// Makes another to be used beside the first.
BorderSmoother::BorderSmoother(const BorderSmoother& first, std::unique_ptr<Flattener> flattener)
    : own_flattener_(std::move(flattener)), flattener_(*own_flattener_), set_(first.set_),
      atoms_(first.atoms_), hardness_(first.hardness_), faces_of_atoms_(first.faces_of_atoms_),
      faces_(*faces_of_atoms_), shortest_(set_, atoms_, faces_), band_flags_(set_),
      band_(set_, band_flags_) {}

bool BorderSmoother::run(ParallelFor executor, ProgressMeter& progress) {
    list_pairs();
    if (k_has_threads && executor != nullptr) {
        if (!run_rounds(executor, progress))
            return false;
    } else {
        for (size_t i = 0; i < pairs_.size(); ++i) {
            if (!progress.advance(double(i) / double(pairs_.size())))
                return false;
            smooth_pair(pairs_[i].a, pairs_[i].b);
        }
    }
    regroup();
    return progress.advance(1);
}

/// Lists the pairs of charts that share a border.
void BorderSmoother::list_pairs() {
    pairs_.clear();
    std::vector<uint32_t> next_round(set_.charts.size(), 0), neighbours;
    for (uint32_t a = 0; a < set_.charts.size(); ++a) {
        if (!set_.charts[a].alive)
            continue;
        neighbours.clear();
        for (uint32_t h : set_.charts[a].border) {
            const uint32_t mate = set_.surface.mate[h];
            if (mate != k_none && set_.chart[mate / 3] > a)
                neighbours.push_back(set_.chart[mate / 3]);
        }
        std::sort(neighbours.begin(), neighbours.end());
        neighbours.erase(std::unique(neighbours.begin(), neighbours.end()), neighbours.end());
        for (uint32_t b : neighbours) {
            const uint32_t round = std::max(next_round[a], next_round[b]);
            next_round[a] = next_round[b] = round + 1;
            pairs_.push_back({a, b, round});
        }
    }
}

/// Smooths the pairs round by round, those of a round side by side.
bool BorderSmoother::run_rounds(ParallelFor executor, ProgressMeter& progress) {
    std::stable_sort(pairs_.begin(), pairs_.end(),
                     [](const Pair& a, const Pair& b) { return a.round < b.round; });
    std::vector<BorderSmoother*> others;
    WorkspacePool<BorderSmoother> smoothers(*this);
    const auto another = [&] {
        auto flattener = std::make_unique<Flattener>(set_, flattener_.options);
        std::unique_ptr<BorderSmoother> made(new BorderSmoother(*this, std::move(flattener)));
        others.push_back(made.get());
        return made;
    };
    for (size_t begin = 0, end = 0; begin < pairs_.size(); begin = end) {
        if (!progress.advance(double(begin) / double(pairs_.size())))
            return false;
        while (end < pairs_.size() && pairs_[end].round == pairs_[begin].round)
            ++end;
        parallel_for(executor, end - begin, [&](size_t i) {
            smoothers.lease(another)->smooth_pair(pairs_[begin + i].a, pairs_[begin + i].b);
        });
    }
    for (const BorderSmoother* other : others)
        regrouped_.insert(regrouped_.end(), other->regrouped_.begin(), other->regrouped_.end());
    return true;
}

void BorderSmoother::smooth(uint32_t a, uint32_t b) {
    smooth_pair(a, b);
    regroup();
}

void BorderSmoother::smooth_pair(uint32_t a, uint32_t b) {
    for (uint32_t rings = k_most_rings; rings >= k_fewest_rings; rings /= 2) {
        const std::vector<uint32_t>& atoms = shortest_.find(a, b, rings);
        if (atoms.empty())
            break;
        if (exchange(a, b, atoms))
            return;
    }
    candidates_.clear();
    offer_atoms(a, b);
    offer_atoms(b, a);
    begin(a, b);
    keep_if_good(move_ears(a, b));
}

/// Begins a transaction.
void BorderSmoother::begin(uint32_t a, uint32_t b) {
    undo_.node.clear();
    undo_.uv.clear();
    undo_.glued.clear();
    undo_.chart.clear();
    for (const uint32_t id : {a, b}) {
        Side& side = sides_[id == b];
        side.id = id;
        side.chart.stretch = set_.charts[id].stretch;
    }
}

/// Moves atoms of two charts to the other one, those that can one after the other. False, with
/// nothing changed, if that does not make the border shorter or is not legal.
bool BorderSmoother::exchange(uint32_t a, uint32_t b, std::vector<uint32_t> moving) {
    candidates_ = moving;
    begin(a, b);
    double saved = 0;
    for (size_t before = 0; before != moving.size();) {
        before = moving.size();
        size_t left = 0;
        for (uint32_t atom : moving) {
            const uint32_t to = chart_of(atom) == a ? b : a;
            if (trace_atom(atom) && find_runs(to) && keeps_topology() &&
                place_ear(atom, k_max_moved_stretch)) {
                saved += weight(ear_.facing) - weight(ear_.holding);
                move_ear(atom, to);
            } else {
                moving[left++] = atom;
            }
        }
        moving.resize(left);
    }
    // Atoms that could not follow have left dents.
    saved += move_ears(a, b);
    if (saved > 0) {
        relax_moved();
        return keep_if_good(saved);
    }
    undo();
    return false;
}

double BorderSmoother::weight(const std::vector<uint32_t>& edges) const {
    double sum = 0;
    for (uint32_t h : edges)
        sum += border_weight(set_.surface, h);
    return sum;
}

/// Moves single atoms for as long as each makes the border shorter; returns by how much.
double BorderSmoother::move_ears(uint32_t a, uint32_t b) {
    double saved = 0;
    for (size_t i = 0; i < candidates_.size();
         ++i) { // grows: an ear that leaves may uncover another
        const uint32_t atom = candidates_[i], to = chart_of(atom) == a ? b : a;
        if (find_ear(atom, to) &&
            place_ear(atom, std::min(k_max_ear_stretch, flattener_.options.limit))) {
            saved += weight(ear_.facing) - weight(ear_.holding);
            move_ear(atom, to);
        }
    }
    return saved;
}

/// Ends a transaction that shortened the border by so much: undoes all moves, and returns false, if
/// a chart is not legal or it costs too much stretch.
bool BorderSmoother::keep_if_good(double saved) {
    if (undo_.chart.empty())
        return true;
    if (is_worth(saved)) {
        list_changed_nodes();
        if (stays_legal(sides_[0]) && stays_legal(sides_[1])) {
            for (Side& side : sides_) {
                Chart& chart = set_.charts[side.id];
                chart.border.swap(side.chart.border);
                chart.loop_end.swap(side.chart.loop_end);
                chart.border_length = side.chart.border_length;
                chart.stretch = side.chart.stretch;
                regrouped_.push_back(side.id);
            }
            return true;
        }
    }
    undo();
    return false;
}

/// Whether the seam that the transaction saved is worth the stretch that it costs.
bool BorderSmoother::is_worth(double saved) const {
    double added = 0; // to the mean L2 stretch over the whole mesh
    for (const Side& side : sides_) {
        const StretchSums &before = set_.charts[side.id].stretch, &after = side.chart.stretch;
        added += (after.worst_l2() - 1) * after.area - (before.worst_l2() - 1) * before.area;
    }
    return k_seam_per_stretch * added <= saved * std::sqrt(set_.surface.total_area);
}

/// Lists the nodes that are new or may have moved.
void BorderSmoother::list_changed_nodes() {
    changed_nodes_.clear();
    for (const auto& [node, uv] : undo_.uv)
        if (!has_changed(node)) {
            set_.place[node] = uint32_t(changed_nodes_.size());
            changed_nodes_.push_back(node);
        }
}

bool BorderSmoother::has_changed(uint32_t node) const {
    const uint32_t place = set_.place[node];
    return place < changed_nodes_.size() && changed_nodes_[place] == node;
}

/// Traces the border of a chart of the transaction and returns whether it is legal.
bool BorderSmoother::stays_legal(Side& side) {
    border_ = set_.charts[side.id].border;
    for (const auto& [h, glued] : undo_.glued)
        border_.insert(border_.end(), {h, set_.surface.mate[h]});
    set_.trace_border(side.id, border_, side.chart);
    constexpr double k_far = std::numeric_limits<double>::infinity();
    Vec2 low{k_far, k_far}, high{-k_far, -k_far};
    for (uint32_t h : side.chart.border) {
        const uint32_t from = set_.node[h], to = set_.node[next_corner(h)];
        if (has_changed(from) || has_changed(to))
            for (Vec2 p : {set_.uv[from], set_.uv[to]}) {
                low = {std::min(low.x, p.x), std::min(low.y, p.y)};
                high = {std::max(high.x, p.x), std::max(high.y, p.y)};
            }
    }
    return flattener_.judge_within(side.chart, low, high);
}

/// Appends the atoms of chart `from` along its border with chart `to` to the candidates.
void BorderSmoother::offer_atoms(uint32_t from, uint32_t to) {
    for (uint32_t h : set_.charts[from].border) {
        const uint32_t mate = set_.surface.mate[h], atom = atoms_.of_face[h / 3];
        if (mate != k_none && set_.chart_beside(mate / 3) == to &&
            (candidates_.empty() || candidates_.back() != atom))
            candidates_.push_back(atom);
    }
}

/// Lists the outer half-edges of an atom in ear_.loop. False if it has too many triangles, a
/// degenerate one, or holes.
bool BorderSmoother::trace_atom(uint32_t atom) {
    ear_.loop.clear();
    const uint32_t begin = faces_.begin[atom], end = faces_.begin[atom + 1];
    if (end - begin > k_max_ear_faces)
        return false;
    size_t outer = 0;
    uint32_t first = k_none;
    for (uint32_t i = begin; i < end; ++i) {
        const uint32_t t = faces_.item[i];
        if (set_.surface.degenerate[t])
            return false;
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            if (!set_.surface.false_edge[h]) {
                ++outer;
                first = std::min(first, h);
            }
    }
    uint32_t h = first;
    do {
        ear_.loop.push_back(h);
        h = next_corner(h);
        while (set_.surface.false_edge[h])
            h = next_corner(set_.surface.mate[h]);
    } while (h != first);
    return ear_.loop.size() == outer;
}

/// Whether an atom is an ear that may move to chart `to`; fills ear_ except for `placed`.
bool BorderSmoother::find_ear(uint32_t atom, uint32_t to) {
    if (!trace_atom(atom) || !find_runs(to))
        return false;
    return weight(ear_.holding) <= k_min_shortening * weight(ear_.facing) && keeps_topology();
}

/// Collects the edges of the loop that face chart `to` and those glued to the ear's own chart.
/// False unless both are exactly one run.
bool BorderSmoother::find_runs(uint32_t to) {
    enum Kind { holding, facing, other };
    const std::vector<uint32_t>& loop = ear_.loop;
    const auto kind = [&](size_t i) {
        const uint32_t h = loop[i % loop.size()], mate = set_.surface.mate[h];
        if (set_.glued[h])
            return holding;
        return mate != k_none && set_.chart_beside(mate / 3) == to ? facing : other;
    };
    const auto one_run = [&](Kind wanted, std::vector<uint32_t>& run) {
        run.clear();
        size_t start = loop.size(), runs = 0;
        for (size_t i = 0; i < loop.size(); ++i)
            if (kind(i) != wanted && kind(i + 1) == wanted) {
                start = i + 1;
                ++runs;
            }
        for (size_t i = start; runs == 1 && kind(i) == wanted; ++i)
            run.push_back(loop[i % loop.size()]);
        return runs == 1;
    };
    return one_run(facing, ear_.facing) && one_run(holding, ear_.holding);
}

/// Whether both charts keep their topology if the ear moves: its own chart must not hang together
/// by a single corner of the ear, and the other chart must face the ear with one run of its border.
bool BorderSmoother::keeps_topology() const {
    for (size_t i = 1; i < ear_.holding.size(); ++i)
        if (!is_interior(ear_.holding[i]))
            return false;
    const std::vector<uint32_t>& mate = set_.surface.mate;
    for (size_t i = 1; i < ear_.facing.size(); ++i)
        if (set_.next_border(mate[ear_.facing[i]]) != mate[ear_.facing[i - 1]])
            return false;
    return true;
}

/// Lowers the distortion around the atoms that have moved.
void BorderSmoother::relax_moved() {
    std::vector<uint32_t> nodes;
    for (const auto& [t, chart] : undo_.chart)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            nodes.push_back(set_.node[c]);
    std::sort(nodes.begin(), nodes.end());
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    band_.grow(nodes, k_relaxed_rings);
    PatchCopy& copy = flattener_.copy;
    copy.clear();
    copy.patch.reserve(band_.nodes().size(), band_.faces().size());
    for (size_t i = 0; i < band_.nodes().size(); ++i) {
        const uint32_t n = band_.nodes()[i];
        const bool pinned = band_.rings()[i] >= k_relaxed_rings;
        if (!pinned)
            undo_.uv.push_back({n, set_.uv[n]});
        copy.add_node(n, set_.uv[n], pinned);
    }
    for (uint32_t t : band_.faces())
        copy.patch.add_face(set_.surface.frame[t], copy.vertex(set_.node[3 * t]),
                            copy.vertex(set_.node[3 * t + 1]), copy.vertex(set_.node[3 * t + 2]));
    for (uint32_t t : band_.leads())
        copy.add_guards(t, true);
    copy.patch.relax(k_relax_sweeps);
    count_band(&StretchSums::remove);
    copy.store(set_);
    count_band(&StretchSums::add);
}

/// Adds the triangles of the band to the sums of the transaction, or removes them. The triangles
/// that stand for their polygons answer for all corners of these.
void BorderSmoother::count_band(Count count) {
    for (uint32_t t : band_.faces())
        count_face(t, count);
    for (uint32_t t : band_.leads())
        if (!band_.has_face(t))
            count_face(t, count);
}

void BorderSmoother::count_face(uint32_t t, Count count) {
    (side_of(set_.chart[t]).chart.stretch.*count)(set_.measure_face(t));
}

/// Whether the node of a corner is in the interior of its chart.
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

/// Fills ear_.placed: corners on the run take the other chart's coordinates, the others follow
/// rigidly. False if the ear is flipped or stretched too much there: on hard surfaces it has to fit
/// exactly.
bool BorderSmoother::place_ear(uint32_t atom, double max_smooth_stretch) {
    const Surface& s = set_.surface;
    auto& [nodes, from, to, weight] = run_;
    nodes.clear();
    from.clear();
    to.clear();
    for (uint32_t h : ear_.facing) {
        nodes.push_back(set_.node[h]);
        to.push_back(set_.uv[set_.node[next_corner(s.mate[h])]]);
    }
    nodes.push_back(set_.node[next_corner(ear_.facing.back())]);
    to.push_back(set_.uv[set_.node[s.mate[ear_.facing.back()]]]);
    for (uint32_t n : nodes)
        from.push_back(set_.uv[n]);
    weight.assign(nodes.size(), 1);
    Rigid motion;
    if (fit_rigid(from, to, weight, motion) < 0)
        return false;
    ear_.placed.clear();
    StretchSums sums;
    for (uint32_t i = faces_.begin[atom]; i < faces_.begin[atom + 1]; ++i) {
        const uint32_t t = faces_.item[i];
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
            const auto found = std::find(nodes.begin(), nodes.end(), set_.node[c]);
            ear_.placed.push_back({c, found == nodes.end() ? motion(set_.uv[set_.node[c]])
                                                           : to[size_t(found - nodes.begin())]});
        }
        const PlacedCorner* p = &ear_.placed[ear_.placed.size() - 3];
        sums.add(triangle_stretch(s.frame[t], p[0].uv, p[1].uv, p[2].uv));
    }
    const double max_stretch =
        hardness_[ear_.facing[0] / 3] > 0.5f ? k_hard_stretch : max_smooth_stretch;
    return sums.flipped == 0 && sums.l2() <= max_stretch && corners_stay_convex(atom);
}

/// Whether the polygon's corner triangles are positively oriented at ear_.placed.
bool BorderSmoother::corners_stay_convex(uint32_t atom) const {
    const uint32_t first = faces_.item[faces_.begin[atom]];
    if (set_.polygons == nullptr || set_.polygons->empty() || set_.polygons->lead(first) == k_none)
        return true;
    const auto placed = [&](uint32_t corner) {
        return std::find_if(ear_.placed.begin(), ear_.placed.end(),
                            [&](const PlacedCorner& p) { return p.corner == corner; })
            ->uv;
    };
    for (const Polygons::CornerTriangle& corner : set_.polygons->corner_triangles(first))
        if (!(doubled_area(placed(corner.corner[0]), placed(corner.corner[1]),
                           placed(corner.corner[2])) >
              2 * k_min_guard_determinant * corner.frame.area()))
            return false;
    return true;
}

/// Makes the corners that are now glued around `corner` one node, at p.
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
    for (const std::vector<uint32_t>* side : {&ear_.holding, &ear_.facing})
        for (uint32_t h : *side) // the neighbours of the ear keep their coordinates
            for (uint32_t c : {s.mate[h], next_corner(s.mate[h])})
                ear_.placed.push_back({c, set_.uv[set_.node[c]]});
    for (uint32_t i = faces_.begin[atom]; i < faces_.begin[atom + 1]; ++i)
        count_face(faces_.item[i], &StretchSums::remove);
    for (uint32_t h : ear_.holding)
        set_glued(h, 0);
    for (uint32_t h : ear_.facing)
        set_glued(h, 1);
    for (const PlacedCorner& p : ear_.placed)
        set_node(p.corner, p.uv);
    for (uint32_t i = faces_.begin[atom]; i < faces_.begin[atom + 1]; ++i) {
        undo_.chart.push_back({faces_.item[i], set_.chart[faces_.item[i]]});
        set_.move_to_chart(faces_.item[i], to);
        count_face(faces_.item[i], &StretchSums::add);
    }
    for (uint32_t h : ear_.holding)
        candidates_.push_back(atoms_.of_face[s.mate[h] / 3]);
}

void BorderSmoother::undo() {
    const auto restore = [](const auto& log, auto&& put) {
        for (auto it = log.rbegin(); it != log.rend(); ++it)
            put(it->first, it->second);
    };
    restore(undo_.chart, [&](uint32_t t, uint32_t chart) { set_.move_to_chart(t, chart); });
    restore(undo_.glued, [&](uint32_t h, uint8_t glued) { set_.set_glued(h, glued != 0); });
    restore(undo_.node, [&](uint32_t c, uint32_t node) { set_.node[c] = node; });
    restore(undo_.uv, [&](uint32_t node, Vec2 p) { set_.uv[node] = p; });
}

/// Rebuilds the triangle lists of the charts that have changed from the charts of their triangles,
/// and measures them anew, without the rounding errors of sums that were changed.
void BorderSmoother::regroup() {
    std::sort(regrouped_.begin(), regrouped_.end());
    regrouped_.erase(std::unique(regrouped_.begin(), regrouped_.end()), regrouped_.end());
    std::vector<uint32_t> incoming;
    for (uint32_t c : regrouped_) {
        std::vector<uint32_t>& faces = set_.charts[c].faces;
        size_t stay = 0;
        for (uint32_t t : faces)
            if (set_.chart[t] == c)
                faces[stay++] = t;
            else
                incoming.push_back(t);
        faces.resize(stay);
    }
    for (uint32_t t : incoming)
        set_.charts[set_.chart[t]].faces.push_back(t);
    for (uint32_t c : regrouped_)
        set_.refresh(set_.charts[c]);
    regrouped_.clear();
}

} // namespace tessora::atlas
