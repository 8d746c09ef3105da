#include "measure/straight.h"

#include "measure/shape.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace measure {
namespace {

constexpr double k_pi = 3.14159265358979323846;
constexpr double k_min_run = 12.0; // texels
constexpr double k_tolerance = k_pi / 180;
constexpr int k_steps = 360; // over a quarter turn

struct Edge {
    double angle;  // modulo half a turn
    double length; // texels
    bool opens;    // does not continue the edge before it
};

/// Joins border edges to chains, by equal UVs.
std::vector<Edge> chain(const std::vector<std::pair<Point2, Point2>>& sides) {
    std::multimap<std::pair<double, double>, size_t> from;
    for (size_t i = 0; i < sides.size(); ++i)
        from.insert({{sides[i].first.x, sides[i].first.y}, i});
    std::vector<bool> used(sides.size(), false);
    std::vector<Edge> edges;
    for (size_t start = 0; start < sides.size(); ++start) {
        bool opens = true;
        for (size_t i = start; i < sides.size() && !used[i];) {
            used[i] = true;
            const Point2 d = sides[i].second - sides[i].first;
            if (length(d) > 0.0) {
                double angle = std::atan2(d.y, d.x);
                angle -= std::floor(angle / k_pi) * k_pi;
                edges.push_back({angle, length(d), opens});
                opens = false;
            }
            const auto [first, last] = from.equal_range({sides[i].second.x, sides[i].second.y});
            const auto next =
                std::find_if(first, last, [&](const auto& entry) { return !used[entry.second]; });
            if (next == last)
                break;
            i = next->second;
        }
    }
    return edges;
}

/// 1 if an edge is parallel to the direction, 2 if perpendicular, else 0.
int side_of(const Edge& edge, double direction) {
    double off = edge.angle - direction;
    off -= std::round(off / k_pi) * k_pi;
    return std::abs(off) <= k_tolerance                        ? 1
           : std::abs(std::abs(off) - k_pi / 2) <= k_tolerance ? 2
                                                               : 0;
}

double straight_length(const std::vector<Edge>& edges, double direction) {
    double total = 0.0;
    for (size_t begin = 0, end = 0; begin < edges.size(); begin = end) {
        for (end = begin + 1; end < edges.size() && !edges[end].opens;)
            ++end;
        const size_t n = end - begin;
        std::vector<int> side(n);
        for (size_t i = 0; i < n; ++i)
            side[i] = side_of(edges[begin + i], direction);
        size_t start = 0;
        while (start < n && side[start] == side[(start + n - 1) % n])
            ++start;
        double run = 0.0;
        for (size_t i = start; i < start + n; ++i) {
            run += side[i % n] ? edges[begin + i % n].length : 0.0;
            if (i + 1 == start + n || side[(i + 1) % n] != side[i % n]) {
                total += run >= k_min_run ? run : 0.0;
                run = 0.0;
            }
        }
    }
    return total;
}

} // namespace

Straightness straightness(const Layout& layout, const Texture& texture,
                          const std::vector<uint32_t>& triangle_chart,
                          const std::vector<uint32_t>& outline) {
    std::map<uint32_t, std::vector<std::pair<Point2, Point2>>> sides;
    for (const uint32_t edge : outline) {
        const Triangle2 t = texel_triangle(layout, texture, edge / 3);
        sides[triangle_chart[edge / 3]].push_back({t.p[edge % 3], t.p[(edge % 3 + 1) % 3]});
    }
    Straightness result;
    for (const auto& [chart, border] : sides) {
        const std::vector<Edge> edges = chain(border);
        result.parallel += straight_length(edges, 0.0);
        double best = 0.0;
        for (int i = 0; i < k_steps; ++i)
            best = std::max(best, straight_length(edges, i * (k_pi / 2) / k_steps));
        result.best += best;
    }
    return result;
}

} // namespace measure
