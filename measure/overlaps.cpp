#include "measure/overlaps.h"

#include "measure/box_tree.h"
#include "measure/coverage.h"
#include "measure/fans.h"
#include "measure/shape.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace measure {
namespace {

/// A counter-clockwise triangle with edge normals for separating axis tests.
struct Prepared {
    Triangle2 corners;
    Point2 inward[3]; ///< unit normals of the edges
    uint32_t triangle = 0;
    uint32_t chart = 0;
    uint32_t fan = k_none; ///< pairs within the same fan are counted separately

    /// The maximum distance of `other`'s corners from the line of edge k, positive on the inside.
    double reach(int k, const Prepared& other) const {
        double deepest = dot(inward[k], other.corners.p[0] - corners.p[k]);
        deepest = std::max(deepest, dot(inward[k], other.corners.p[1] - corners.p[k]));
        return std::max(deepest, dot(inward[k], other.corners.p[2] - corners.p[k]));
    }
    bool parts_from(const Prepared& other, double depth) const {
        return reach(0, other) <= depth || reach(1, other) <= depth || reach(2, other) <= depth;
    }
};

/// A triangle's extents along eight directions (a discrete oriented polytope). Rejects thin
/// triangles around a common corner far more often than axis-aligned boxes do.
struct Extents {
    double low[8], high[8];

    explicit Extents(const Triangle2& corners) {
        constexpr Point2 directions[8] = {{1, 0}, {0, 1}, {1, 1},  {1, -1},
                                          {2, 1}, {1, 2}, {2, -1}, {1, -2}};
        for (int i = 0; i < 8; ++i)
            std::tie(low[i], high[i]) =
                std::minmax({dot(directions[i], corners.p[0]), dot(directions[i], corners.p[1]),
                             dot(directions[i], corners.p[2])});
    }
    /// False if one of the directions separates the two extents, touching included.
    bool meet(const Extents& other) const {
        for (int i = 0; i < 8; ++i)
            if (low[i] >= other.high[i] || other.low[i] >= high[i])
                return false;
        return true;
    }
};

Prepared prepare(const Triangle2& corners, uint32_t triangle, uint32_t chart) {
    Prepared result;
    result.corners = corners;
    result.triangle = triangle;
    result.chart = chart;
    if (corners.cross_area() < 0.0)
        std::swap(result.corners.p[1], result.corners.p[2]);
    for (int k = 0; k < 3; ++k) {
        const Point2 edge = result.corners.p[(k + 1) % 3] - result.corners.p[k];
        const double size = length(edge);
        result.inward[k] = {-edge.y / size, edge.x / size};
    }
    return result;
}

class OverlapSearch {
public:
    OverlapSearch(const Layout& layout, const Texture& texture, const ChartTable& charts,
                  double depth)
        : depth_(depth), is_hit_(layout.triangle_count(), 0) {
        std::vector<uint8_t> takes_part(layout.triangle_count(), 0);
        for (uint32_t t = 0; t < layout.triangle_count(); ++t) {
            if (charts.triangle_chart[t] == k_none)
                continue;
            const Triangle2 corners = texel_triangle(layout, texture, t);
            if (corners.cross_area() == 0.0)
                continue;
            takes_part[t] = 1;
            items_.push_back(prepare(corners, t, charts.triangle_chart[t]));
            Box box = Box::empty();
            for (const Point2& p : corners.p)
                box.add(p.x, p.y);
            boxes_.push_back(box);
        }
        search_fans(Fans(layout, texture, takes_part));
    }

    Overlaps find() {
        const BoxTree tree(boxes_);
        sort_like(tree.order());
        for (uint32_t place = 0; place < tree.order().size(); ++place)
            search(tree, place);
        for (uint32_t t = 0; t < is_hit_.size(); ++t)
            if (is_hit_[t])
                result_.triangles.push_back(t);
        return std::move(result_);
    }

private:
    /// Counts the pairs within fans, which the tree search then skips.
    void search_fans(const Fans& fans) {
        if (fans.empty())
            return;
        std::vector<uint32_t> item_of(is_hit_.size(), k_none);
        for (uint32_t i = 0; i < items_.size(); ++i)
            item_of[items_[i].triangle] = i;
        fans.for_each_pair([&](uint32_t a, uint32_t b) {
            compare(items_[item_of[a]], items_[item_of[b]]);
            return !result_.is_cut_short;
        });
        if (result_.is_cut_short) // some pairs within fans were not tested
            return;
        for (Prepared& item : items_)
            item.fan = fans.fan_of(item.triangle);
    }

    /// Reorders the items as the tree holds them, for cache locality.
    void sort_like(const std::vector<uint32_t>& order) {
        std::vector<Prepared> items(items_.size());
        extents_.reserve(items_.size());
        for (size_t place = 0; place < order.size(); ++place) {
            items[place] = items_[order[place]];
            extents_.emplace_back(items[place].corners);
        }
        items_ = std::move(items);
        fan_end_.resize(items_.size());
        for (auto place = static_cast<uint32_t>(items_.size()); place-- > 0;) {
            const bool goes_on =
                place + 1 < items_.size() && items_[place + 1].fan == items_[place].fan;
            fan_end_[place] = goes_on ? fan_end_[place + 1] : place + 1;
        }
    }

    void search(const BoxTree& tree, uint32_t place) {
        const Prepared& item = items_[place];
        const Box& box = boxes_[tree.order()[place]];
        const Extents& extents = extents_[place];
        // Each pair is tested once, from the item earlier in the order. Once counting has stopped,
        // each triangle searches the whole tree for one partner.
        const uint32_t after = result_.is_cut_short ? 0 : place + 1;
        bool is_done = result_.is_cut_short && is_hit_[item.triangle];
        const auto is_of_its_fan = [&](uint32_t first, uint32_t last) {
            return item.fan != k_none && items_[first].fan == item.fan && fan_end_[first] >= last;
        };
        tree.visit(
            [&](const Box& node, uint32_t first, uint32_t last) {
                return !is_done && last > after && node.meets(box) && !is_of_its_fan(first, last);
            },
            [&](uint32_t other) {
                if (is_done || other < after || other == place || is_of_its_fan(other, other + 1) ||
                    !extents.meet(extents_[other]))
                    return;
                if (compare(item, items_[other]))
                    is_done = result_.is_cut_short;
            });
    }

    /// True if the two overlap by more than the tolerance.
    bool compare(const Prepared& a, const Prepared& b) {
        if (a.parts_from(b, depth_) || b.parts_from(a, depth_))
            return false;
        count(a, b);
        return true;
    }

    void count(const Prepared& a, const Prepared& b) {
        is_hit_[a.triangle] = is_hit_[b.triangle] = 1;
        if (result_.pairs_within + result_.pairs_between >= k_max_pairs) {
            result_.is_cut_short = true;
            return;
        }
        ++(a.chart == b.chart ? result_.pairs_within : result_.pairs_between);
    }

    double depth_;
    std::vector<Prepared> items_;
    std::vector<Box> boxes_; // in input order
    std::vector<Extents> extents_;
    std::vector<uint32_t> fan_end_; // per item: end of its run of items of the same fan
    std::vector<uint8_t> is_hit_;
    Overlaps result_;
};

} // namespace

Overlaps find_overlaps(const Layout& layout, const Texture& texture, const ChartTable& charts,
                       double depth) {
    return is_covered_once(layout, charts) ? Overlaps{}
                                           : compare_all_pairs(layout, texture, charts, depth);
}

Overlaps compare_all_pairs(const Layout& layout, const Texture& texture, const ChartTable& charts,
                           double depth) {
    return OverlapSearch(layout, texture, charts, depth).find();
}

} // namespace measure
