#include "measure/gap.h"

#include "measure/box_tree.h"
#include "measure/shape.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace measure {
namespace {

struct Segment {
    Point2 a, b;
    uint32_t triangle = 0;
    uint32_t chart = 0;
};

double point_segment2(Point2 p, const Segment& s) {
    const Point2 along = s.b - s.a, to = p - s.a;
    const double size2 = dot(along, along);
    const double t = size2 > 0.0 ? std::clamp(dot(to, along) / size2, 0.0, 1.0) : 0.0;
    const Point2 off{to.x - t * along.x, to.y - t * along.y};
    return dot(off, off);
}

bool cross_each_other(const Segment& s, const Segment& t) {
    const Point2 d = s.b - s.a, e = t.b - t.a;
    const double a = cross(d, t.a - s.a), b = cross(d, t.b - s.a);
    const double c = cross(e, s.a - t.a), f = cross(e, s.b - t.a);
    return ((a > 0.0 && b < 0.0) || (a < 0.0 && b > 0.0)) &&
           ((c > 0.0 && f < 0.0) || (c < 0.0 && f > 0.0));
}

double segments_distance2(const Segment& s, const Segment& t) {
    if (cross_each_other(s, t))
        return 0.0;
    return std::min({point_segment2(s.a, t), point_segment2(s.b, t), point_segment2(t.a, s),
                     point_segment2(t.b, s)});
}

class GapSearch {
public:
    GapSearch(const Layout& layout, const Texture& texture, const ChartTable& charts) {
        segments_.reserve(charts.outline.size());
        boxes_.reserve(charts.outline.size());
        for (uint32_t half_edge : charts.outline) {
            const uint32_t t = half_edge / 3, k = half_edge % 3;
            const Triangle2 corners = texel_triangle(layout, texture, t);
            const Segment segment{corners.p[k], corners.p[(k + 1) % 3], t,
                                  charts.triangle_chart[t]};
            Box box = Box::empty();
            box.add(segment.a.x, segment.a.y);
            box.add(segment.b.x, segment.b.y);
            segments_.push_back(segment);
            boxes_.push_back(box);
        }
    }

    std::optional<Gap> find() {
        const BoxTree tree(boxes_);
        // Distances between neighbours in tree order give an initial bound for pruning.
        for (uint32_t place = 1; place < tree.order().size(); ++place)
            try_pair(tree.order()[place - 1], tree.order()[place]);
        find_uniform_runs(tree);
        for (uint32_t place = 0; place < tree.order().size() && best2_ > 0.0; ++place)
            search(tree, place);
        if (best2_ == std::numeric_limits<double>::infinity())
            return std::nullopt;
        gap_.texels = std::sqrt(best2_);
        return gap_;
    }

private:
    void try_pair(uint32_t i, uint32_t j) {
        const Segment &s = segments_[i], &t = segments_[j];
        if (s.chart == t.chart || boxes_[i].distance2(boxes_[j]) >= best2_)
            return;
        const double distance2 = segments_distance2(s, t);
        if (distance2 < best2_) {
            best2_ = distance2;
            gap_.triangles[0] = s.triangle;
            gap_.triangles[1] = t.triangle;
        }
    }

    /// Per segment in tree order, the end of its run of segments of the same chart.
    void find_uniform_runs(const BoxTree& tree) {
        run_end_.resize(segments_.size());
        for (auto place = static_cast<uint32_t>(run_end_.size()); place-- > 0;) {
            const bool goes_on =
                place + 1 < run_end_.size() &&
                segments_[tree.order()[place]].chart == segments_[tree.order()[place + 1]].chart;
            run_end_[place] = goes_on ? run_end_[place + 1] : place + 1;
        }
    }

    void search(const BoxTree& tree, uint32_t place) {
        const uint32_t self = tree.order()[place];
        const uint32_t chart = segments_[self].chart;
        const Box& box = boxes_[self];
        tree.visit(
            [&](const Box& node, uint32_t first, uint32_t last) {
                if (last <= place || node.distance2(box) >= best2_)
                    return false;
                return segments_[tree.order()[first]].chart != chart || run_end_[first] < last;
            },
            [&](uint32_t other) {
                if (other > place)
                    try_pair(self, tree.order()[other]);
            });
    }

    std::vector<Segment> segments_;
    std::vector<Box> boxes_;
    std::vector<uint32_t> run_end_;
    double best2_ = std::numeric_limits<double>::infinity();
    Gap gap_;
};

} // namespace

std::optional<Gap> smallest_gap(const Layout& layout, const Texture& texture,
                                const ChartTable& charts) {
    return GapSearch(layout, texture, charts).find();
}

std::optional<double> border_distance(const Layout& layout, const Texture& texture,
                                      const ChartTable& charts) {
    std::optional<double> smallest;
    for (uint32_t t = 0; t < layout.triangle_count(); ++t) {
        if (charts.triangle_chart[t] == k_none)
            continue;
        for (const Point2& p : texel_triangle(layout, texture, t).p) {
            const double here = std::min({p.x, texture.width - p.x, p.y, texture.height - p.y});
            smallest = smallest ? std::min(*smallest, here) : here;
        }
    }
    return smallest;
}

} // namespace measure
