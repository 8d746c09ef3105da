#include "measure/charts.h"

#include "measure/shape.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>

namespace measure {
namespace {

class Sets {
public:
    explicit Sets(uint32_t count) : parent_(count) {
        std::iota(parent_.begin(), parent_.end(), 0u);
    }
    uint32_t find(uint32_t a) {
        while (parent_[a] != a)
            a = parent_[a] = parent_[parent_[a]];
        return a;
    }
    void join(uint32_t a, uint32_t b) {
        a = find(a);
        b = find(b);
        parent_[std::max(a, b)] = std::min(a, b);
    }

private:
    std::vector<uint32_t> parent_;
};

/// One triangle's use of an edge; the edge runs from its lower to its higher vertex index.
struct Side {
    uint32_t far_vertex; ///< the higher vertex index
    float uv[4];         ///< u v at the lower vertex, u v at the higher
    uint32_t half_edge;
};

/// The vertices and the UVs of a side, by number, at its lower and its higher end.
struct Ends {
    uint32_t vertex[2], uv[2];
};

/// Shape: per vertex, the lowest vertex with exactly the same position.
std::vector<uint32_t> first_at_same_place(const Layout& layout) {
    std::vector<uint32_t> order(layout.vertex_count());
    std::iota(order.begin(), order.end(), 0u);
    const auto compare = [&layout](uint32_t a, uint32_t b) {
        for (uint32_t axis = 0; axis < 3; ++axis) {
            const float x = layout.positions[3 * a + axis], y = layout.positions[3 * b + axis];
            if (x != y)
                return x < y ? -1 : 1;
        }
        return 0;
    };
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        const int turn = compare(a, b);
        return turn != 0 ? turn < 0 : a < b;
    });
    std::vector<uint32_t> first(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        first[order[i]] =
            i > 0 && compare(order[i - 1], order[i]) == 0 ? first[order[i - 1]] : order[i];
    return first;
}

/// All sides of all edges, grouped by lower vertex and sorted within a group.
class EdgeTable {
public:
    EdgeTable(const Layout& layout, SameUv same)
        : layout_(layout), same_place_(first_at_same_place(layout)), same_(same) {
        begin_.assign(layout.vertex_count() + 1u, 0);
        for_each_half_edge([&](uint32_t low, uint32_t, uint32_t, bool) { ++begin_[low + 1u]; });
        std::partial_sum(begin_.begin(), begin_.end(), begin_.begin());
        sides_.resize(begin_.back());
        std::vector<uint32_t> next(begin_.begin(), begin_.end() - 1);
        for_each_half_edge([&](uint32_t low, uint32_t high, uint32_t half_edge, bool is_reversed) {
            sides_[next[low]++] = make_side(high, half_edge, is_reversed);
        });
        for (uint32_t v = 0; v < layout.vertex_count(); ++v)
            std::sort(sides_.begin() + begin_[v], sides_.begin() + begin_[v + 1u],
                      [this](const Side& a, const Side& b) { return before(a, b); });
    }

    /// Whether the UVs of two sides of one edge are the same at both ends.
    bool agree(const Side& a, const Side& b) const {
        if (!std::equal(a.uv, a.uv + 4, b.uv))
            return false;
        if (same_ == SameUv::coordinates)
            return true;
        const Ends at_a = ends(a), at_b = ends(b);
        for (int end = 0; end < 2; ++end)
            if (at_a.vertex[end] == at_b.vertex[end] && at_a.uv[end] != at_b.uv[end])
                return false;
        return true;
    }

    /// Calls visit(lower vertex, first side, past the last side) for every edge.
    template <class Visit>
    void for_each_edge(Visit visit) const {
        for (uint32_t v = 0; v + 1u < begin_.size(); ++v)
            for (uint32_t first = begin_[v]; first < begin_[v + 1u];) {
                uint32_t last = first + 1;
                while (last < begin_[v + 1u] && sides_[last].far_vertex == sides_[first].far_vertex)
                    ++last;
                visit(v, &sides_[first], &sides_[0] + last);
                first = last;
            }
    }

    /// For every vertex the lowest one at exactly its place.
    const std::vector<uint32_t>& same_place() const { return same_place_; }

private:
    template <class Visit>
    void for_each_half_edge(Visit visit) const {
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (!is_mapped(layout_, t))
                continue;
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t a = vertex(3 * t + k), b = vertex(3 * t + (k + 1) % 3);
                // Do not merge the ends of a zero-length edge: it still connects triangles.
                const bool has_length = same_place_[a] != same_place_[b];
                const uint32_t from = has_length ? same_place_[a] : a;
                const uint32_t to = has_length ? same_place_[b] : b;
                if (from != to)
                    visit(std::min(from, to), std::max(from, to), 3 * t + k, from > to);
            }
        }
    }

    uint32_t vertex(uint32_t slot) const {
        return layout_.corner_vertex[layout_.triangle_corners[slot]];
    }

    /// So that sides that agree stand next to each other.
    bool before(const Side& a, const Side& b) const {
        if (a.far_vertex != b.far_vertex)
            return a.far_vertex < b.far_vertex;
        for (int i = 0; i < 4; ++i)
            if (a.uv[i] != b.uv[i])
                return a.uv[i] < b.uv[i];
        if (same_ == SameUv::entry) {
            const Ends at_a = ends(a), at_b = ends(b);
            for (int end = 0; end < 2; ++end)
                if (at_a.uv[end] != at_b.uv[end])
                    return at_a.uv[end] < at_b.uv[end];
        }
        return a.half_edge < b.half_edge;
    }

    Ends ends(const Side& side) const {
        const uint32_t first = side.half_edge, t = first / 3;
        const uint32_t second = 3 * t + (first % 3 + 1) % 3;
        const uint32_t a = vertex(first), b = vertex(second);
        const bool has_length = same_place_[a] != same_place_[b];
        const bool is_reversed = has_length ? same_place_[a] > same_place_[b] : a > b;
        const uint32_t low = is_reversed ? second : first, high = is_reversed ? first : second;
        const auto uv = [this](uint32_t slot) {
            return layout_.corner_uv[layout_.triangle_corners[slot]];
        };
        return {{vertex(low), vertex(high)}, {uv(low), uv(high)}};
    }

    Side make_side(uint32_t high, uint32_t half_edge, bool is_reversed) const {
        const uint32_t t = half_edge / 3, k = half_edge % 3;
        uint32_t slots[2] = {half_edge, 3 * t + (k + 1) % 3};
        if (is_reversed)
            std::swap(slots[0], slots[1]);
        Side side{high, {}, half_edge};
        for (int end = 0; end < 2; ++end) {
            const uint32_t uv = layout_.corner_uv[layout_.triangle_corners[slots[end]]];
            // Adding zero turns -0 into +0.
            side.uv[2 * end] = layout_.uvs[2 * uv] + 0.0f;
            side.uv[2 * end + 1] = layout_.uvs[2 * uv + 1] + 0.0f;
        }
        return side;
    }

    const Layout& layout_;
    std::vector<uint32_t> same_place_;
    SameUv same_;
    std::vector<uint32_t> begin_;
    std::vector<Side> sides_;
};

/// An edge of a polygon between two places.
struct PlaceEdge {
    uint32_t low, high;
    int turn; ///< 1 if it runs from low to high, else -1
};

/// Whether every edge runs back along another. Sorts them.
bool encloses_nothing(std::vector<PlaceEdge>& edges) {
    std::sort(edges.begin(), edges.end(), [](const PlaceEdge& a, const PlaceEdge& b) {
        return a.low != b.low ? a.low < b.low : a.high < b.high;
    });
    int turns = 0; // of the edges between the same two places so far
    for (size_t i = 0; i < edges.size(); ++i) {
        const bool begins =
            i == 0 || edges[i].low != edges[i - 1].low || edges[i].high != edges[i - 1].high;
        if (begins && turns != 0)
            return false;
        turns += edges[i].turn;
    }
    return turns == 0;
}

/// Shape: per triangle, 1 if its polygon encloses nothing because every side of it runs back along
/// another: a line, a spike, or all corners in one place. `same_place`: per vertex.
std::vector<uint8_t> find_spikes(const Layout& layout, const std::vector<uint32_t>& same_place) {
    const uint32_t count = layout.triangle_count();
    std::vector<uint8_t> is_spike(count, 0);
    std::vector<PlaceEdge> edges;
    const auto place = [&](uint32_t slot) {
        return same_place[layout.corner_vertex[layout.triangle_corners[slot]]];
    };
    for (uint32_t first = 0, last; first < count; first = last) {
        for (last = first + 1;
             last < count && layout.triangle_polygon[last] == layout.triangle_polygon[first];)
            ++last;
        const uint32_t a = place(3 * first), b = place(3 * first + 1), c = place(3 * first + 2);
        if (last == first + 1 && a != b && b != c && c != a)
            continue; // a triangle, as most polygons are
        edges.clear();
        for (uint32_t t = first; t < last; ++t)
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t from = place(3 * t + k), to = place(3 * t + (k + 1) % 3);
                if (from != to)
                    edges.push_back({std::min(from, to), std::max(from, to), from < to ? 1 : -1});
            }
        if (encloses_nothing(edges))
            std::fill(is_spike.begin() + first, is_spike.begin() + last, uint8_t{1});
    }
    return is_spike;
}

class ChartFinder {
public:
    ChartFinder(const Layout& layout, SameUv same)
        : layout_(layout), edges_(layout, same),
          is_spike_(find_spikes(layout, edges_.same_place())), sets_(layout.triangle_count()) {}

    ChartTable find() {
        edges_.for_each_edge([&](uint32_t low, const Side* first, const Side* last) {
            visit_edge(low, first, last);
        });
        join_over_edges_without_length();
        join_points();
        std::sort(table_.outline.begin(), table_.outline.end());
        number_charts();
        return std::move(table_);
    }

private:
    /// Whether triangles meet at the edge whose UVs do not agree, but for spikes: those lie on the
    /// UVs of any of their neighbours.
    bool is_seam(const Side* first, const Side* last) const {
        const auto counts = [this](const Side& side) { return !is_spike_[side.half_edge / 3]; };
        const Side* const one = std::find_if(first, last, counts);
        bool is_shared = false, differs = false;
        for (const Side* side = one; side < last; ++side) {
            is_shared |= counts(*side) && side->half_edge / 3 != one->half_edge / 3;
            differs |= counts(*side) && !edges_.agree(*side, *one);
        }
        return is_shared && differs;
    }

    void visit_edge(uint32_t low, const Side* first, const Side* last) {
        if (is_seam(first, last)) {
            table_.seam_length += edge_length(layout_, low, first->far_vertex);
            ++table_.seam_edges;
        }
        for (const Side* run = first; run < last;) {
            const Side* end = run + 1;
            for (; end < last && edges_.agree(*run, *end); ++end)
                sets_.join(run->half_edge / 3, end->half_edge / 3);
            if (is_outline(run, end))
                for (const Side* side = run; side < end; ++side)
                    table_.outline.push_back(side->half_edge);
            run = end;
        }
    }

    /// Connects triangles of one polygon along a diagonal from a vertex to itself, which occurs if
    /// the polygon visits a vertex twice. Such diagonals are not edges between two vertices, so
    /// they are matched by polygon corner instead.
    void join_over_edges_without_length() {
        std::vector<std::array<uint32_t, 3>>
            edges; // lower corner index, higher corner index, triangle
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (!is_mapped(layout_, t))
                continue;
            const uint32_t* const corners = &layout_.triangle_corners[3 * t];
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t a = corners[k], b = corners[(k + 1) % 3];
                if (layout_.corner_vertex[a] == layout_.corner_vertex[b])
                    edges.push_back({std::min(a, b), std::max(a, b), t});
            }
        }
        std::sort(edges.begin(), edges.end());
        for (size_t i = 1; i < edges.size(); ++i)
            if (std::equal(edges[i].begin(), edges[i].begin() + 2, edges[i - 1].begin()))
                sets_.join(edges[i - 1][2], edges[i][2]);
    }

    /// A triangle whose corners are all in one place has no edge to hang by; it hangs by a corner.
    void join_points() {
        using Key = std::array<uint32_t, 3>; // vertex and the bits of its UV
        const std::vector<uint32_t>& same_place = edges_.same_place();
        const auto key = [&](uint32_t slot) {
            const uint32_t corner = layout_.triangle_corners[slot];
            Key result{same_place[layout_.corner_vertex[corner]], 0, 0};
            for (int axis = 0; axis < 2; ++axis) {
                const float value = layout_.uvs[2 * layout_.corner_uv[corner] + axis] + 0.0f;
                std::memcpy(&result[1 + axis], &value, sizeof value);
            }
            return result;
        };
        std::vector<std::pair<Key, uint32_t>> points; // of each such triangle, its first corner
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (!is_mapped(layout_, t))
                continue;
            const Key first = key(3 * t);
            if (key(3 * t + 1)[0] == first[0] && key(3 * t + 2)[0] == first[0])
                points.push_back({first, t});
        }
        if (points.empty())
            return;
        std::sort(points.begin(), points.end());
        for (uint32_t slot = 0; slot < layout_.triangle_corners.size(); ++slot) {
            if (!is_mapped(layout_, slot / 3))
                continue;
            const Key here = key(slot);
            const auto found = std::lower_bound(points.begin(), points.end(), std::pair{here, 0u});
            if (found != points.end() && found->first == here)
                sets_.join(found->second, slot / 3);
        }
        for (size_t i = 1; i < points.size(); ++i)
            if (points[i].first == points[i - 1].first)
                sets_.join(points[i].second, points[i - 1].second);
    }

    /// False when exactly two triangles lie at a UV edge, on different sides. Those without area in
    /// the texture lie on the edge itself and do not count.
    bool is_outline(const Side* first, const Side* last) const {
        int count = 0, sum = 0;
        for (const Side* side = first; side < last; ++side) {
            const int at = opposite_corner_side(*side);
            count += at != 0;
            sum += at;
        }
        return count != 2 || sum != 0;
    }

    int opposite_corner_side(const Side& side) const {
        const uint32_t t = side.half_edge / 3, k = side.half_edge % 3;
        const uint32_t uv = layout_.corner_uv[layout_.triangle_corners[3 * t + (k + 2) % 3]];
        const Point2 low{side.uv[0], side.uv[1]}, high{side.uv[2], side.uv[3]};
        const Point2 top{layout_.uvs[2 * uv], layout_.uvs[2 * uv + 1]};
        const double turn = cross(high - low, top - low);
        return turn > 0.0 ? 1 : turn < 0.0 ? -1 : 0;
    }

    void number_charts() {
        std::vector<uint32_t> number(layout_.triangle_count(), k_none);
        table_.triangle_chart.assign(layout_.triangle_count(), k_none);
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (!is_mapped(layout_, t))
                continue;
            uint32_t& chart = number[sets_.find(t)];
            if (chart == k_none)
                chart = table_.chart_count++;
            table_.triangle_chart[t] = chart;
        }
    }

    const Layout& layout_;
    EdgeTable edges_;
    const std::vector<uint8_t> is_spike_; ///< per triangle
    Sets sets_;
    ChartTable table_;
};

} // namespace

ChartTable find_charts(const Layout& layout, SameUv same) {
    return ChartFinder(layout, same).find();
}

} // namespace measure
