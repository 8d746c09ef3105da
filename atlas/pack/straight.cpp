#include "atlas/pack/straight.h"

#include <algorithm>
#include <array>

namespace tessora::atlas {
namespace {

constexpr double k_sine = 0.017452406437283512; // of 1 degree

/// Directions are first counted in this many bins of a quarter turn; border in the fullest bins is
/// looked at closely.
constexpr size_t k_bins = 90, k_candidates = 8;

/// Directions to each side of the best one that are tried, up to a degree away.
constexpr int k_nudges = 4;

struct Edge {
    Vec2 direction; ///< unit length
    double length;
    bool opens; ///< does not continue the edge before it
};

std::vector<Edge> edges_of(const ChartChains& chains, const ChartShape& shape) {
    std::vector<Edge> edges;
    for (uint32_t chain = shape.chain_begin; chain < shape.chain_end; ++chain) {
        bool opens = true;
        for (uint32_t i = chains.chain_begin[chain]; i + 1 < chains.chain_begin[chain + 1]; ++i) {
            const Vec2 d = chains.points[i + 1] - chains.points[i];
            const double size = length(d);
            if (!(size > 0))
                continue;
            edges.push_back({d * (1 / size), size, opens});
            opens = false;
        }
    }
    return edges;
}

/// 1 if an edge is parallel to `axis`, 2 if it is perpendicular, 0 otherwise.
int side_of(const Edge& edge, Vec2 axis) {
    return std::abs(cross(edge.direction, axis)) <= k_sine ? 1
           : std::abs(dot(edge.direction, axis)) <= k_sine ? 2
                                                           : 0;
}

/// Length of the straight border parallel or perpendicular to `axis`; what is a degree off counts
/// half, so that the longest edges come to lie exactly.
double straight_length(const std::vector<Edge>& edges, Vec2 axis, double min_run) {
    double total = 0;
    for (size_t begin = 0, end = 0; begin < edges.size(); begin = end) {
        for (end = begin + 1; end < edges.size() && !edges[end].opens;)
            ++end;
        // A closed chain: begin where a run begins.
        const size_t n = end - begin;
        const auto side = [&](size_t i) { return side_of(edges[begin + i % n], axis); };
        size_t start = 0;
        while (start < n && side(start) == side(start + n - 1))
            ++start;
        double run = 0, exact = 0;
        for (size_t i = start; i < start + n; ++i) {
            const Edge& edge = edges[begin + i % n];
            const int kind = side(i);
            if (kind != 0) {
                const double off =
                    (kind == 1 ? cross(edge.direction, axis) : dot(edge.direction, axis)) / k_sine;
                run += edge.length;
                exact += edge.length * (1 - off * off / 2);
            }
            if (i + 1 == start + n || side(i + 1) != kind) {
                total += run >= min_run ? exact : 0;
                run = exact = 0;
            }
        }
    }
    return total;
}

/// The mean direction, modulo quarter turns, of the edges that are within tolerance of `axis`.
Vec2 mean_direction(const std::vector<Edge>& edges, Vec2 axis) {
    Vec2 sum{0, 0};
    for (const Edge& edge : edges) {
        const int side = side_of(edge, axis);
        if (side == 0)
            continue;
        Vec2 d = edge.direction;
        if (side == 2)
            d = {-d.y, d.x};
        sum = sum + d * (dot(d, axis) < 0 ? -edge.length : edge.length);
    }
    const double size = length(sum);
    return size > 0 ? sum * (1 / size) : axis;
}

/// A direction's bin, growing with the angle modulo a quarter turn.
size_t bin_of(Vec2 d) {
    const double x = std::abs(d.x), y = std::abs(d.y);
    const double turn = d.x * d.y >= 0 ? y / (x + y) : x / (x + y); // 0 to 1 over a quarter turn
    return std::min(k_bins - 1, size_t(turn * double(k_bins)));
}

} // namespace

StraightBorder find_straight_border(const ChartChains& chains, const ChartShape& shape,
                                    double min_run) {
    StraightBorder best;
    const std::vector<Edge> edges = edges_of(chains, shape);
    std::array<double, k_bins> weight{};
    std::array<const Edge*, k_bins> longest{};
    for (const Edge& edge : edges) {
        const size_t bin = bin_of(edge.direction);
        best.perimeter += edge.length;
        weight[bin] += edge.length;
        if (longest[bin] == nullptr || edge.length > longest[bin]->length)
            longest[bin] = &edge;
    }
    std::array<size_t, k_bins> order{};
    for (size_t i = 0; i < k_bins; ++i)
        order[i] = i;
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return weight[a] > weight[b]; });
    const auto consider = [&](Vec2 axis) {
        const double found = straight_length(edges, axis, min_run);
        if (found > best.length) {
            best.length = found;
            best.axis = axis;
        }
    };
    for (size_t i = 0; i < k_candidates && weight[order[i]] >= min_run / 2; ++i) {
        Vec2 axis = longest[order[i]]->direction;
        for (int pass = 0; pass < 2; ++pass) {
            consider(axis);
            axis = mean_direction(edges, axis);
        }
    }
    // Border that bends slightly may have more within tolerance beside its mean direction.
    const Vec2 middle = best.axis;
    for (int i = -k_nudges; best.length > 0 && i <= k_nudges; ++i) {
        const double sine = i * k_sine / k_nudges, cosine = std::sqrt(1 - sine * sine);
        consider(turned(middle, {cosine, sine}));
    }
    return best;
}

void stand_along(const ChartChains& chains, Vec2 axis, ChartShape& shape) {
    Vec2 low{}, high{};
    const uint32_t first = chains.chain_begin[shape.chain_begin];
    for (uint32_t p = first; p < chains.chain_begin[shape.chain_end]; ++p) {
        const Vec2 q{dot(axis, chains.points[p]), cross(axis, chains.points[p])};
        low = p == first ? q : Vec2{std::min(low.x, q.x), std::min(low.y, q.y)};
        high = p == first ? q : Vec2{std::max(high.x, q.x), std::max(high.y, q.y)};
    }
    shape.axis = axis;
    shape.length = high.x - low.x;
    shape.width = high.y - low.y;
}

} // namespace tessora::atlas
