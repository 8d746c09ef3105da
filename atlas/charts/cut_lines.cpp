#include "atlas/charts/cut_lines.h"

#include "atlas/geometry/box.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// Cosines and sines of multiples of 22.5 degrees; the perpendicular directions come on top.
constexpr Vec2 k_directions[] = {{1, 0},
                                 {0.92387953251128675613, 0.38268343236508977173},
                                 {0.70710678118654752440, 0.70710678118654752440},
                                 {0.38268343236508977173, 0.92387953251128675613}};

/// A chart is divided into so many stripes, between which lines are tried.
constexpr int k_stripes = 24;

/// At most so many lines are returned for a chart.
constexpr size_t k_most_lines = 6;

double room_of(const Box& box) { return 0.5 * (box.hull + box.area()); }

/// One half of a convex hull, for points of ascending x: the lower one for side 1, the upper one
/// for side -1.
void push(std::vector<Vec2>& chain, Vec2 p, double side) {
    while (chain.size() >= 2 && side * doubled_area(chain[chain.size() - 2], chain.back(), p) <= 0)
        chain.pop_back();
    chain.push_back(p);
}

/// The room that the points up to each offset are likely to need. Points and offsets ascend.
/// Source: A. M. Andrew, "Another efficient algorithm for convex hulls in two dimensions", 1979,
///         whose chains are those of all points so far.
std::vector<double> rooms_before(const std::vector<Vec2>& points,
                                 const std::vector<double>& offsets) {
    std::vector<double> rooms;
    std::vector<Vec2> lower, upper, hull;
    size_t next = 0;
    for (double offset : offsets) {
        for (; next < points.size() && points[next].x <= offset; ++next) {
            push(lower, points[next], 1);
            push(upper, points[next], -1);
        }
        hull = lower;
        if (upper.size() > 2)
            hull.insert(hull.end(), upper.rbegin() + 1, upper.rend() - 1);
        rooms.push_back(room_of(min_area_box(hull)));
    }
    return rooms;
}

/// The outline as a line sees it that moves along x.
struct Sweep {
    std::vector<Vec2> points; ///< corners, and where the lines cross the border; x ascends
    std::vector<double> offsets;
    std::vector<double> lengths; ///< of the lines within the chart
};

Sweep sweep_along(const Outline& outline, Vec2 axis) {
    Sweep sweep;
    const auto turned = [&](Vec2 p) { return Vec2{dot(axis, p), cross(axis, p)}; };
    for (Vec2 p : outline.point)
        sweep.points.push_back(turned(p));
    const auto by_x = [](Vec2 a, Vec2 b) { return a.x < b.x || (a.x == b.x && a.y < b.y); };
    const auto range = std::minmax_element(sweep.points.begin(), sweep.points.end(), by_x);
    const double low = range.first->x, step = (range.second->x - low) / k_stripes;
    std::vector<std::vector<double>> crossings(k_stripes - 1);
    for (int i = 1; i < k_stripes; ++i)
        sweep.offsets.push_back(low + i * step);
    uint32_t begin = 0;
    for (uint32_t end : outline.loop_end) {
        for (uint32_t i = begin; i < end; ++i) {
            Vec2 a = sweep.points[i], b = sweep.points[i + 1 < end ? i + 1 : begin];
            if (a.x > b.x)
                std::swap(a, b);
            const int first = step > 0 ? std::max(0, int((a.x - low) / step) - 1) : k_stripes;
            for (int k = first; k < k_stripes - 1 && sweep.offsets[size_t(k)] <= b.x; ++k)
                if (a.x < sweep.offsets[size_t(k)])
                    crossings[size_t(k)].push_back(
                        a.y + (b.y - a.y) * (sweep.offsets[size_t(k)] - a.x) / (b.x - a.x));
        }
        begin = end;
    }
    for (size_t k = 0; k < crossings.size(); ++k) {
        std::sort(crossings[k].begin(), crossings[k].end());
        double length = 0;
        for (size_t i = 0; i + 1 < crossings[k].size(); i += 2)
            length += crossings[k][i + 1] - crossings[k][i];
        sweep.lengths.push_back(length);
        if (!crossings[k].empty()) {
            sweep.points.push_back({sweep.offsets[k], crossings[k].front()});
            sweep.points.push_back({sweep.offsets[k], crossings[k].back()});
        }
    }
    std::sort(sweep.points.begin(), sweep.points.end(), by_x);
    return sweep;
}

/// The same, seen from the other end.
void turn_round(Sweep& sweep) {
    std::reverse(sweep.points.begin(), sweep.points.end());
    std::reverse(sweep.offsets.begin(), sweep.offsets.end());
    for (Vec2& p : sweep.points)
        p = p * -1.0;
    for (double& offset : sweep.offsets)
        offset = -offset;
}

} // namespace

double likely_room(const Outline& outline) {
    std::vector<Vec2> points = outline.point;
    return room_of(min_area_box(points));
}

std::vector<CutCandidate> find_cut_lines(const Outline& outline, double least) {
    std::vector<CutCandidate> found;
    if (outline.point.size() < 4)
        return found;
    std::vector<Vec2> points = outline.point;
    const Box box = min_area_box(points);
    const double whole = room_of(box);
    for (Vec2 d : k_directions)
        for (int quarter = 0; quarter < 2; ++quarter, d = {-d.y, d.x}) {
            const Vec2 axis{d.x * box.axis.x - d.y * box.axis.y,
                            d.x * box.axis.y + d.y * box.axis.x};
            Sweep sweep = sweep_along(outline, axis);
            const std::vector<double> before = rooms_before(sweep.points, sweep.offsets);
            const std::vector<double> offsets = sweep.offsets;
            turn_round(sweep);
            const std::vector<double> behind = rooms_before(sweep.points, sweep.offsets);
            for (size_t k = 0; k < offsets.size(); ++k) {
                const double saved = whole - before[k] - behind[offsets.size() - 1 - k];
                if (saved >= least && sweep.lengths[k] > 0)
                    found.push_back({{axis, offsets[k]}, saved, sweep.lengths[k]});
            }
        }
    std::stable_sort(found.begin(), found.end(), [](const CutCandidate& a, const CutCandidate& b) {
        return a.saved * b.length > b.saved * a.length;
    });
    found.resize(std::min(found.size(), k_most_lines));
    return found;
}

} // namespace tessora::atlas
