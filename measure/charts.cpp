#include "measure/charts.h"

#include "measure/shape.h"

#include <algorithm>
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

/// One side of an edge, seen from its lower vertex.
struct Side {
    uint32_t far_vertex; ///< the higher of the two vertices
    float uv[4];         ///< at the lower vertex, at the higher vertex
    uint32_t half_edge;
};

bool same_uvs(const Side& a, const Side& b) { return std::equal(a.uv, a.uv + 4, b.uv); }

bool before(const Side& a, const Side& b) {
    if (a.far_vertex != b.far_vertex)
        return a.far_vertex < b.far_vertex;
    for (int i = 0; i < 4; ++i)
        if (a.uv[i] != b.uv[i])
            return a.uv[i] < b.uv[i];
    return a.half_edge < b.half_edge;
}

/// All sides of all edges, grouped by the lower vertex and sorted inside a group.
class EdgeTable {
public:
    explicit EdgeTable(const Layout& layout) : layout_(layout) {
        begin_.assign(layout.vertex_count() + 1u, 0);
        for_each_half_edge([&](uint32_t low, uint32_t, uint32_t) { ++begin_[low + 1u]; });
        std::partial_sum(begin_.begin(), begin_.end(), begin_.begin());
        sides_.resize(begin_.back());
        std::vector<uint32_t> next(begin_.begin(), begin_.end() - 1);
        for_each_half_edge([&](uint32_t low, uint32_t high, uint32_t half_edge) {
            sides_[next[low]++] = make_side(low, high, half_edge);
        });
        for (uint32_t v = 0; v < layout.vertex_count(); ++v)
            std::sort(sides_.begin() + begin_[v], sides_.begin() + begin_[v + 1u], before);
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

private:
    template <class Visit>
    void for_each_half_edge(Visit visit) const {
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (!is_mapped(layout_, t))
                continue;
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t a = vertex(3 * t + k), b = vertex(3 * t + (k + 1) % 3);
                if (a != b)
                    visit(std::min(a, b), std::max(a, b), 3 * t + k);
            }
        }
    }

    uint32_t vertex(uint32_t slot) const {
        return layout_.corner_vertex[layout_.triangle_corners[slot]];
    }

    Side make_side(uint32_t low, uint32_t high, uint32_t half_edge) const {
        const uint32_t t = half_edge / 3, k = half_edge % 3;
        uint32_t slots[2] = {half_edge, 3 * t + (k + 1) % 3};
        if (vertex(slots[0]) != low)
            std::swap(slots[0], slots[1]);
        Side side{high, {}, half_edge};
        for (int end = 0; end < 2; ++end) {
            const uint32_t uv = layout_.corner_uv[layout_.triangle_corners[slots[end]]];
            // Adding zero makes -0 and 0 one value.
            side.uv[2 * end] = layout_.uvs[2 * uv] + 0.0f;
            side.uv[2 * end + 1] = layout_.uvs[2 * uv + 1] + 0.0f;
        }
        return side;
    }

    const Layout& layout_;
    std::vector<uint32_t> begin_;
    std::vector<Side> sides_;
};

class ChartFinder {
public:
    explicit ChartFinder(const Layout& layout)
        : layout_(layout), edges_(layout), sets_(layout.triangle_count()) {}

    ChartTable find() {
        edges_.for_each_edge([&](uint32_t low, const Side* first, const Side* last) {
            visit_edge(low, first, last);
        });
        std::sort(table_.outline.begin(), table_.outline.end());
        number_charts();
        return std::move(table_);
    }

private:
    void visit_edge(uint32_t low, const Side* first, const Side* last) {
        if (last - first > 1 && !same_uvs(*first, last[-1])) {
            table_.seam_length += edge_length(layout_, low, first->far_vertex);
            ++table_.seam_edges;
        }
        for (const Side* run = first; run < last;) {
            const Side* end = run + 1;
            for (; end < last && same_uvs(*run, *end); ++end)
                sets_.join(run->half_edge / 3, end->half_edge / 3);
            if (end - run != 2 || !lies_apart(run[0], run[1]))
                for (const Side* side = run; side < end; ++side)
                    table_.outline.push_back(side->half_edge);
            run = end;
        }
    }

    /// True when the triangles at the two sides of one UV edge lie on different sides of it.
    bool lies_apart(const Side& a, const Side& b) const {
        return opposite_corner_side(a) * opposite_corner_side(b) < 0;
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
    Sets sets_;
    ChartTable table_;
};

} // namespace

ChartTable find_charts(const Layout& layout) { return ChartFinder(layout).find(); }

} // namespace measure
