#include "atlas/charts/shortest_border.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Fraction by which an edge counts less where the surface bends by 45 degrees or more.
constexpr double k_crease_discount = 0.7;
constexpr double k_full_bend = 0.2928932188134524; // 1 - cos(45 degrees)
/// Weights become whole numbers, for exact sums: the heaviest edge has this capacity.
constexpr double k_heaviest = 1 << 20;
/// What it costs to move an atom: decides between borders of equal weight.
constexpr int64_t k_move = 1;
/// A new border must have at most this share of the weight of the old one.
constexpr double k_least_shortening = 0.98;

} // namespace

double border_weight(const Surface& s, uint32_t h) {
    const double bend = 1 - dot(s.normal_of(h / 3), s.normal_of(s.mate[h] / 3));
    const double part = std::sqrt(std::min(1.0, std::max(0.0, bend / k_full_bend)));
    return s.edge_length(h) * (1 - k_crease_discount * part);
}

ShortestBorder::ShortestBorder(const ChartSet& set, const Atoms& atoms, const Buckets& faces)
    : set_(set), atoms_(atoms), faces_(faces), place_(atoms.count, k_none) {}

/// Calls visit(h, atom on the other side) for the half-edges of an atom inside its chart and those
/// between the two charts.
template <class Visit>
void ShortestBorder::for_edges(uint32_t atom, Visit visit) const {
    const uint32_t chart = chart_of(atom), other = pair_[pair_[0] == chart];
    for (uint32_t i = faces_.begin[atom]; i < faces_.begin[atom + 1]; ++i)
        for (uint32_t h = 3 * faces_.item[i]; h < 3 * faces_.item[i] + 3; ++h) {
            const uint32_t mate = set_.surface.mate[h];
            if (mate == k_none || set_.surface.false_edge[h])
                continue;
            if (set_.glued[h] || set_.chart_beside(mate / 3) == other)
                visit(h, atoms_.of_face[mate / 3]);
        }
}

/// Fills the band and decides which of its rings stay.
void ShortestBorder::collect(uint32_t a, uint32_t b, uint32_t rings) {
    for (uint32_t atom : band_)
        place_[atom] = k_none;
    band_.clear();
    ring_.clear();
    pair_[0] = a;
    pair_[1] = b;
    const auto add = [&](uint32_t atom, uint32_t ring) {
        if (place_[atom] != k_none)
            return;
        place_[atom] = uint32_t(band_.size());
        band_.push_back(atom);
        ring_.push_back(ring);
    };
    for (uint32_t h : set_.charts[a].border) {
        const uint32_t mate = set_.surface.mate[h];
        if (mate == k_none || set_.chart_beside(mate / 3) != b)
            continue;
        add(atoms_.of_face[h / 3], 0);
        add(atoms_.of_face[mate / 3], 0);
    }
    uint32_t deepest[2] = {0, 0};
    for (size_t i = 0; i < band_.size(); ++i) {
        uint32_t& depth = deepest[chart_of(band_[i]) == b];
        depth = std::max(depth, ring_[i]);
        if (ring_[i] < rings)
            for_edges(band_[i], [&](uint32_t, uint32_t next) { add(next, ring_[i] + 1); });
    }
    // A chart that the band swallows whole would vanish: its inner half stays.
    for (int side = 0; side < 2; ++side)
        core_[side] = std::min(rings, deepest[side] / 2);
}

bool ShortestBorder::stays(uint32_t atom) const {
    const uint32_t place = place_[atom];
    return place == k_none || ring_[place] >= core_[chart_of(atom) == pair_[1]];
}

/// Fills edges_ with the edges between atoms of the band of which one may move, and heaviest_.
void ShortestBorder::weigh() {
    edges_.clear();
    heaviest_ = 0;
    for (uint32_t i = 0; i < band_.size(); ++i) {
        if (stays(band_[i]))
            continue;
        for_edges(band_[i], [&](uint32_t h, uint32_t other) {
            const bool fixed = stays(other);
            if (!fixed && place_[other] < i)
                return;
            edges_.push_back({i, fixed ? k_none : place_[other], chart_of(other),
                              border_weight(set_.surface, h)});
            heaviest_ = std::max(heaviest_, edges_.back().weight);
        });
    }
}

/// Lists the atoms that the minimum cut puts on the other side, if that is worth it.
void ShortestBorder::cut() {
    MinCut& graph = graph_;
    graph.reset(uint32_t(band_.size()));
    to_end_.assign(2 * band_.size(), 0);
    int64_t before = 0;
    for (const Edge& edge : edges_) {
        const int64_t capacity = int64_t(edge.weight / heaviest_ * k_heaviest);
        if (edge.to == k_none)
            to_end_[2 * edge.from + (edge.chart == pair_[1])] += capacity;
        else
            graph.add_edge(edge.from, edge.to, capacity);
        if (edge.chart != chart_of(band_[edge.from]))
            before += capacity;
    }
    for (uint32_t i = 0; i < band_.size(); ++i) {
        if (stays(band_[i]))
            continue;
        to_end_[2 * i + (chart_of(band_[i]) == pair_[1])] += k_move;
        if (to_end_[2 * i] > 0)
            graph.add_edge(graph.source(), i, to_end_[2 * i]);
        if (to_end_[2 * i + 1] > 0)
            graph.add_edge(i, graph.sink(), to_end_[2 * i + 1]);
    }
    if (double(graph.solve()) > k_least_shortening * double(before))
        return;
    for (uint32_t i = 0; i < band_.size(); ++i)
        if (!stays(band_[i]) && graph.on_source_side(i) != (chart_of(band_[i]) == pair_[0]))
            moving_.push_back(band_[i]);
}

const std::vector<uint32_t>& ShortestBorder::find(uint32_t a, uint32_t b, uint32_t rings) {
    moving_.clear();
    collect(a, b, rings);
    weigh();
    if (heaviest_ > 0)
        cut();
    return moving_;
}

} // namespace tessora::atlas
