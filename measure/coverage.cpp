#include "measure/coverage.h"

#include "measure/shape.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace measure {
namespace {

/// The sign of a difference of two products: -1, 0, 1, or k_unsure where rounding could change it.
constexpr int k_unsure = 2;
constexpr double k_rounding = 1e-15; ///< more than the relative error of the difference, 4 * 2^-53

int sign_of_difference(double product_a, double product_b) {
    const double difference = product_a - product_b;
    const double error = k_rounding * (std::abs(product_a) + std::abs(product_b));
    if (difference > error)
        return 1;
    if (difference < -error)
        return -1;
    return error == 0.0 ? 0 : k_unsure;
}

/// 1 if `p` lies to the left of the line from `a` to `b`, -1 to the right, 0 on it.
int side_of(Point2 a, Point2 b, Point2 p) {
    const Point2 along = b - a, to = p - a;
    return sign_of_difference(along.x * to.y, along.y * to.x);
}

bool same(Point2 a, Point2 b) { return a.x == b.x && a.y == b.y; }
bool before(Point2 a, Point2 b) { return a.x != b.x ? a.x < b.x : a.y < b.y; }

/// An outline edge from its lexicographically lower end to its higher one. "Above" is to the left
/// of this direction.
struct Edge {
    Point2 low, high;
    bool is_inside_above; ///< the triangle lies above

    bool has_ends_of(const Edge& other) const {
        return same(low, other.low) && same(high, other.high);
    }
};

bool starts_before(const Edge& a, const Edge& b) {
    return !same(a.low, b.low) ? before(a.low, b.low) : before(a.high, b.high);
}

Point2 uv_of(const Layout& layout, uint32_t slot) {
    const uint32_t uv = layout.corner_uv[layout.triangle_corners[slot]];
    // Adding zero turns -0 into +0.
    return {double(layout.uvs[2 * uv]) + 0.0, double(layout.uvs[2 * uv + 1]) + 0.0};
}

/// Orientation of a triangle in UVs, the same whichever corner one begins with: k_unsure for
/// triangles so thin that this might not hold.
int orientation(const Layout& layout, uint32_t triangle) {
    constexpr double k_thin = 1e-14;
    const Point2 origin = uv_of(layout, 3 * triangle);
    const Point2 a = uv_of(layout, 3 * triangle + 1) - origin;
    const Point2 b = uv_of(layout, 3 * triangle + 2) - origin;
    const double left = a.x * b.y, right = a.y * b.x;
    if (std::abs(left - right) > k_thin * (dot(a, a) + dot(b, b)))
        return left > right ? 1 : -1;
    return left == 0.0 && right == 0.0 ? 0 : k_unsure;
}

bool is_every_orientation_certain(const Layout& layout, const ChartTable& charts) {
    for (uint32_t t = 0; t < layout.triangle_count(); ++t)
        if (charts.triangle_chart[t] != k_none && orientation(layout, t) == k_unsure)
            return false;
    return true;
}

/// The outlines, sorted by starts_before, without the edges that cancel: the two sides of a slit,
/// for example.
std::vector<Edge> outline_edges(const Layout& layout, const ChartTable& charts) {
    std::vector<Edge> edges;
    edges.reserve(charts.outline.size());
    for (const uint32_t half_edge : charts.outline) {
        const uint32_t t = half_edge / 3, k = half_edge % 3;
        const Point2 from = uv_of(layout, half_edge), to = uv_of(layout, 3 * t + (k + 1) % 3);
        if (same(from, to))
            continue;
        const bool is_forward = before(from, to);
        const bool is_turned = orientation(layout, t) < 0;
        edges.push_back({is_forward ? from : to, is_forward ? to : from, is_forward != is_turned});
    }
    std::sort(edges.begin(), edges.end(), starts_before);
    size_t kept = 0;
    for (size_t first = 0; first < edges.size();) {
        size_t last = first;
        int above = 0;
        for (; last < edges.size() && edges[last].has_ends_of(edges[first]); ++last)
            above += edges[last].is_inside_above ? 1 : -1;
        const Edge edge = {edges[first].low, edges[first].high, above > 0};
        for (int i = 0; i < std::abs(above); ++i)
            edges[kept++] = edge;
        first = last;
    }
    edges.resize(kept);
    return edges;
}

/// Sweeps a line over the edges from low to high x.
class Sweep {
public:
    explicit Sweep(std::vector<Edge> edges)
        : edges_(std::move(edges)), status_(Below{this}), places_(edges_.size(), status_.end()) {}

    /// True if no two edges meet except at common ends and the winding number is 1 on the inner
    /// side of each, 0 on the outer.
    bool run() {
        std::vector<uint32_t> by_end(edges_.size());
        for (uint32_t i = 0; i < by_end.size(); ++i)
            by_end[i] = i;
        std::sort(by_end.begin(), by_end.end(), [this](uint32_t a, uint32_t b) {
            return before(edges_[a].high, edges_[b].high);
        });
        size_t ended = 0;
        for (uint32_t first = 0; first < edges_.size() && is_proved_;) {
            const Point2 here = edges_[first].low;
            while (is_proved_ && !before(here, edges_[by_end[ended]].high))
                remove(by_end[ended++]);
            uint32_t last = first + 1;
            while (last < edges_.size() && same(edges_[last].low, here))
                ++last;
            if (is_proved_)
                insert(first, last);
            first = last;
        }
        while (is_proved_ && ended < by_end.size())
            remove(by_end[ended++]);
        return is_proved_;
    }

private:
    /// Order along the sweep line. Equal or unsure positions end the proof.
    struct Below {
        Sweep* sweep;
        bool operator()(uint32_t a, uint32_t b) const { return a != b && sweep->is_below(a, b); }
    };
    using Status = std::set<uint32_t, Below>;

    bool is_below(uint32_t a, uint32_t b) {
        const Edge &first = edges_[a], &second = edges_[b];
        int side;
        if (same(first.low, second.low))
            side = side_of(first.low, first.high, second.high);
        else if (before(first.low, second.low))
            side = side_of(first.low, first.high, second.low);
        else
            side = -side_of(second.low, second.high, first.low);
        is_proved_ = is_proved_ && (side == 1 || side == -1);
        return side == 1;
    }

    /// Inserts the edges [first, last), which start in one point.
    void insert(uint32_t first, uint32_t last) {
        for (uint32_t i = first; i < last && is_proved_; ++i)
            places_[i] = status_.insert(i).first;
        if (!is_proved_)
            return;
        auto place = places_[first];
        for (uint32_t i = first + 1; i < last; ++i)
            if (is_below(i, *place))
                place = places_[i];
        // From the lowest of them upwards.
        bool is_inside = place != status_.begin() && edges_[*std::prev(place)].is_inside_above;
        if (place != status_.begin())
            check_apart(*std::prev(place), *place);
        for (uint32_t i = first; i < last && place != status_.end(); ++i, ++place) {
            is_proved_ = is_proved_ && edges_[*place].is_inside_above != is_inside;
            is_inside = edges_[*place].is_inside_above;
            if (std::next(place) != status_.end())
                check_apart(*place, *std::next(place));
        }
    }

    void remove(uint32_t edge) {
        const auto next = status_.erase(places_[edge]);
        if (next != status_.end() && next != status_.begin())
            check_apart(*std::prev(next), *next);
    }

    /// Ends the proof unless two neighbours on the sweep line have at most ends in common.
    void check_apart(uint32_t a, uint32_t b) {
        const Edge &first = edges_[a], &second = edges_[b];
        if (same(first.low, second.low))
            return; // is_below has found different directions
        if (same(first.high, second.high)) {
            const int side = side_of(first.high, first.low, second.low);
            is_proved_ = is_proved_ && (side == 1 || side == -1);
            return;
        }
        if (same(first.high, second.low) || same(second.high, first.low))
            return;
        is_proved_ = is_proved_ && (is_on_one_side(first, second) || is_on_one_side(second, first));
    }

    /// Whether both ends of `other` certainly lie on the same side of the line through `line`.
    static bool is_on_one_side(const Edge& line, const Edge& other) {
        const int side = side_of(line.low, line.high, other.low);
        return (side == 1 || side == -1) && side_of(line.low, line.high, other.high) == side;
    }

    std::vector<Edge> edges_;
    Status status_;
    std::vector<Status::iterator> places_; ///< per edge, its place in status_
    bool is_proved_ = true;
};

} // namespace

bool is_covered_once(const Layout& layout, const ChartTable& charts) {
    return is_every_orientation_certain(layout, charts) &&
           Sweep(outline_edges(layout, charts)).run();
}

} // namespace measure
