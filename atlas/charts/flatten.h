/// Flattening of whole charts, and the judgement whether a flattened chart may stay.
///
/// A chart is legal when every triangle is positively oriented, its L2 stretch is within the limit
/// and its outline does not touch itself (border.h); nothing else in the engine decides that.
#pragma once

#include "atlas/charts/chart_set.h"

namespace tessora::atlas {

constexpr double k_hard_stretch = 1.002; ///< on L2, for the pieces of hard surfaces

struct FlattenOptions {
    double limit = 1.176; ///< on L2 stretch
    bool thorough = true; ///< quality mode
};

class Flattener {
public:
    Flattener(ChartSet& set, const FlattenOptions& options);

    /// Turns connected triangles that are in no chart into one, everything between them glued, by
    /// projection along `normal` and relaxation. False, with nothing glued, when no legal chart
    /// with an L2 stretch of at most `most` came of it.
    bool flatten_region(const uint32_t* begin, const uint32_t* end, Vec3 normal, double most);
    /// Turns the triangles of one polygon into a chart, legal except for the limit.
    void flatten_polygon(std::vector<uint32_t> faces);

    /// Lowers the distortion of a legal chart; one that would not stay legal is left as it was.
    void polish(Chart& c, int sweeps);

    /// Copies all of a chart into `patch`; `nodes` tells where to write it back.
    void load(const Chart& c);
    void store();
    /// Judges a chart whose triangles and coordinates are set, after closing its slits; fills its
    /// border and sums.
    bool judge(Chart& c);
    /// The same, moving nothing.
    bool judge_as_it_is(Chart& c);
    bool judge_outline(const Chart& c);
    /// Makes the sides of slits that lie next to each other coincide exactly; appends the nodes it
    /// moved, with where they were.
    void close_slits(const Chart& c, std::vector<std::pair<uint32_t, Vec2>>& moved);

    ChartSet& set;
    const FlattenOptions options;
    Patch patch;
    std::vector<uint32_t> nodes; ///< of the patch's vertices
    std::vector<uint32_t> local; ///< per node: number in the patch, or k_none; all k_none at rest

private:
    bool passes(const Chart& c);
    bool faces_forward(const uint32_t* begin, const uint32_t* end, Vec3 normal,
                       double least_cosine) const;
    void project(const std::vector<uint32_t>& faces, Vec3 normal);
    void glue_inside(const std::vector<uint32_t>& faces, bool false_edges_only);
    void unglue_inside(const std::vector<uint32_t>& faces);
    void set_uv_of_triangle(uint32_t t);
    bool improve(Chart& c, double enough);
    bool spread_on_circle(Chart& c);

    std::vector<uint32_t> mark_;           ///< per triangle: stamp of the region it was last in
    std::vector<uint32_t> node_of_vertex_; ///< per source vertex: scratch of close_slits
    uint32_t stamp_ = 0;
    std::vector<std::pair<uint32_t, Vec2>> moved_;
    Outline outline_;
    OutlineTester tester_;
};

} // namespace tessora::atlas
