#include "atlas/pack/uv_charts.h"

#include "atlas/geometry/border.h"
#include "atlas/geometry/buckets.h"

#include <algorithm>
#include <numeric>

namespace tessora::atlas {
namespace {

Failure check(const UvMesh& mesh) {
    for (size_t i = 0; i < mesh.indices.size; ++i)
        if (mesh.indices[i] >= mesh.uvs.size / 2)
            return {Status::index_out_of_range, uint32_t(i)};
    for (size_t i = 0; i < mesh.uvs.size; ++i)
        if (!std::isfinite(mesh.uvs[i]))
            return {Status::non_finite_uv, uint32_t(i / 2)};
    return {};
}

/// Per triangle, a number that the triangles of a chart share: the caller's, or the root of a
/// forest over UV ids that triangles join.
std::vector<uint32_t> group_triangles(const UvMesh& mesh) {
    const size_t triangles = mesh.indices.size / 3;
    if (mesh.chart.size > 0)
        return {mesh.chart.data, mesh.chart.data + mesh.chart.size};
    std::vector<uint32_t> parent(mesh.uvs.size / 2);
    std::iota(parent.begin(), parent.end(), 0);
    const auto root = [&](uint32_t v) {
        while (parent[v] != v)
            v = parent[v] = parent[parent[v]];
        return v;
    };
    for (size_t t = 0; t < triangles; ++t)
        for (size_t k = 1; k < 3; ++k) {
            const uint32_t a = root(mesh.indices[3 * t]), b = root(mesh.indices[3 * t + k]);
            parent[std::max(a, b)] = std::min(a, b);
        }
    std::vector<uint32_t> group(triangles);
    for (size_t t = 0; t < triangles; ++t)
        group[t] = root(mesh.indices[3 * t]);
    return group;
}

/// Numbers the charts by their first triangle.
void number_charts(const UvMesh& mesh, UvCharts& out) {
    const std::vector<uint32_t> group = group_triangles(mesh);
    std::vector<uint32_t> sorted(group);
    std::sort(sorted.begin(), sorted.end());
    sorted.erase(std::unique(sorted.begin(), sorted.end()), sorted.end());
    std::vector<uint32_t> number(sorted.size(), k_none);
    out.chart.resize(group.size());
    for (uint32_t t = 0; t < group.size(); ++t) {
        const size_t at =
            size_t(std::lower_bound(sorted.begin(), sorted.end(), group[t]) - sorted.begin());
        if (number[at] == k_none) {
            number[at] = uint32_t(out.charts.size());
            out.charts.emplace_back();
            out.charts.back().first_triangle = t;
        }
        out.chart[t] = number[at];
    }
}

/// Joins the corners of a chart that have the same coordinates.
void join_corners(const UvMesh& mesh, double width, double height, UvCharts& out) {
    const auto corners = uint32_t(mesh.indices.size);
    std::vector<uint32_t> order(corners);
    std::iota(order.begin(), order.end(), 0);
    const auto u = [&](uint32_t c) { return mesh.uvs[2 * size_t(mesh.indices[c])]; };
    const auto v = [&](uint32_t c) { return mesh.uvs[2 * size_t(mesh.indices[c]) + 1]; };
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        if (out.chart[a / 3] != out.chart[b / 3])
            return out.chart[a / 3] < out.chart[b / 3];
        if (u(a) < u(b) || u(b) < u(a))
            return u(a) < u(b);
        if (v(a) < v(b) || v(b) < v(a))
            return v(a) < v(b);
        return a < b;
    });
    out.corner_class.resize(corners);
    for (uint32_t i = 0; i < corners; ++i) {
        const uint32_t c = order[i];
        const bool same = i > 0 && out.chart[order[i - 1] / 3] == out.chart[c / 3] &&
                          u(order[i - 1]) == u(c) && v(order[i - 1]) == v(c);
        if (!same)
            out.points.push_back({double(u(c)) * width, double(v(c)) * height});
        out.corner_class[c] = uint32_t(out.points.size() - 1);
        if (i == 0 || out.chart[order[i - 1] / 3] != out.chart[c / 3])
            out.class_begin.push_back(out.corner_class[c]);
    }
    out.class_begin.push_back(uint32_t(out.points.size()));
}

/// Traces the border of one chart at a time and tells whether the chart is its inside.
class BorderTracer {
public:
    explicit BorderTracer(UvCharts& charts) : charts_(charts) {}

    /// Appends the edges of chart c, whose triangles these are.
    void run(UvChart& chart, const uint32_t* begin, const uint32_t* end) {
        gather(begin, end);
        chart.tangled =
            chart.tangled || !cancel() || !walk(chart.mirrored) || !tester_.simple(outline_);
        if (chart.tangled || chart.keep)
            append_triangles(begin, end);
        else
            charts_.edges.insert(charts_.edges.end(), loops_.begin(), loops_.end());
        charts_.edge_begin.push_back(uint32_t(charts_.edges.size() / 2));
    }

private:
    struct Edge {
        uint32_t from, to;
        bool used;
    };

    void append_triangles(const uint32_t* begin, const uint32_t* end) {
        for (const uint32_t* t = begin; t != end; ++t)
            for (uint32_t k = 0; k < 3; ++k)
                charts_.edges.insert(
                    charts_.edges.end(),
                    {charts_.corner_class[3 * *t + k], charts_.corner_class[3 * *t + (k + 1) % 3]});
    }

    /// Lists the edges of the triangles; those of triangles folded to a line, which cancel each
    /// other, apart.
    void gather(const uint32_t* begin, const uint32_t* end) {
        all_.clear();
        folded_.clear();
        for (const uint32_t* t = begin; t != end; ++t) {
            const uint32_t* const c = &charts_.corner_class[3 * size_t(*t)];
            const bool folded = c[0] == c[1] || c[1] == c[2] || c[2] == c[0];
            for (uint32_t k = 0; k < 3; ++k)
                if (c[k] != c[(k + 1) % 3])
                    (folded ? folded_ : all_).push_back({c[k], c[(k + 1) % 3], false});
        }
    }

    static std::pair<uint32_t, uint32_t> ends(const Edge& e) { return std::minmax(e.from, e.to); }

    /// Whether triangles folded to a line lie on edges of others. One that does not may stick out
    /// of the border. Needs all_ in the order of ends().
    bool folded_lie_on_edges() const {
        return std::all_of(folded_.begin(), folded_.end(), [&](const Edge& edge) {
            return std::binary_search(
                all_.begin(), all_.end(), edge,
                [](const Edge& a, const Edge& b) { return ends(a) < ends(b); });
        });
    }

    /// Leaves the edges that no triangle on the other side cancels, ordered by their first point.
    /// False if triangles lie on top of each other along an edge, or a line sticks out.
    bool cancel() {
        std::sort(all_.begin(), all_.end(),
                  [](const Edge& a, const Edge& b) { return ends(a) < ends(b); });
        if (!folded_lie_on_edges())
            return false;
        border_.clear();
        for (size_t i = 0; i < all_.size();) {
            int net = 0;
            const auto [a, b] = ends(all_[i]);
            for (; i < all_.size() && ends(all_[i]) == std::make_pair(a, b); ++i)
                net += all_[i].from == a ? 1 : -1;
            if (net > 1 || net < -1)
                return false;
            if (net != 0)
                border_.push_back(net > 0 ? Edge{a, b, false} : Edge{b, a, false});
        }
        std::sort(border_.begin(), border_.end(), [](const Edge& a, const Edge& b) {
            return a.from != b.from ? a.from < b.from : a.to < b.to;
        });
        return true;
    }

    Vec2 point(uint32_t id, bool mirrored) const {
        const Vec2 p = charts_.points[id];
        return mirrored ? Vec2{-p.x, p.y} : p;
    }

    /// A number that grows with the clockwise angle from direction `a` to direction `b`, 0 to 4.
    static double clockwise(Vec2 a, Vec2 b) {
        const double size = length(a) * length(b);
        const double c = dot(a, b) / size, s = -cross(a, b) / size;
        return s >= 0 ? 1 - c : 3 + c;
    }

    /// The unused border edge that continues a loop arriving from `from` at `at`: where the border
    /// touches itself, the nearest one clockwise, so that loops touch from outside.
    Edge* next_edge(uint32_t from, uint32_t at, bool mirrored) {
        const auto first = std::lower_bound(border_.begin(), border_.end(), at,
                                            [](const Edge& e, uint32_t v) { return e.from < v; });
        Edge* best = nullptr;
        double least = 5;
        for (auto it = first; it != border_.end() && it->from == at; ++it) {
            if (it->used)
                continue;
            const Vec2 here = point(at, mirrored);
            const double angle =
                clockwise(point(from, mirrored) - here, point(it->to, mirrored) - here);
            if (best == nullptr || angle < least) {
                best = &*it;
                least = angle;
            }
        }
        return best;
    }

    /// Joins the border edges to loops. False if there are none or one does not close.
    bool walk(bool mirrored) {
        outline_.clear();
        loops_.clear();
        for (Edge& start : border_) {
            if (start.used)
                continue;
            Edge* edge = &start;
            do {
                outline_.point.push_back(point(edge->from, mirrored));
                loops_.insert(loops_.end(), {edge->from, edge->to});
                edge = next_edge(edge->from, edge->to, mirrored);
                if (edge == nullptr)
                    return false;
                edge->used = true;
            } while (edge != &start);
            outline_.loop_end.push_back(uint32_t(outline_.point.size()));
        }
        return !border_.empty();
    }

    UvCharts& charts_;
    std::vector<Edge> all_, folded_, border_;
    std::vector<uint32_t> loops_; ///< the border edges as pairs of classes, loop by loop
    Outline outline_;
    OutlineTester tester_;
};

/// Adds up areas; a chart with triangles of both orientations is tangled.
void measure(const UvMesh& mesh, UvCharts& out) {
    std::vector<double> positive(out.charts.size(), 0), negative(out.charts.size(), 0);
    for (uint32_t t = 0; t < out.chart.size(); ++t) {
        UvChart& chart = out.charts[out.chart[t]];
        Vec2 p[3];
        for (uint32_t k = 0; k < 3; ++k) {
            p[k] = out.points[out.corner_class[3 * t + k]];
            const bool first = t == chart.first_triangle && k == 0;
            chart.low =
                first ? p[k] : Vec2{std::min(chart.low.x, p[k].x), std::min(chart.low.y, p[k].y)};
            chart.high =
                first ? p[k] : Vec2{std::max(chart.high.x, p[k].x), std::max(chart.high.y, p[k].y)};
        }
        const double doubled = doubled_area(p[0], p[1], p[2]);
        (doubled > 0 ? positive : negative)[out.chart[t]] += std::abs(doubled) / 2;
        if (mesh.area.size > 0)
            chart.space_area += double(mesh.area[t]);
        chart.keep = chart.keep || (mesh.keep.size > 0 && mesh.keep[t] != 0);
    }
    for (size_t c = 0; c < out.charts.size(); ++c) {
        out.charts[c].area = positive[c] + negative[c];
        out.charts[c].mirrored = negative[c] > positive[c];
        out.charts[c].tangled = positive[c] > 0 && negative[c] > 0;
    }
}

} // namespace

Failure find_uv_charts(const UvMesh& mesh, double width, double height, UvCharts& out) {
    const Failure failure = check(mesh);
    if (failure.status != Status::ok)
        return failure;
    out = UvCharts();
    number_charts(mesh, out);
    join_corners(mesh, width, height, out);
    measure(mesh, out);
    const Buckets triangles(out.chart, uint32_t(out.charts.size()));
    out.edge_begin.push_back(0);
    BorderTracer tracer(out);
    for (uint32_t c = 0; c < out.charts.size(); ++c)
        tracer.run(out.charts[c], triangles.item.data() + triangles.begin[c],
                   triangles.item.data() + triangles.begin[c + 1]);
    return {};
}

} // namespace tessora::atlas
