/// Outlines of charts as polylines, and the figures that packing orders and turns them by.
#pragma once

#include "atlas/geometry/vec.h"
#include "atlas/pack/pack.h"

#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// A rotation.
struct Turn {
    double cosine = 1;
    double sine = 0;
};

inline Vec2 turned(Vec2 p, Turn t) {
    return {t.cosine * p.x - t.sine * p.y, t.sine * p.x + t.cosine * p.y};
}

/// One chart's outline. A chart without edges has no chains and takes no room.
struct Shape {
    uint32_t chain_begin = 0; ///< chains chain_begin .. chain_end-1 of the set
    uint32_t chain_end = 0;
    double area = 0;           ///< enclosed, chart units squared; 0 for degenerate charts
    double hull_perimeter = 0; ///< chart units
    Vec2 axis{1, 0};           ///< unit direction of the longer side of the least-area box
    double length = 0;         ///< of that box along `axis`
    double width = 0;          ///< across it, <= length
};

/// Chains of points; consecutive points are joined. A chain of one point is a point.
struct Outlines {
    std::vector<Vec2> points;
    std::vector<uint32_t> chain_begin; ///< one more entry than chains
    std::vector<Shape> shapes;
    double tolerance = 0; ///< how far the true border may lie outside these chains, chart units
};

/// Joins the loose border edges of every chart to chains and measures the charts.
/// Source: least-area box by an edge of the convex hull (Freeman and Shapira, "Determining the
///         minimum-area encasing rectangle for an arbitrary closed curve", 1975), found with
///         rotating calipers (Toussaint, "Solving geometric problems with the rotating calipers",
///         1983); hull by Andrew, "Another efficient algorithm for convex hulls", 1979.
Outlines trace_outlines(const PackCharts& charts);

/// The same outlines with fewer points: every dropped point lies within `tolerance` of the segment
/// that replaces it. Whoever draws the result must widen it by the set's tolerance.
Outlines simplify(const Outlines& outlines, double tolerance);

} // namespace tessora::atlas
