#include "atlas/pack/spacing.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

struct Segment {
    Vec2 a, b;
    uint32_t chart;
};

double squared_to_segment(Vec2 p, const Segment& s) {
    const Vec2 d = s.b - s.a;
    const double squared = dot(d, d);
    const double t = squared > 0 ? std::clamp(dot(p - s.a, d) / squared, 0.0, 1.0) : 0;
    const Vec2 gap = p - (s.a + d * t);
    return dot(gap, gap);
}

bool closer(const Segment& s, const Segment& t, double squared_distance) {
    if (doubled_area(s.a, s.b, t.a) * doubled_area(s.a, s.b, t.b) < 0 &&
        doubled_area(t.a, t.b, s.a) * doubled_area(t.a, t.b, s.b) < 0)
        return true;
    return std::min(std::min(squared_to_segment(s.a, t), squared_to_segment(s.b, t)),
                    std::min(squared_to_segment(t.a, s), squared_to_segment(t.b, s))) <
           squared_distance;
}

/// The edges of all kept charts' triangles.
std::vector<Segment> kept_segments(const UvCharts& charts) {
    std::vector<Segment> segments;
    for (uint32_t c = 0; c < charts.charts.size(); ++c)
        for (uint32_t e = charts.edge_begin[c];
             charts.charts[c].keep && e < charts.edge_begin[c + 1]; ++e)
            segments.push_back(
                {charts.points[charts.edges[2 * e]], charts.points[charts.edges[2 * e + 1]], c});
    return segments;
}

/// A segment in a cell of a grid.
struct Entry {
    int64_t x, y;
    uint32_t segment;
    bool same_cell(const Entry& other) const { return x == other.x && y == other.y; }
};

uint32_t collision_of_edges(const std::vector<Segment>& segments, double distance) {
    double total = 0;
    for (const Segment& s : segments)
        total += length(s.b - s.a);
    const double size = std::max(distance, 2 * total / double(segments.size())) + 1e-9;
    std::vector<Entry> entries;
    for (uint32_t i = 0; i < segments.size(); ++i) {
        const Segment& s = segments[i];
        const auto cell = [&](double v) { return int64_t(std::floor(v / size)); };
        const int64_t x1 = cell(std::max(s.a.x, s.b.x) + distance / 2);
        const int64_t y1 = cell(std::max(s.a.y, s.b.y) + distance / 2);
        for (int64_t y = cell(std::min(s.a.y, s.b.y) - distance / 2); y <= y1; ++y)
            for (int64_t x = cell(std::min(s.a.x, s.b.x) - distance / 2); x <= x1; ++x)
                entries.push_back({x, y, i});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return a.x != b.x ? a.x < b.x : a.y != b.y ? a.y < b.y : a.segment < b.segment;
    });
    for (size_t i = 0; i < entries.size(); ++i)
        for (size_t j = i + 1; j < entries.size() && entries[j].same_cell(entries[i]); ++j) {
            const Segment &s = segments[entries[i].segment], &t = segments[entries[j].segment];
            if (s.chart != t.chart && closer(s, t, distance * distance))
                return std::max(s.chart, t.chart);
        }
    return k_none;
}

/// Whether a point lies in a triangle of chart c.
bool covers(const UvCharts& charts, uint32_t c, Vec2 p) {
    for (uint32_t e = charts.edge_begin[c]; e < charts.edge_begin[c + 1]; e += 3) {
        int sides = 0;
        for (uint32_t k = e; k < e + 3; ++k) {
            const double area = doubled_area(charts.points[charts.edges[2 * k]],
                                             charts.points[charts.edges[2 * k + 1]], p);
            sides |= area > 0 ? 1 : area < 0 ? 2 : 3;
        }
        if (sides != 3)
            return true;
    }
    return false;
}

bool within(const UvChart& inner, const UvChart& outer) {
    return inner.low.x >= outer.low.x && inner.low.y >= outer.low.y &&
           inner.high.x <= outer.high.x && inner.high.y <= outer.high.y;
}

} // namespace

uint32_t find_kept_collision(const UvCharts& charts, double distance) {
    const std::vector<Segment> segments = kept_segments(charts);
    if (segments.empty())
        return k_none;
    const uint32_t found = collision_of_edges(segments, std::max(0.0, distance));
    if (found != k_none)
        return found;
    // No edges meet, so a chart lies inside another with all its points or with none.
    for (uint32_t i = 0; i < charts.charts.size(); ++i)
        for (uint32_t j = 0; j < charts.charts.size() && charts.charts[i].keep; ++j)
            if (i != j && charts.charts[j].keep && within(charts.charts[i], charts.charts[j]) &&
                covers(charts, j, charts.points[charts.class_begin[i]]))
                return std::max(i, j);
    return k_none;
}

} // namespace tessora::atlas
