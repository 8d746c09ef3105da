#include "atlas/pack/congruent.h"

#include "atlas/geometry/rigid.h"

#include <algorithm>
#include <numeric>

namespace tessora::atlas {
namespace {

/// Distance of points that count as the same, over the square root of the chart's area.
constexpr double k_tolerance = 1.0 / 500;

/// A chart in the form that comparisons need: its points and its longest loop.
struct Shape {
    std::vector<Vec2> points; ///< sorted by x
    std::vector<Vec2> loop;   ///< counter-clockwise
    size_t edges = 0;
    double area = 0, perimeter = 0;
};

Shape shape_of(const UvCharts& charts, uint32_t c, double scale, bool turn_over) {
    Shape shape;
    const auto at = [&](uint32_t id) {
        const Vec2 p = charts.points[id] * scale;
        return turn_over ? Vec2{-p.x, p.y} : p;
    };
    for (uint32_t id = charts.class_begin[c]; id < charts.class_begin[c + 1]; ++id)
        shape.points.push_back(at(id));
    std::sort(shape.points.begin(), shape.points.end(), [](Vec2 a, Vec2 b) { return a.x < b.x; });
    const uint32_t begin = charts.edge_begin[c], end = charts.edge_begin[c + 1];
    shape.edges = end - begin;
    std::vector<Vec2> loop;
    for (uint32_t e = begin; e < end; ++e) {
        const uint32_t from = charts.edges[2 * e], to = charts.edges[2 * e + 1];
        loop.push_back(at(from));
        shape.perimeter += length(at(to) - at(from));
        if (e + 1 < end && charts.edges[2 * e + 2] == to)
            continue;
        if (loop.size() > shape.loop.size())
            shape.loop = loop;
        loop.clear();
    }
    shape.area = charts.charts[c].area * scale * scale;
    if (charts.charts[c].mirrored != turn_over)
        std::reverse(shape.loop.begin(), shape.loop.end());
    return shape;
}

/// Whether every point of `shape`, moved, lies near a point of `target`.
bool lands_on(const Shape& shape, const Rigid& motion, const Shape& target, double near) {
    return std::all_of(shape.points.begin(), shape.points.end(), [&](Vec2 p) {
        const Vec2 q = motion(p);
        auto it = std::lower_bound(target.points.begin(), target.points.end(), q.x - near,
                                   [](Vec2 a, double x) { return a.x < x; });
        for (; it != target.points.end() && it->x <= q.x + near; ++it)
            if (length(*it - q) <= near)
                return true;
        return false;
    });
}

/// Finds a motion of `shape` onto `target`.
bool match(const Shape& shape, const Shape& target, Rigid& motion) {
    const size_t n = shape.loop.size();
    const double near = k_tolerance * std::sqrt(target.area);
    if (n != target.loop.size() || shape.points.size() != target.points.size() ||
        shape.edges != target.edges || std::abs(shape.area - target.area) > 0.01 * target.area ||
        std::abs(shape.perimeter - target.perimeter) > 0.01 * target.perimeter)
        return false;
    const auto edge = [n](const Shape& s, size_t i) { return s.loop[(i + 1) % n] - s.loop[i % n]; };
    const std::vector<double> weight(n, 1);
    std::vector<Vec2> to(n);
    for (size_t offset = 0; offset < n; ++offset) {
        bool same = true;
        for (size_t i = 0; i < n && same; ++i) {
            const Vec2 a = edge(shape, i), a1 = edge(shape, i + 1);
            const Vec2 b = edge(target, i + offset), b1 = edge(target, i + offset + 1);
            same = std::abs(length(a) - length(b)) <= 2 * near &&
                   std::abs(length(a + a1) - length(b + b1)) <= 2 * near &&
                   cross(a, a1) * cross(b, b1) >= -16 * near * near * dot(a, a);
        }
        if (!same)
            continue;
        for (size_t i = 0; i < n; ++i)
            to[i] = target.loop[(i + offset) % n];
        const double left = fit_rigid(shape.loop, to, weight, motion);
        if (left >= 0 && left <= near && lands_on(shape, motion, target, near))
            return true;
    }
    return false;
}

} // namespace

std::vector<StackPlace> find_stacks(const UvCharts& charts, const std::vector<double>& scale,
                                    bool mirrored) {
    const auto count = uint32_t(charts.charts.size());
    std::vector<StackPlace> places(count);
    std::vector<uint32_t> order;
    for (uint32_t c = 0; c < count; ++c)
        if (!charts.charts[c].keep && !charts.charts[c].tangled && charts.charts[c].area > 0)
            order.push_back(c);
    const auto points = [&](uint32_t c) {
        return charts.class_begin[c + 1] - charts.class_begin[c];
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](uint32_t a, uint32_t b) { return points(a) < points(b); });
    std::vector<std::pair<uint32_t, Shape>>
        bases; // charts with as many points that lie by themselves
    for (uint32_t c : order) {
        if (!bases.empty() && points(bases[0].first) != points(c))
            bases.clear();
        const Shape plain = shape_of(charts, c, scale[c], false);
        const Shape over = mirrored ? shape_of(charts, c, scale[c], true) : Shape();
        for (const auto& [base, target] : bases) {
            Rigid motion;
            const bool same = match(plain, target, motion);
            if (!same && (!mirrored || !match(over, target, motion)))
                continue;
            places[c] = {base, {motion.cosine, motion.sine, motion.shift, !same}};
            break;
        }
        if (places[c].chart == k_none)
            bases.emplace_back(c, plain);
    }
    return places;
}

} // namespace tessora::atlas
