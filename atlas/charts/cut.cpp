#include "atlas/charts/cut.h"

#include "atlas/geometry/box.h"

#include <algorithm>

namespace tessora::atlas {

ChartCutter::ChartCutter(Flattener& flattener, const Atoms& atoms, BorderSmoother& smoother)
    : flattener_(flattener), set_(flattener.set), atoms_(atoms), smoother_(smoother) {
    atom_along_.assign(atoms.count, 0.0);
    side_.assign(set_.surface.face_count, 0);
    piece_.assign(set_.surface.face_count, k_none);
}

/// Before and behind the middle of the chart's area along its principal axis; a polygon goes where
/// its own middle lies.
void ChartCutter::choose_sides(const Chart& chart) {
    const auto middle = [&](uint32_t t) {
        const Vec2 sum = set_.uv[set_.node[3 * t]] + set_.uv[set_.node[3 * t + 1]] +
                         set_.uv[set_.node[3 * t + 2]];
        return sum * (1.0 / 3);
    };
    double total = 0, xx = 0, xy = 0, yy = 0;
    Vec2 mean;
    for (uint32_t t : chart.faces) {
        const double area = set_.surface.frame[t].area();
        mean = mean + middle(t) * area;
        total += area;
    }
    mean = mean * (1 / total);
    for (uint32_t t : chart.faces) {
        const Vec2 d = middle(t) - mean;
        const double area = set_.surface.frame[t].area();
        xx += area * d.x * d.x;
        xy += area * d.x * d.y;
        yy += area * d.y * d.y;
    }
    const double half = 0.5 * (xx - yy), radius = std::sqrt(half * half + xy * xy);
    const Vec2 axis = half >= 0 ? Vec2{half + radius, xy} : Vec2{xy, radius - half};
    for (uint32_t t : chart.faces) {
        const double area = set_.surface.frame[t].area();
        atom_along_[atoms_.of_face[t]] += area * dot(middle(t) - mean, axis);
    }
    for (uint32_t t : chart.faces)
        side_[t] = atom_along_[atoms_.of_face[t]] > 0;
    for (uint32_t t : chart.faces)
        atom_along_[atoms_.of_face[t]] = 0;
}

/// Numbers the connected pieces of the two sides; gives their number.
uint32_t ChartCutter::mark_pieces(const Chart& chart) {
    piece_area_.clear();
    piece_side_.clear();
    for (uint32_t t : chart.faces)
        piece_[t] = k_none;
    std::vector<uint32_t> stack;
    for (uint32_t seed : chart.faces) {
        if (piece_[seed] != k_none)
            continue;
        const uint32_t piece = uint32_t(piece_area_.size());
        piece_area_.push_back(0);
        piece_side_.push_back(side_[seed]);
        piece_[seed] = piece;
        stack.push_back(seed);
        while (!stack.empty()) {
            const uint32_t t = stack.back();
            stack.pop_back();
            piece_area_[piece] += set_.surface.frame[t].area();
            for (uint32_t h = 3 * t; h < 3 * t + 3; h++) {
                const uint32_t other = set_.glued[h] ? set_.surface.mate[h] / 3 : t;
                if (piece_[other] == k_none && side_[other] == side_[t]) {
                    piece_[other] = piece;
                    stack.push_back(other);
                }
            }
        }
    }
    return uint32_t(piece_area_.size());
}

/// Lets each side keep its largest piece, until there are two pieces in all.
bool ChartCutter::settle_sides(const Chart& chart) {
    for (int round = 0; round < 4; round++) {
        const uint32_t pieces = mark_pieces(chart);
        if (pieces == 2)
            return piece_side_[0] != piece_side_[1];
        uint32_t largest[2] = {k_none, k_none};
        for (uint32_t p = 0; p < pieces; p++) {
            uint32_t& best = largest[piece_side_[p]];
            if (best == k_none || piece_area_[p] > piece_area_[best])
                best = p;
        }
        for (uint32_t t : chart.faces)
            if (piece_[t] != largest[side_[t]])
                side_[t] = !side_[t];
    }
    return false;
}

void ChartCutter::remember(uint32_t chart) {
    cuts_.push_back({chart, set_.charts[chart], {}});
    Cut& cut = cuts_.back();
    for (uint32_t t : cut.before.faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++)
            cut.corners.push_back({set_.node[c], set_.uv[set_.node[c]], set_.glued[c]});
}

void ChartCutter::split(const Cut& cut) {
    Chart halves[2];
    for (uint32_t t : cut.before.faces)
        halves[side_[t]].faces.push_back(t);
    for (uint32_t t : halves[1].faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; h++)
            if (set_.glued[h] && side_[set_.surface.mate[h] / 3] == 0)
                set_.set_glued(h, false);
    set_.rebuild_nodes(cut.before.faces);
    size_t i = 0;
    for (uint32_t t : cut.before.faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++)
            set_.uv[set_.node[c]] = cut.corners[i++].uv;
    set_.charts[cut.chart] = std::move(halves[0]);
    set_.add_chart(std::move(halves[1]));
}

bool ChartCutter::cut(uint32_t chart) {
    choose_sides(set_.charts[chart]);
    if (!settle_sides(set_.charts[chart]))
        return false;
    remember(chart);
    split(cuts_.back());
    const uint32_t second = uint32_t(set_.charts.size() - 1);
    if (!flattener_.judge_as_it_is(set_.charts[chart]) ||
        !flattener_.judge_as_it_is(set_.charts[second])) {
        undo();
        return false;
    }
    smoother_.smooth(chart, second);
    return true;
}

void ChartCutter::undo() {
    Cut& cut = cuts_.back();
    set_.charts.pop_back();
    size_t i = 0;
    for (uint32_t t : cut.before.faces) {
        set_.chart[t] = cut.chart;
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++, i++) {
            set_.node[c] = cut.corners[i].node;
            set_.uv[cut.corners[i].node] = cut.corners[i].uv;
            set_.glued[c] = cut.corners[i].glued;
        }
    }
    set_.charts[cut.chart] = std::move(cut.before);
    cuts_.pop_back();
}

namespace {

/// The chart that asks for the most room beyond its own area: the square around a long strip, or
/// around what is bent about empty space. k_none when all that matter were tried.
uint32_t greediest(const ChartSet& set, const std::vector<uint8_t>& tried) {
    constexpr double k_least_share = 0.02; // of the whole area; smaller ones set no scale
    uint32_t best = k_none;
    double most = 0;
    Outline outline;
    for (uint32_t a = 0; a < set.charts.size(); a++) {
        const Chart& chart = set.charts[a];
        if (!chart.alive || tried[a] || chart.stretch.area < k_least_share * set.surface.total_area)
            continue;
        set.outline(chart, outline);
        const double side = least_box(outline.point).longer;
        const double waste = side * side - chart.stretch.area;
        if (waste > most) {
            most = waste;
            best = a;
        }
    }
    return best;
}

} // namespace

bool cut_for_packing(Surface& surface, const Options& options, ChartSet& set, double scale,
                     const std::function<double()>& pack) {
    constexpr double k_least_growth = 1.025; // of every length: five percent more coverage a cut
    // A cut may show its worth only after its neighbours', for two strips of one length, say.
    constexpr uint32_t k_most_pending = 3, k_most_cuts = 24, k_most_failures = 2;
    const Atoms atoms = build_atoms(surface);
    const std::vector<uint8_t> hard = find_hard_faces(surface);
    FlattenOptions flattening;
    flattening.limit = stretch_limit(options.max_stretch);
    Flattener flattener(set, flattening);
    BorderSmoother smoother(flattener, atoms, hard);
    ChartCutter cutter(flattener, atoms, smoother);
    std::vector<uint8_t> tried(set.charts.size(), 0);
    size_t alive = 0;
    for (const Chart& chart : set.charts)
        alive += chart.alive;
    uint32_t cuts = 0, pending = 0, failures = 0;
    double wanted = scale;
    bool current = true; // the last layout is that of the charts as they are
    const auto give_up = [&] {
        for (; pending > 0; pending--)
            cutter.undo();
        tried.resize(set.charts.size());
        failures++;
        wanted = scale;
    };
    while (failures < k_most_failures && cuts < k_most_cuts) {
        const bool room = options.max_charts == 0 || alive + cuts + pending < options.max_charts;
        const uint32_t chart = room ? greediest(set, tried) : k_none;
        if (chart == k_none) {
            give_up();
            break;
        }
        tried[chart] = 1;
        if (!cutter.cut(chart))
            continue;
        pending++;
        tried.resize(set.charts.size(), 0);
        wanted *= k_least_growth;
        const double now = pack();
        current = now >= wanted;
        if (current) {
            cutter.accept();
            scale = wanted = now;
            cuts += pending;
            pending = failures = 0;
            tried.assign(set.charts.size(), 0);
        } else if (pending == k_most_pending) {
            give_up();
        }
    }
    return current;
}

} // namespace tessora::atlas
