#include "atlas/charts/flatten.h"

#include "atlas/charts/cut_lines.h"

#include <algorithm>

namespace tessora::atlas {

Flattener::Flattener(ChartSet& charts, const FlattenOptions& o)
    : set(charts), options(o), copy(charts) {
    node_of_vertex_.assign(charts.surface.vertex_count, k_none);
}

void Flattener::load(const Chart& c) {
    copy.clear();
    for (uint32_t t : c.faces) {
        uint32_t v[3];
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t n = set.node[3 * t + k];
            v[k] = copy.add_node(n, set.uv[n], false);
        }
        copy.patch.add_face(set.surface.frame[t], v[0], v[1], v[2]);
    }
    if (set.polygons == nullptr || set.polygons->empty())
        return;
    for (uint32_t t : c.faces)
        if (set.polygons->lead(t) == t)
            copy.add_guards(t, false);
}

void Flattener::glue_inside(const std::vector<uint32_t>& faces, bool false_edges_only) {
    const Surface& s = set.surface;
    mark_.resize(s.face_count); // not for those who glue nothing
    ++stamp_;
    for (uint32_t t : faces)
        mark_[t] = stamp_;
    for (uint32_t t : faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            if (s.mate[h] != k_none && mark_[s.mate[h] / 3] == stamp_ &&
                (!false_edges_only || s.false_edge[h]))
                set.glued[h] = 1;
    set.rebuild_nodes(faces);
}

void Flattener::unglue_inside(const std::vector<uint32_t>& faces) {
    for (uint32_t t : faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
            set.glued[h] = 0;
            set.node[h] = h;
        }
}

/// Whether the cosine between every triangle's normal and `normal` is at least min_cosine.
bool Flattener::faces_forward(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                              double min_cosine) const {
    const double size = length(normal);
    if (!(size > 0))
        return false;
    const Vec3 n = normal * (1 / size);
    for (const uint32_t* t = begin; t != end; ++t)
        if (!set.surface.degenerate[*t] && dot(set.surface.normal[*t], n) < min_cosine)
            return false;
    return true;
}

/// Orthogonal projection along n. The axes are chosen so that triangles facing along n stay
/// positively oriented.
void Flattener::project(const std::vector<uint32_t>& faces, Vec3 n) {
    const Surface& s = set.surface;
    n = n * (1 / length(n));
    const Vec3 u = any_perpendicular(n), v = cross(n, u);
    for (uint32_t t : faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
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
    constexpr double k_squared_gap =
        1e-8; // maximum squared gap, relative to the squared edge length
    for (uint32_t h : c.border) {
        const uint32_t n = set.node[h];
        if (set.surface.degenerate[h / 3])
            continue; // two of its corners may be the same vertex
        uint32_t& seen = node_of_vertex_[set.surface.vertex[h]];
        if (seen == k_none || seen == n) {
            seen = n;
            continue;
        }
        const Vec2 gap = set.uv[n] - set.uv[seen];
        const Vec2 edge = set.uv[set.node[next_corner(h)]] - set.uv[n];
        if (dot(gap, gap) < k_squared_gap * dot(edge, edge) && dot(gap, gap) > 0) {
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
    if (c.stretch.flipped != 0 &&
        !moved_.empty()) { // undo: an open slit is better than a flipped triangle
        for (auto it = moved_.rbegin(); it != moved_.rend(); ++it)
            set.uv[it->first] = it->second;
        c.stretch = set.measure(c.faces);
    }
    return passes(c);
}

bool Flattener::judge_without_moving(Chart& c) {
    set.refresh(c);
    return passes(c);
}

bool Flattener::is_within_limit(const Chart& c) const {
    return c.stretch.flipped == 0 && c.stretch.worst_l2() <= options.limit;
}

bool Flattener::passes(const Chart& c) { return is_within_limit(c) && judge_outline(c); }

bool Flattener::judge_within(const Chart& c, Vec2 low, Vec2 high) {
    if (!is_within_limit(c))
        return false;
    set.outline(c, outline_);
    return tester_.simple_within(outline_, low, high);
}

/// Relaxes a chart from its current coordinates; true if it is legal and meets the terms
/// afterwards.
bool Flattener::improve(Chart& c, const RegionTerms& terms) {
    constexpr double k_hopeless = 2.5; // give up if L2 - 1 exceeds this multiple of the maximum's
    load(c);
    Patch& patch = copy.patch;
    const StretchSums sums = patch.stretch();
    const bool flat = sums.flipped == 0 && sums.l2() <= 1 + 1e-7;
    if (flat)
        return judge(c) && c.stretch.worst_l2() <= terms.max_stretch;
    const int steps = options.thorough ? 4 : 2;
    const bool good_start = terms.may_skip_solver && !options.thorough && sums.flipped == 0 &&
                            sums.l2() <= terms.max_stretch;
    if (!good_start && !patch.arap(steps))
        return false;
    if (patch.flipped() != 0)
        patch.untangle(10);
    if (patch.flipped() != 0)
        return false;
    for (int round = 0; round < steps; ++round) {
        patch.relax(3);
        const double l2 = patch.stretch().l2();
        if (l2 <= terms.max_stretch || l2 > 1 + k_hopeless * (terms.max_stretch - 1))
            break;
    }
    copy.store(set);
    return judge(c) && c.stretch.worst_l2() <= terms.max_stretch;
}

/// Whether a chart is likely to take no more room beyond its own area than that. A chart of so
/// short a border cannot have more in its box.
bool Flattener::is_compact(const Chart& c, double max_void) {
    if (c.border_length * c.border_length < 8 * max_void)
        return true;
    set.outline(c, outline_);
    return likely_room(outline_) <= c.stretch.area + max_void;
}

bool Flattener::flatten_region(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                               const RegionTerms& terms, Chart& c) {
    constexpr double k_min_cosine = 0.4; // of 66 degrees; steeper regions are better split first
    if (end - begin > 1 && !faces_forward(begin, end, normal, k_min_cosine))
        return false;
    c = Chart();
    c.faces.assign(begin, end);
    glue_inside(c.faces, false);
    if (c.faces.size() == 1)
        set_uv_of_triangle(c.faces[0]);
    else
        project(c.faces, normal);
    if (improve(c, terms) && is_compact(c, terms.max_void))
        return true;
    unglue_inside(c.faces);
    return false;
}

void Flattener::polish(Chart& c, int sweeps) {
    const double before = c.stretch.worst_l2();
    if (before <= 1 + 1e-6)
        return;
    load(c);
    const std::vector<Vec2> original = copy.patch.uv;
    copy.patch.relax(sweeps);
    copy.store(set);
    if (!judge(c) || c.stretch.worst_l2() > before) {
        copy.patch.uv = original;
        copy.store(set);
        judge(c);
    }
}

/// Lays a chart out with its longest border loop on a circle. Every other loop is a hole; it gets a
/// temporary vertex in its middle, so that the whole is a disk and no triangle can flip.
bool Flattener::spread_on_circle(const Chart& c) {
    load(c);
    uint32_t longest = 0;
    for (uint32_t l = 1; l < c.loop_end.size(); ++l)
        if (c.loop_end[l] - c.loop_end[l - 1] >
            c.loop_end[longest] - (longest ? c.loop_end[longest - 1] : 0))
            longest = l;
    std::vector<uint32_t> outer;
    for (uint32_t l = 0; l < c.loop_end.size(); ++l) {
        const uint32_t begin = l ? c.loop_end[l - 1] : 0;
        const uint32_t hub = l == longest ? 0 : copy.patch.add_vertex({}, false);
        for (uint32_t i = begin; i < c.loop_end[l]; ++i) {
            const uint32_t h = c.border[i];
            if (l == longest)
                outer.push_back(copy.vertex(set.node[h]));
            else
                copy.patch.add_face({1, 0, 1}, copy.vertex(set.node[next_corner(h)]),
                                    copy.vertex(set.node[h]), hub);
        }
    }
    if (!copy.patch.tutte(outer))
        return false;
    if (copy.patch.flipped() != 0) // polygons that are not convex there
        copy.patch.untangle(10);
    copy.store(set);
    return true;
}

/// Relaxes for as long as the outline stays simple.
void Flattener::relax_while_simple(Chart& c, const std::function<bool()>& goes_on) {
    constexpr int k_rounds = 20, k_sweeps = 5;
    load(c);
    std::vector<Vec2> last_simple;
    for (int round = 0; round < k_rounds && goes_on(); ++round) {
        last_simple = copy.patch.uv;
        const double drop = copy.patch.relax(k_sweeps);
        copy.store(set);
        if (!judge_outline(c)) {
            copy.patch.uv = last_simple;
            break;
        }
        if (drop < 1e-5)
            break;
    }
    copy.store(set);
}

bool Flattener::flatten_by_projection(Chart& c) {
    constexpr double k_min_cosine = 0.05;
    Vec3 normal;
    for (uint32_t t : c.faces)
        normal = normal + set.surface.normal[t] * set.surface.frame[t].area();
    const uint32_t* begin = c.faces.data();
    if (!faces_forward(begin, begin + c.faces.size(), normal, k_min_cosine))
        return false;
    project(c.faces, normal);
    RegionTerms terms;
    terms.max_stretch = options.limit;
    return improve(c, terms);
}

/// The fallback for polygons that cannot be projected. The result has no flipped triangles, but its
/// stretch may be arbitrarily large.
bool Flattener::flatten_on_circle(Chart& c, const std::function<bool()>& goes_on) {
    set.trace_border(c);
    if (!spread_on_circle(c))
        return false;
    relax_while_simple(c, goes_on);
    judge(c);
    return c.stretch.flipped == 0 && judge_outline(c);
}

/// Whether the chart is a piece of a plane, possibly with holes: no handle, at least one border
/// loop. The Euler characteristic of such a piece with n loops is 2 - n.
bool Flattener::is_planar(const Chart& c) const {
    size_t nodes = 0;
    for (uint32_t t : c.faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            nodes += set.node[h] == h;
    const size_t inner_edges = (3 * c.faces.size() - c.border.size()) / 2;
    const long characteristic =
        long(nodes) - long(inner_edges + c.border.size()) + long(c.faces.size());
    return !c.loop_end.empty() && characteristic == 2 - long(c.loop_end.size());
}

bool Flattener::flatten_disk(std::vector<uint32_t> faces, const std::function<bool()>& goes_on,
                             Chart& c) {
    struct Corner {
        uint8_t glued;
        uint32_t node;
        Vec2 uv; ///< of the corner's node
    };
    std::vector<Corner> before;
    for (uint32_t t : faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            before.push_back({set.glued[h], set.node[h], set.uv[set.node[h]]});
    c = Chart();
    c.faces = std::move(faces);
    glue_inside(c.faces, false);
    set.trace_border(c);
    if (is_planar(c) && flatten_on_circle(c, goes_on))
        return true;
    auto corner = before.begin();
    for (uint32_t t : c.faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h, ++corner) {
            set.glued[h] = corner->glued;
            set.node[h] = corner->node;
            set.uv[corner->node] = corner->uv;
        }
    c = Chart();
    return false;
}

bool Flattener::flatten_component(std::vector<uint32_t> faces,
                                  const std::function<bool()>& goes_on) {
    Chart c;
    if (!flatten_disk(std::move(faces), goes_on, c))
        return false;
    for (uint32_t t : c.faces) {
        set.charts[set.chart[t]].alive = false;
        set.charts[set.chart[t]].faces.clear();
    }
    set.add_chart(std::move(c));
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
    if (flatten_by_projection(c) || flatten_on_circle(c, [] { return true; })) {
        set.add_chart(std::move(c));
        return;
    }
    // Not a polygon after all (two triangles that share all three corners, for example): every
    // triangle becomes a chart.
    unglue_inside(c.faces);
    if (set.polygons != nullptr && !set.polygons->empty())
        for (uint32_t t : c.faces)
            set.polygons->forget(t);
    for (uint32_t t : c.faces)
        flatten_polygon({t});
}

} // namespace tessora::atlas
