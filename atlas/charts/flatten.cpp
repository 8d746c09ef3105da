#include "atlas/charts/flatten.h"

#include <algorithm>

namespace tessora::atlas {

Flattener::Flattener(ChartSet& charts, const FlattenOptions& o) : set(charts), options(o) {
    local.assign(charts.node.size(), k_none);
    mark_.assign(charts.surface.face_count, 0);
    node_of_vertex_.assign(charts.surface.vertex_count, k_none);
}

void Flattener::load(const Chart& c) {
    patch.clear();
    nodes.clear();
    for (uint32_t t : c.faces) {
        uint32_t v[3];
        for (uint32_t k = 0; k < 3; k++) {
            const uint32_t n = set.node[3 * t + k];
            if (local[n] == k_none) {
                local[n] = patch.add_vertex(set.uv[n], false);
                nodes.push_back(n);
            }
            v[k] = local[n];
        }
        patch.add_face(set.surface.frame[t], v[0], v[1], v[2]);
    }
    for (uint32_t n : nodes)
        local[n] = k_none;
}

void Flattener::store() {
    for (uint32_t i = 0; i < nodes.size(); i++)
        set.uv[nodes[i]] = patch.uv[i];
}

void Flattener::glue_inside(const std::vector<uint32_t>& faces, bool false_edges_only) {
    const Surface& s = set.surface;
    stamp_++;
    for (uint32_t t : faces)
        mark_[t] = stamp_;
    for (uint32_t t : faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; h++)
            if (s.mate[h] != k_none && mark_[s.mate[h] / 3] == stamp_ &&
                (!false_edges_only || s.false_edge[h]))
                set.glued[h] = 1;
    set.rebuild_nodes(faces);
}

void Flattener::unglue_inside(const std::vector<uint32_t>& faces) {
    for (uint32_t t : faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; h++) {
            set.glued[h] = 0;
            set.node[h] = h;
        }
}

bool Flattener::faces_forward(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                              double least_cosine) const {
    const double size = length(normal);
    if (!(size > 0))
        return false;
    const Vec3 n = normal * (1 / size);
    for (const uint32_t* t = begin; t != end; t++)
        if (!set.surface.degenerate[*t] && dot(set.surface.normal[*t], n) < least_cosine)
            return false;
    return true;
}

/// Along a normal; the signs keep the orientation.
void Flattener::project(const std::vector<uint32_t>& faces, Vec3 n) {
    const Surface& s = set.surface;
    n = n * (1 / length(n));
    const double ax = std::fabs(n.x), ay = std::fabs(n.y), az = std::fabs(n.z);
    Vec3 u = ax <= ay && ax <= az ? Vec3{1, 0, 0} : ay <= az ? Vec3{0, 1, 0} : Vec3{0, 0, 1};
    u = u - n * dot(u, n);
    u = u * (1 / length(u));
    const Vec3 v = cross(n, u);
    for (uint32_t t : faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; c++) {
            const Vec3 p = s.position[s.vertex[c]];
            set.uv[set.node[c]] = {dot(p, u), dot(p, v)};
        }
}

void Flattener::set_uv_of_triangle(uint32_t t) {
    const Frame& f = set.surface.frame[t];
    set.uv[set.node[3 * t]] = {0, 0};
    set.uv[set.node[3 * t + 1]] = {f.x1, 0};
    set.uv[set.node[3 * t + 2]] = {f.x2, f.y2};
}

void Flattener::close_slits(const Chart& c, std::vector<std::pair<uint32_t, Vec2>>& moved) {
    for (uint32_t h : c.border) {
        const uint32_t n = set.node[h];
        if (set.surface.degenerate[h / 3])
            continue; // may have the same vertex at two corners
        uint32_t& seen = node_of_vertex_[set.surface.vertex[h]];
        if (seen == k_none || seen == n) {
            seen = n;
            continue;
        }
        const Vec2 gap = set.uv[n] - set.uv[seen];
        const Vec2 edge = set.uv[set.node[next_corner(h)]] - set.uv[n];
        if (dot(gap, gap) < 1e-8 * dot(edge, edge) && dot(gap, gap) > 0) {
            moved.push_back({n, set.uv[n]});
            set.uv[n] = set.uv[seen];
        }
    }
    for (uint32_t h : c.border)
        node_of_vertex_[set.surface.vertex[h]] = k_none;
}

bool Flattener::judge_outline(const Chart& c) {
    set.outline(c, outline_);
    return tester_.simple(outline_);
}

bool Flattener::judge(Chart& c) {
    set.trace_border(c);
    moved_.clear();
    close_slits(c, moved_);
    c.stretch = set.measure(c.faces);
    if (c.stretch.flipped != 0 && !moved_.empty()) {
        for (auto it = moved_.rbegin(); it != moved_.rend(); ++it)
            set.uv[it->first] = it->second;
        c.stretch = set.measure(c.faces);
    }
    return passes(c);
}

bool Flattener::judge_as_it_is(Chart& c) {
    set.refresh(c);
    return passes(c);
}

bool Flattener::passes(const Chart& c) {
    return c.stretch.flipped == 0 && c.stretch.l2() <= options.limit && judge_outline(c);
}

/// Relaxes a chart that has a start; true when it is legal then. In fast mode a start whose L2
/// stretch is at most `enough` goes without the global solve.
bool Flattener::improve(Chart& c, double enough) {
    load(c);
    StretchSums sums = patch.stretch();
    const bool flat = sums.flipped == 0 && sums.l2() <= 1 + 1e-7;
    if (!flat) {
        const bool good_start = !options.thorough && sums.flipped == 0 && sums.l2() <= enough;
        if (!good_start && !patch.arap(options.thorough ? 4 : 2))
            return false;
        if (patch.flipped() != 0)
            patch.untangle(10);
        if (patch.flipped() != 0)
            return false;
        for (int round = 0; round < (options.thorough ? 4 : 2); round++) {
            patch.relax(3);
            const double l2 = patch.stretch().l2();
            if (l2 <= options.limit || l2 > 1 + 2.5 * (options.limit - 1))
                break;
        }
        store();
    }
    return judge(c);
}

bool Flattener::flatten_region(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                               double most) {
    constexpr double k_least_cosine = 0.4; // 66 degrees; what leans more is better cut first
    if (end - begin > 1 && !faces_forward(begin, end, normal, k_least_cosine))
        return false;
    Chart c;
    c.faces.assign(begin, end);
    glue_inside(c.faces, false);
    if (c.faces.size() == 1)
        set_uv_of_triangle(c.faces[0]);
    else
        project(c.faces, normal);
    // Hard surfaces want the exact answer, which vertex by vertex takes too many sweeps.
    const double enough = most < options.limit ? 0 : most;
    if (improve(c, enough) && c.stretch.l2() <= most) {
        set.add_chart(std::move(c));
        return true;
    }
    unglue_inside(c.faces);
    return false;
}

void Flattener::polish(Chart& c, int sweeps) {
    const double before = c.stretch.l2();
    if (before <= 1 + 1e-6)
        return;
    load(c);
    const std::vector<Vec2> original = patch.uv;
    patch.relax(sweeps);
    store();
    if (!judge(c) || c.stretch.l2() > before) {
        patch.uv = original;
        store();
        judge(c);
    }
}

/// A convex outline cannot be flipped inside; holes are filled with a vertex each.
bool Flattener::spread_on_circle(Chart& c) {
    load(c);
    for (uint32_t i = 0; i < nodes.size(); i++)
        local[nodes[i]] = i;
    uint32_t longest = 0;
    for (uint32_t l = 1; l < c.loop_end.size(); l++)
        if (c.loop_end[l] - c.loop_end[l - 1] >
            c.loop_end[longest] - (longest ? c.loop_end[longest - 1] : 0))
            longest = l;
    std::vector<uint32_t> outer;
    for (uint32_t l = 0; l < c.loop_end.size(); l++) {
        const uint32_t begin = l ? c.loop_end[l - 1] : 0;
        const uint32_t hub = l == longest ? 0 : patch.add_vertex({}, false);
        for (uint32_t i = begin; i < c.loop_end[l]; i++) {
            const uint32_t h = c.border[i];
            if (l == longest)
                outer.push_back(local[set.node[h]]);
            else
                patch.add_face({1, 0, 1}, local[set.node[next_corner(h)]], local[set.node[h]], hub);
        }
    }
    for (uint32_t n : nodes)
        local[n] = k_none;
    if (!patch.tutte(outer))
        return false;
    store();
    return true;
}

void Flattener::flatten_polygon(std::vector<uint32_t> faces) {
    Chart c;
    c.faces = std::move(faces);
    glue_inside(c.faces, true);
    if (c.faces.size() == 1) {
        set_uv_of_triangle(c.faces[0]);
        judge(c);
        set.add_chart(std::move(c));
        return;
    }
    Vec3 normal;
    for (uint32_t t : c.faces)
        normal = normal + set.surface.normal[t] * set.surface.frame[t].area();
    const uint32_t* begin = c.faces.data();
    if (faces_forward(begin, begin + c.faces.size(), normal, 0.05)) {
        project(c.faces, normal);
        if (improve(c, 0)) {
            set.add_chart(std::move(c));
            return;
        }
    }
    set.trace_border(c);
    if (spread_on_circle(c)) {
        load(c);
        std::vector<Vec2> safe;
        for (int round = 0; round < 20; round++) { // sweeps as long as the outline stays simple
            safe = patch.uv;
            const double drop = patch.relax(5);
            store();
            if (!judge_outline(c)) {
                patch.uv = safe;
                break;
            }
            if (drop < 1e-5)
                break;
        }
        store();
        judge(c);
        if (c.stretch.flipped == 0 && judge_outline(c)) {
            set.add_chart(std::move(c));
            return;
        }
    }
    // No polygon looks like this: two triangles that share all their corners, say.
    unglue_inside(c.faces);
    for (uint32_t t : c.faces)
        flatten_polygon({t});
}

} // namespace tessora::atlas
