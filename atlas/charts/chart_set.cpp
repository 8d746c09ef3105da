#include "atlas/charts/chart_set.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {

ChartSet::ChartSet(const Surface& s) : surface(s) {
    const size_t corners = 3 * size_t(s.face_count);
    glued.assign(corners, 0);
    node.resize(corners);
    for (uint32_t c = 0; c < corners; ++c)
        node[c] = c;
    uv.resize(corners);
    place.resize(corners);
    chart.assign(s.face_count, k_none);
    traced_.assign(corners, 0);
}

void ChartSet::rebuild_nodes(const std::vector<uint32_t>& faces) {
    for (uint32_t t : faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            node[c] = k_none;
    for (uint32_t t : faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            if (node[c] == k_none)
                rename_node(c);
}

/// Begins a chart's border anew.
void ChartSet::clear_border(Chart& c) {
    c.border.clear();
    c.loop_end.clear();
    c.border_length = 0;
}

/// Appends the loop of half-edge h to the border, unless h is not a border or was traced.
void ChartSet::trace_loop(uint32_t h, Chart& c) const {
    if (glued[h] || traced_[h])
        return;
    uint32_t at = h;
    do {
        traced_[at] = 1;
        c.border.push_back(at);
        c.border_length += surface.edge_length(at);
        at = next_border(at);
    } while (at != h);
    c.loop_end.push_back(uint32_t(c.border.size()));
}

void ChartSet::trace_border(Chart& c) const {
    clear_border(c);
    for (uint32_t t : c.faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            trace_loop(h, c);
    for (uint32_t h : c.border)
        traced_[h] = 0;
}

void ChartSet::trace_border(uint32_t id, const std::vector<uint32_t>& candidates, Chart& c) const {
    clear_border(c);
    for (uint32_t h : candidates)
        if (chart[h / 3] == id)
            trace_loop(h, c);
    for (uint32_t h : c.border)
        traced_[h] = 0;
}

StretchSums ChartSet::measure(const std::vector<uint32_t>& faces) const {
    StretchSums sums;
    for (uint32_t t : faces)
        sums.add(measure_face(t));
    return sums;
}

void ChartSet::add_polygon(uint32_t lead, StretchSums& sums) const {
    StretchSums other; // the division of a quad along its other diagonal
    for (const Polygons::CornerTriangle& corner : polygons->corner_triangles(lead)) {
        const Vec2 a = uv[node[corner.corner[0]]], b = uv[node[corner.corner[1]]],
                   c = uv[node[corner.corner[2]]];
        if (!(doubled_area(a, b, c) > 2 * k_min_guard_determinant * corner.frame.area()))
            ++sums.flipped;
        other.add(triangle_stretch(corner.frame, a, b, c));
    }
    const uint32_t half = polygons->other_half(lead);
    if (half == k_none || other.flipped != 0)
        return;
    StretchSums own = sums;
    own.add(triangle_stretch(surface.frame[half], uv[node[3 * half]], uv[node[3 * half + 1]],
                             uv[node[3 * half + 2]]));
    if (own.flipped == 0)
        sums.excess = std::max(0.0, other.inverse / other.area * own.area - own.inverse);
}

StretchSums ChartSet::true_stretch(const Chart& c) const {
    StretchSums sums;
    for (uint32_t t : c.faces) {
        if (surface.degenerate[t])
            continue;
        const Vec3 a = surface.position[surface.vertex[3 * t]];
        const Vec3 e = surface.position[surface.vertex[3 * t + 1]] - a;
        const Vec3 f = surface.position[surface.vertex[3 * t + 2]] - a;
        const double x1 = length(e);
        const Frame frame{x1, dot(e, f) / x1, length(cross(e, f)) / x1};
        sums.add(
            triangle_stretch(frame, uv[node[3 * t]], uv[node[3 * t + 1]], uv[node[3 * t + 2]]));
        if (polygons != nullptr && !polygons->empty() && polygons->lead(t) == t) {
            StretchSums lead = triangle_stretch(surface.frame[t], uv[node[3 * t]],
                                                uv[node[3 * t + 1]], uv[node[3 * t + 2]]);
            add_polygon(t, lead);
            sums.excess += lead.excess;
        }
    }
    return sums;
}

void ChartSet::refresh(Chart& c) const {
    trace_border(c);
    c.stretch = measure(c.faces);
}

void ChartSet::outline(const Chart& c, Outline& outline) const {
    outline.clear();
    for (uint32_t h : c.border)
        outline.point.push_back(uv[node[h]]);
    outline.loop_end = c.loop_end;
}

uint32_t ChartSet::add_chart(Chart&& c) {
    const uint32_t id = uint32_t(charts.size());
    for (uint32_t t : c.faces)
        chart[t] = id;
    charts.push_back(std::move(c));
    return id;
}

double stretch_limit(float max_stretch) {
    if (max_stretch >= 1)
        return std::numeric_limits<double>::infinity();
    // The margin is for rounding the output to single precision; even the limit 0 needs it.
    return std::max(1 / (1 - double(max_stretch)) * (1 - 1e-6), 1 + 1e-6);
}

} // namespace tessora::atlas
