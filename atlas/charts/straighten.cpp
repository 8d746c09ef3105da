// Charts that are grids of quads, laid out with straight rows and columns.
#include "atlas/charts/cut_lines.h"
#include "atlas/charts/flatten.h"

#include <algorithm>
#include <array>

namespace tessora::atlas {
namespace {

/// Fewer quads make no strip.
constexpr size_t k_least_quads = 4;

/// At the same sampling rate a straight chart may need so much of the room that the chart needs
/// now: a little more, because straight borders lie close to each other; less where that is without
/// stretch, because what is flat keeps its shape unless it is far from straight.
constexpr double k_max_room = 1.05, k_max_room_of_exact = 0.85;

/// The outer half-edges of a polygon of four, in order.
using Quad = std::array<uint32_t, 4>;

/// Finds the polygon of `h`, from `h` on. False if it is not a quad of two triangles.
bool find_quad(const Surface& s, uint32_t h, Quad& quad) {
    int crossed = 0;
    uint32_t at = h;
    for (uint32_t& side : quad) {
        side = at;
        for (at = next_corner(at); s.false_edge[at]; at = next_corner(s.mate[at]))
            if (++crossed > 2)
                return false;
    }
    return at == h && crossed == 2;
}

/// A side of the polygon of triangle t, which must be a triangle or a quad.
uint32_t first_side(const Surface& s, uint32_t t) {
    return s.false_edge[3 * t] ? 3 * t + 1 : 3 * t;
}

/// Numbers the rows and columns of a chart of quads.
class GridFinder {
public:
    /// `mark` is per triangle, and `stamp` a value that it does not have yet.
    GridFinder(const ChartSet& set, PatchCopy& copy, std::vector<uint32_t>& mark, uint32_t stamp)
        : set_(set), copy_(copy), mark_(mark), stamp_(stamp) {}

    /// Gives every node of the chart, in the copy, whole coordinates from 0 on at which each quad
    /// is a square of side 1. False if there are none.
    bool find(const Chart& c) {
        const uint32_t first = first_side(set_.surface, c.faces[0]);
        copy_.clear();
        copy_.add_node(set_.node[first], {0, 0}, false);
        copy_.add_node(set_.node[next_corner(first)], {1, 0}, false);
        for (open_.assign(1, first); !open_.empty();) {
            const uint32_t h = open_.back();
            open_.pop_back();
            if (!add_quad(h))
                return false;
        }
        Vec2 low;
        for (Vec2 p : copy_.patch.uv)
            low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        for (Vec2& p : copy_.patch.uv)
            p = p - low;
        return 2 * quads.size() == c.faces.size();
    }
    /// The coordinates of a half-edge's first node.
    Vec2 place(uint32_t h) const { return copy_.patch.uv[copy_.vertex(set_.node[h])]; }

    std::vector<Quad> quads;

private:
    /// Adds the quad of h, both of whose nodes have coordinates.
    bool add_quad(uint32_t h) {
        Quad quad;
        if (mark_[h / 3] == stamp_)
            return true;
        if (!find_quad(set_.surface, h, quad))
            return false;
        const Vec2 p = place(h), q = place(next_corner(h)), up{p.y - q.y, q.x - p.x};
        const Vec2 corners[4] = {p, q, q + up, p + up};
        for (int k = 0; k < 4; ++k) {
            const uint32_t v = copy_.add_node(set_.node[quad[k]], corners[k], false);
            if (!(copy_.patch.uv[v] == corners[k]))
                return false;
            if (set_.glued[quad[k]])
                open_.push_back(set_.surface.mate[quad[k]]);
            mark_[quad[k] / 3] = stamp_;
        }
        quads.push_back(quad);
        return true;
    }

    const ChartSet& set_;
    PatchCopy& copy_;
    std::vector<uint32_t>& mark_; ///< the stamp for triangles of quads that were added
    const uint32_t stamp_;
    std::vector<uint32_t> open_; ///< sides of quads to be added
};

/// Where the columns of a grid begin and the last one ends, or the rows: each is as wide as its
/// quads are on average.
std::vector<double> spread(const GridFinder& grid, const Surface& s, double Vec2::*axis) {
    std::vector<double> width, sides;
    for (const Quad& quad : grid.quads)
        for (uint32_t h : quad) {
            const double a = grid.place(h).*axis, b = grid.place(next_corner(h)).*axis;
            if (a == b)
                continue;
            const size_t k = size_t(std::min(a, b));
            width.resize(std::max(width.size(), k + 1));
            sides.resize(width.size());
            width[k] += s.edge_length(h);
            ++sides[k];
        }
    std::vector<double> begin{0};
    for (size_t k = 0; k < width.size(); ++k)
        begin.push_back(begin.back() + width[k] / sides[k]);
    return begin;
}

} // namespace

/// The room that a chart is likely to take in a texture at the sampling rate that its triangles
/// have without stretch, per area.
double Flattener::room_per_area(const Chart& c) {
    set.outline(c, outline_);
    const double stretch = c.stretch.worst_l2();
    return likely_room(outline_) / c.stretch.flat_area * stretch * stretch;
}

void Flattener::straighten(Chart& c) {
    Quad first;
    if (c.faces.size() < 2 * k_least_quads ||
        !find_quad(set.surface, first_side(set.surface, c.faces[0]), first))
        return;
    const double max_room =
        room_per_area(c) *
        (c.stretch.worst_l2() <= k_hard_stretch ? k_max_room_of_exact : k_max_room);
    if (max_room < 1) // nothing needs less than its area
        return;
    mark_.resize(set.surface.face_count);
    GridFinder grid(set, copy, mark_, ++stamp_);
    if (!grid.find(c))
        return;
    const std::vector<double> x = spread(grid, set.surface, &Vec2::x),
                              y = spread(grid, set.surface, &Vec2::y);
    std::vector<Vec2>& uv = copy.patch.uv;
    std::vector<Vec2> before;
    for (uint32_t v = 0; v < uv.size(); ++v) {
        before.push_back(set.uv[copy.nodes[v]]);
        uv[v] = {x[size_t(uv[v].x)], y[size_t(uv[v].y)]};
    }
    copy.store(set);
    const double scale = std::sqrt(c.stretch.area / set.measure(c.faces).flat_area);
    for (Vec2& p : uv)
        p = p * scale;
    copy.store(set);
    // An outline on which two quads lie in the same place is not legal.
    if (judge(c) && room_per_area(c) <= max_room)
        return;
    uv = before;
    copy.store(set);
    judge(c);
}

} // namespace tessora::atlas
