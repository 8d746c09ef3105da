#include "atlas/geometry/box.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Drops points that are well within the quadrilateral of the extreme ones, and so not on the hull
/// (Akl, Toussaint, "A fast convex hull algorithm", 1978).
void drop_inner(std::vector<Vec2>& points) {
    Vec2 left = points[0], right = left, low = left, high = left;
    for (const Vec2 p : points) {
        left = p.x < left.x ? p : left;
        right = p.x > right.x ? p : right;
        low = p.y < low.y ? p : low;
        high = p.y > high.y ? p : high;
    }
    const double margin = 1e-9 * (right.x - left.x) * (high.y - low.y);
    const auto is_inner = [&](Vec2 p) {
        return doubled_area(left, low, p) > margin && doubled_area(low, right, p) > margin &&
               doubled_area(right, high, p) > margin && doubled_area(high, left, p) > margin;
    };
    points.erase(std::remove_if(points.begin(), points.end(), is_inner), points.end());
}

/// Andrew's monotone chain; counter-clockwise.
void convex_hull(std::vector<Vec2>& points, std::vector<Vec2>& hull) {
    drop_inner(points);
    std::sort(points.begin(), points.end(),
              [](Vec2 a, Vec2 b) { return a.x < b.x || (a.x == b.x && a.y < b.y); });
    hull.resize(2 * points.size());
    size_t size = 0;
    for (int side = 0; side < 2; ++side) {
        const size_t start = size;
        for (const Vec2 p : points) {
            while (size >= start + 2 && doubled_area(hull[size - 2], hull[size - 1], p) <= 0)
                --size;
            hull[size++] = p;
        }
        --size;
        std::reverse(points.begin(), points.end());
    }
    hull.resize(size);
}

} // namespace

Box min_area_box(std::vector<Vec2>& points) {
    std::vector<Vec2> hull;
    if (points.size() > 1)
        convex_hull(points, hull);
    const size_t n = hull.size();
    Box best;
    if (n < 2)
        return best;
    double doubled = 0;
    bool first = true;
    size_t right = 1, top = 1, left = 1;
    for (size_t i = 0; i < n; ++i) {
        const Vec2 edge = hull[(i + 1) % n] - hull[i];
        doubled += cross(hull[i] - hull[0], edge);
        const double size = length(edge);
        if (!(size > 0))
            continue;
        const Vec2 u = edge * (1 / size), v{-u.y, u.x};
        const auto advance = [&](size_t& at, Vec2 direction) {
            for (size_t steps = 0; steps < n; ++steps, at = (at + 1) % n)
                if (dot(hull[(at + 1) % n] - hull[at], direction) <= 0)
                    break;
        };
        if (first)
            right = top = left = (i + 1) % n;
        advance(right, u);
        if (first)
            top = right;
        advance(top, v);
        if (first)
            left = top;
        advance(left, u * -1.0);
        const double width = dot(hull[right] - hull[left], u), height = dot(hull[top] - hull[i], v);
        if (first || width * height < best.area())
            best = {std::max(width, height), std::min(width, height), u, 0};
        first = false;
    }
    best.hull = doubled / 2;
    return best;
}

} // namespace tessora::atlas
