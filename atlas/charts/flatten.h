/// Flattening of whole charts, and the decision whether a flattened chart is legal.
///
/// A chart is legal if every triangle is positively oriented, its L2 stretch is within the limit
/// and its outline does not cross or overlap itself (geometry/border.h). Every stage asks this
/// class; none has a rule of its own.
#pragma once

#include "atlas/charts/chart_set.h"
#include "atlas/charts/patch_copy.h"

#include <functional>
#include <limits>

namespace tessora::atlas {

/// Maximum L2 stretch of the first charts where the surface is hard; see docs/atlas.md, "Hard
/// surfaces".
constexpr double k_hard_stretch = 1.002;

struct FlattenOptions {
    double limit = 1.176; ///< on L2 stretch
    bool thorough = true; ///< quality mode
};

/// What a region has to reach to become a chart.
struct RegionTerms {
    double max_stretch = 0;       ///< L2
    bool may_skip_solver = false; ///< fast mode: a projection within max_stretch is only relaxed
    double max_void = std::numeric_limits<double>::infinity(); ///< area that it is likely to take
                                                               ///< in the texture beyond its own
};

class Flattener {
public:
    Flattener(ChartSet& set, const FlattenOptions& options);

    /// Makes a chart of connected triangles that are in no chart yet: glues all edges between them,
    /// projects them along `normal` and relaxes. The chart is not added to the set. False, with
    /// nothing glued, if the result is not legal or does not meet the terms. Flatteners of the same
    /// set may do this at the same time with regions that have no triangle in common.
    bool flatten_region(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                        const RegionTerms& terms, Chart& chart);
    /// Makes one chart of a connected component if it is a disk or a planar ring, by a map that
    /// cannot flip triangles but may stretch them without limit. The chart is not added to the set.
    /// False, with all as it was, if the component is of another kind or the result is not legal.
    /// Relaxes less if `goes_on` says no. Like flatten_region(), may run beside others.
    bool flatten_disk(std::vector<uint32_t> faces, const std::function<bool()>& goes_on,
                      Chart& chart);
    /// The same with a component that is in charts, which the new one replaces.
    bool flatten_component(std::vector<uint32_t> faces, const std::function<bool()>& goes_on);
    /// Makes a chart of the triangles of one polygon. It is legal except that its stretch may
    /// exceed the limit.
    void flatten_polygon(std::vector<uint32_t> faces);

    /// Lowers the distortion of a legal chart; leaves it unchanged if it would not stay legal.
    /// Flatteners of the same set may do this at the same time with different charts.
    void polish(Chart& c, int sweeps);

    /// Lowers the distortion of a legal chart by steps that solve the whole chart, taken as far as
    /// they keep it legal: for charts that are far from the stretch that their shape needs. Returns
    /// early, with a legal chart, if `goes_on` says no. Like polish(), may run beside others.
    void flatten_further(Chart& c, const std::function<bool()>& goes_on);

    /// Lays out a legal chart that is a grid of quads with straight rows and columns, if that stays
    /// legal and takes less room than the stretch it adds is worth. Like polish(), may run beside
    /// others.
    void straighten(Chart& c);

    /// Traces the border of a chart whose triangles and coordinates are set, closes its slits,
    /// measures it, and returns whether it is legal.
    bool judge(Chart& c);
    /// Like judge(), but leaves slits open, so that no node moves.
    bool judge_without_moving(Chart& c);
    /// Whether a chart that was legal still is: its border and sums are set, and all segments of
    /// its outline that have moved are within the box.
    bool judge_within(const Chart& c, Vec2 low, Vec2 high);
    /// Whether the chart's outline is legal; ignores stretch and flipped triangles.
    bool judge_outline(const Chart& c);
    /// Makes the two sides of a slit coincide exactly where they almost do; appends the nodes that
    /// it moved, with their old coordinates.
    void close_slits(const Chart& c, std::vector<std::pair<uint32_t, Vec2>>& moved);

    ChartSet& set;
    const FlattenOptions options;
    PatchCopy copy; ///< shared with the stages that solve parts of charts

private:
    void load(const Chart& c);
    bool is_within_limit(const Chart& c) const;
    bool passes(const Chart& c);
    bool faces_forward(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                       double min_cosine) const;
    void project(const std::vector<uint32_t>& faces, Vec3 normal);
    void glue_inside(const std::vector<uint32_t>& faces, bool false_edges_only);
    void unglue_inside(const std::vector<uint32_t>& faces);
    void set_uv_of_triangle(uint32_t t);
    bool improve(Chart& c, const RegionTerms& terms);
    bool is_compact(const Chart& c, double max_void);
    bool is_planar(const Chart& c) const;
    bool flatten_by_projection(Chart& c);
    bool flatten_on_circle(Chart& c, const std::function<bool()>& goes_on);
    bool spread_on_circle(const Chart& c);
    void relax_while_simple(Chart& c, const std::function<bool()>& goes_on);
    void relax_without_harm(const Chart& c, int sweeps);
    bool take_back_harm(const Chart& c, const std::vector<Vec2>& before);
    double room_per_area(const Chart& c);

    std::vector<uint32_t> mark_; ///< per triangle: value of stamp_ when it was last seen
    uint32_t stamp_ = 0;
    std::vector<uint32_t> node_of_vertex_;         ///< per mesh vertex: workspace of close_slits
    std::vector<std::pair<uint32_t, Vec2>> moved_; ///< workspace of judge
    Outline outline_;
    OutlineTester tester_;
};

} // namespace tessora::atlas
