#include "atlas/pack/chains.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Chains the edges of one chart at a time. Arrays over all points are reused and only the entries
/// in use are reset, so the total time is linear in the edges.
class Chainer {
public:
    Chainer(const PackCharts& charts, ChartChains& out)
        : charts_(charts), out_(out), local_(charts.points.size / 2, k_none) {}

    void chart(uint32_t edge_begin, uint32_t edge_end) {
        gather(edge_begin, edge_end);
        link();
        used_.assign(edge_end - edge_begin, 0);
        for (uint32_t v = 0; v < ids_.size(); ++v)
            if (begin_[v + 1] - begin_[v] != 2)
                walk_all(v);
        for (uint32_t v = 0; v < ids_.size(); ++v)
            walk_all(v);
        for (uint32_t id : ids_)
            local_[id] = k_none;
    }

private:
    void gather(uint32_t edge_begin, uint32_t edge_end) {
        ids_.clear();
        ends_.clear();
        for (size_t i = 2 * size_t(edge_begin); i < 2 * size_t(edge_end); ++i) {
            const uint32_t id = charts_.edges[i];
            if (local_[id] == k_none) {
                local_[id] = uint32_t(ids_.size());
                ids_.push_back(id);
            }
            ends_.push_back(local_[id]);
        }
    }

    /// Lists the edge ends at every point; an edge from a point to itself is listed twice.
    void link() {
        begin_.assign(ids_.size() + 1, 0);
        for (uint32_t v : ends_)
            ++begin_[v + 1];
        for (size_t v = 0; v < ids_.size(); ++v)
            begin_[v + 1] += begin_[v];
        fill_.assign(begin_.begin(), begin_.end() - 1);
        at_.resize(ends_.size());
        for (uint32_t i = 0; i < ends_.size(); ++i)
            at_[fill_[ends_[i]]++] = i;
    }

    uint32_t unused_end_at(uint32_t v) const {
        for (uint32_t i = begin_[v]; i < begin_[v + 1]; ++i)
            if (!used_[at_[i] / 2])
                return at_[i];
        return k_none;
    }

    void walk_all(uint32_t start) {
        for (uint32_t end = unused_end_at(start); end != k_none; end = unused_end_at(start)) {
            append(start);
            uint32_t v = start;
            while (end != k_none) {
                used_[end / 2] = 1;
                v = ends_[end ^ 1];
                append(v);
                const bool through = begin_[v + 1] - begin_[v] == 2 && v != start;
                end = through ? unused_end_at(v) : k_none;
            }
            out_.chain_begin.push_back(uint32_t(out_.points.size()));
        }
    }

    void append(uint32_t v) {
        const size_t id = ids_[v];
        out_.points.push_back({charts_.points[2 * id], charts_.points[2 * id + 1]});
    }

    const PackCharts& charts_;
    ChartChains& out_;
    std::vector<uint32_t> local_;      ///< per point: its number in the current chart
    std::vector<uint32_t> ids_, ends_; ///< local point -> point; 2 ends per edge
    /// The edge ends at local point v are at_[begin_[v]] to at_[begin_[v + 1] - 1]; fill_[v] is the
    /// next free entry while they are listed.
    std::vector<uint32_t> begin_, fill_, at_;
    std::vector<uint8_t> used_; ///< per edge of the current chart
};

bool before(Vec2 a, Vec2 b) { return a.x < b.x || (a.x == b.x && a.y < b.y); }

/// Strictly convex, counter-clockwise; sorts `points`.
void convex_hull(std::vector<Vec2>& points, std::vector<Vec2>& hull) {
    std::sort(points.begin(), points.end(), before);
    points.erase(std::unique(points.begin(), points.end()), points.end());
    hull.clear();
    const size_t n = points.size();
    if (n < 3) {
        hull = points;
        return;
    }
    hull.resize(2 * n);
    size_t k = 0;
    const auto push = [&](Vec2 p, size_t floor) {
        while (k >= floor + 2 && doubled_area(hull[k - 2], hull[k - 1], p) <= 0)
            --k;
        hull[k++] = p;
    };
    for (size_t i = 0; i < n; ++i)
        push(points[i], 0);
    const size_t lower = k - 1;
    for (size_t i = n - 1; i-- > 0;)
        push(points[i], lower);
    hull.resize(k - 1);
}

/// Finds the minimum-area box of the hull by rotating calipers.
void fit_box(const std::vector<Vec2>& hull, ChartShape& shape) {
    const size_t n = hull.size();
    if (n < 2)
        return;
    double best = -1;
    size_t far = 0, right = 0, left = 0;
    const auto at = [&](size_t i) { return hull[i % n]; };
    for (size_t i = 0; i < n; ++i) {
        const Vec2 edge = at(i + 1) - hull[i];
        const double size = length(edge);
        shape.hull_perimeter += size;
        if (!(size > 0))
            continue;
        const Vec2 d = edge * (1 / size);
        right = std::max(right, i);
        for (size_t step = 0; step < n && dot(d, at(right + 1) - at(right)) > 0; ++step)
            ++right;
        far = std::max(far, right);
        for (size_t step = 0; step < n && cross(d, at(far + 1) - at(far)) > 0; ++step)
            ++far;
        left = std::max(left, far);
        for (size_t step = 0; step < n && dot(d, at(left + 1) - at(left)) < 0; ++step)
            ++left;
        const double along = dot(d, at(right) - at(left)), across = cross(d, at(far) - hull[i]);
        if (best >= 0 && along * across >= best)
            continue;
        best = along * across;
        const bool flat = along >= across;
        shape.axis = flat ? d : Vec2{-d.y, d.x};
        shape.length = flat ? along : across;
        shape.width = flat ? across : along;
    }
}

/// Sums the areas of groups of `group` edges each.
double enclosed_area(const PackCharts& charts, size_t edge_begin, size_t edge_end, size_t group) {
    const auto point = [&](size_t i) {
        const size_t id = charts.edges[i];
        return Vec2{charts.points[2 * id], charts.points[2 * id + 1]};
    };
    double area = 0;
    for (size_t begin = edge_begin; begin < edge_end; begin += group) {
        const Vec2 origin = point(2 * begin);
        double sum = 0;
        for (size_t e = begin; e < std::min(edge_end, begin + group); ++e)
            sum += cross(point(2 * e) - origin, point(2 * e + 1) - origin);
        area += std::abs(sum) / 2;
    }
    return area;
}

/// A closed chain for every triangle.
void chain_triangles(const PackCharts& charts, size_t edge_begin, size_t edge_end,
                     ChartChains& out) {
    for (size_t e = edge_begin; e < edge_end; e += 3) {
        for (size_t k : {e, e + 1, e + 2, e}) {
            const size_t id = charts.edges[2 * k];
            out.points.push_back({charts.points[2 * id], charts.points[2 * id + 1]});
        }
        out.chain_begin.push_back(uint32_t(out.points.size()));
    }
}

bool near_segment(Vec2 p, Vec2 a, Vec2 b, double squared_distance) {
    const Vec2 d = b - a;
    const double squared = dot(d, d);
    double t = squared > 0 ? dot(p - a, d) / squared : 0;
    t = std::min(1.0, std::max(0.0, t));
    const Vec2 gap = p - (a + d * t);
    return dot(gap, gap) <= squared_distance;
}

} // namespace

ChartChains chain_borders(const PackCharts& charts) {
    ChartChains out;
    out.chain_begin.push_back(0);
    const size_t count = charts.edge_begin.size > 0 ? charts.edge_begin.size - 1 : 0;
    out.shapes.resize(count);
    out.points.reserve(charts.edges.size / 2 + charts.edges.size / 8);
    Chainer chainer(charts, out);
    std::vector<Vec2> points, hull;
    for (size_t c = 0; c < count; ++c) {
        ChartShape& shape = out.shapes[c];
        shape.chain_begin = uint32_t(out.chain_begin.size() - 1);
        const size_t first = out.points.size();
        const PackCharts::Kind kind =
            charts.kind.size > 0 ? charts.kind[c] : PackCharts::Kind::border;
        shape.apart = kind != PackCharts::Kind::border;
        shape.kept = kind == PackCharts::Kind::kept;
        if (shape.kept)
            shape.tile = charts.kept_tile[c];
        if (shape.apart)
            chain_triangles(charts, charts.edge_begin[c], charts.edge_begin[c + 1], out);
        else
            chainer.chart(charts.edge_begin[c], charts.edge_begin[c + 1]);
        shape.chain_end = uint32_t(out.chain_begin.size() - 1);
        points.assign(out.points.begin() + std::ptrdiff_t(first), out.points.end());
        convex_hull(points, hull);
        fit_box(hull, shape);
        shape.area = enclosed_area(charts, charts.edge_begin[c], charts.edge_begin[c + 1],
                                   shape.apart ? 3 : charts.edges.size);
    }
    return out;
}

ChartChains in_order(const ChartChains& chains, const std::vector<uint32_t>& order) {
    ChartChains out;
    out.tolerance = chains.tolerance;
    out.points.reserve(chains.points.size());
    out.chain_begin.reserve(chains.chain_begin.size());
    out.chain_begin.push_back(0);
    out.shapes.reserve(order.size());
    for (uint32_t chart : order) {
        ChartShape shape = chains.shapes[chart];
        const auto begin = chains.chain_begin.begin() + shape.chain_begin;
        const auto end = chains.chain_begin.begin() + shape.chain_end;
        const uint32_t first = uint32_t(out.points.size());
        for (auto chain = begin; chain != end; ++chain)
            out.chain_begin.push_back(first + chain[1] - *begin);
        out.points.insert(out.points.end(), chains.points.begin() + *begin,
                          chains.points.begin() + *end);
        shape.chain_begin = uint32_t(out.chain_begin.size() - 1) - uint32_t(end - begin);
        shape.chain_end = uint32_t(out.chain_begin.size() - 1);
        out.shapes.push_back(shape);
    }
    return out;
}

ChartChains simplify(const ChartChains& chains, double tolerance) {
    constexpr size_t k_longest_skip = 24; // bounds the cost per point
    const double squared = tolerance * tolerance;
    ChartChains out;
    out.shapes = chains.shapes;
    out.tolerance = chains.tolerance + tolerance;
    out.points.reserve(chains.points.size() / 2 + 16);
    out.chain_begin.push_back(0);
    for (size_t chain = 0; chain + 1 < chains.chain_begin.size(); ++chain) {
        const size_t end = chains.chain_begin[chain + 1];
        size_t anchor = chains.chain_begin[chain];
        out.points.push_back(chains.points[anchor]);
        while (anchor + 1 < end) {
            size_t next = anchor + 1;
            for (size_t probe = next + 1; probe < end && probe <= anchor + k_longest_skip;
                 ++probe) {
                bool near = true;
                for (size_t i = anchor + 1; i < probe && near; ++i)
                    near = near_segment(chains.points[i], chains.points[anchor],
                                        chains.points[probe], squared);
                if (!near)
                    break;
                next = probe;
            }
            out.points.push_back(chains.points[next]);
            anchor = next;
        }
        out.chain_begin.push_back(uint32_t(out.points.size()));
    }
    return out;
}

} // namespace tessora::atlas
