/// Borders of charts as chains of points, and the measures by which packing orders and turns
/// charts.
#pragma once

#include "atlas/geometry/vec.h"
#include "atlas/pack/pack.h"

#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// A rotation by an angle with this cosine and sine.
struct Turn {
    double cosine = 1;
    double sine = 0;
};

inline Vec2 turned(Vec2 p, Turn t) {
    return {t.cosine * p.x - t.sine * p.y, t.sine * p.x + t.cosine * p.y};
}

/// The shape of one chart. A chart without edges has no chains and takes no room.
struct ChartShape {
    uint32_t chain_begin = 0; ///< chains chain_begin .. chain_end-1 of the set
    uint32_t chain_end = 0;
    bool apart = false;       ///< every chain is a polygon of its own; the chart is their union
    bool kept = false;        ///< stays where it is, in tile `tile`; points are texels
    bool turns_finely = true; ///< may be turned by other angles than quarters
    uint32_t tile = 0;
    double area = 0;           ///< enclosed area in chart units squared; 0 for points and segments
    double hull_perimeter = 0; ///< chart units
    Vec2 axis{1, 0};   ///< direction of the longer side of the minimum-area box, unit length
    double length = 0; ///< of that box along `axis`
    double width = 0;  ///< across it, <= length unless stand_along() chose the axis
};

/// The borders of all charts. A chain joins consecutive points by segments; a chain of one point is
/// an isolated point.
struct ChartChains {
    std::vector<Vec2> points;
    std::vector<uint32_t> chain_begin; ///< one more entry than chains
    std::vector<ChartShape> shapes;
    double tolerance = 0; ///< maximum distance of the true border from these chains, chart units
};

/// Joins the border edges of every chart, given in any order, to chains and measures the charts.
/// Source: minimum-area box by an edge of the convex hull (Freeman and Shapira, "Determining the
///         minimum-area encasing rectangle for an arbitrary closed curve", 1975), found with
///         rotating calipers (Toussaint, "Solving geometric problems with the rotating calipers",
///         1983); hull by Andrew, "Another efficient algorithm for convex hulls", 1979.
ChartChains chain_borders(const PackCharts& charts);

/// The charts `order`, in that order: for loops over many charts, which then read memory in order.
ChartChains in_order(const ChartChains& chains, const std::vector<uint32_t>& order);

/// Returns the chains with fewer points: every dropped point lies within `tolerance` of the segment
/// that replaces it. Masks of the result must be widened by its tolerance.
ChartChains simplify(const ChartChains& chains, double tolerance);

} // namespace tessora::atlas
