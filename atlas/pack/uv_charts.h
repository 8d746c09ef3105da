/// Charts from existing texture coordinates: which triangles belong together, and what outline a
/// chart has.
///
/// Nothing is expected of the coordinates: charts may be mirrored, folded, overlap themselves or
/// have no area. Such charts are marked, so that packing treats them as the union of their
/// triangles instead of the inside of their border.
#pragma once

#include "atlas/atlas.h"
#include "atlas/geometry/vec.h"

#include <vector>

namespace tessora::atlas {

struct UvChart {
    uint32_t first_triangle = 0;
    double area = 0;       ///< texels squared, sum over the triangles, whatever their orientation
    double space_area = 0; ///< 0 if unknown
    Vec2 low, high;        ///< box, texels
    bool keep = false;
    bool mirrored = false; ///< more area is clockwise than counter-clockwise
    bool tangled = false;  ///< not the inside of one simple outline with simple holes
};

/// A class stands for all corners of a chart with the same coordinates.
struct UvCharts {
    std::vector<uint32_t> chart;        ///< per triangle, numbered by the first triangle
    std::vector<uint32_t> corner_class; ///< per corner
    std::vector<Vec2> points;           ///< per class, texels
    std::vector<uint32_t> class_begin;  ///< chart c has the classes class_begin[c] ..
                                        ///< class_begin[c + 1] - 1
    std::vector<UvChart> charts;
    /// Pairs of classes: chart c has the edges edge_begin[c] .. edge_begin[c + 1] - 1. They are the
    /// chart's border, loop by loop, inside on the left, or on the right of mirrored ones; every
    /// three edges are a triangle if it is kept or tangled.
    std::vector<uint32_t> edges, edge_begin;
};

/// Width and height are those of the texture in texels.
/// Errors: index_out_of_range, non_finite_uv; may throw std::bad_alloc.
/// Cost:   O(n log n) in triangles.
Failure find_uv_charts(const UvMesh& mesh, double width, double height, UvCharts& out);

} // namespace tessora::atlas
