/// Packing: gives every chart a place in the texture.
///
/// Charts keep their shape and their relative size (one texel density for the whole atlas): each is
/// rotated, never mirrored, scaled by one common factor and moved. Between any two charts the
/// Euclidean distance in final texels is at least the gutter; a chart may lie in a hole or a bay of
/// another. Deterministic; decides with exact arithmetic and square roots only.
/// See docs/atlas-packing.md for the method, its sources and the proof of the gutter.
#pragma once

#include "atlas/atlas.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace tessora::atlas {

/// The outlines of all charts in coordinates of their own. Only borders are read: the inside of a
/// chart is what an odd number of its border edges encloses, so holes are free for other charts and
/// the two coinciding sides of a slit cancel.
/// Shape:  points[2*np]: x, y; edges[2*ne]: pairs of point numbers, any order and direction;
///         edge_begin[nc+1]: chart c owns edges edge_begin[c] .. edge_begin[c+1]-1.
/// Points may serve several charts or none. A chart may be a point, a segment or empty.
/// Units:  any, but the same for all charts; finite.
struct PackCharts {
    Span<double> points;
    Span<uint32_t> edges;
    Span<uint32_t> edge_begin;
};

struct PackOptions {
    uint32_t width = 512;  ///< texels
    uint32_t height = 512; ///< texels
    float gutter = 2.0f;   ///< texels between two charts in the final texture
    Quality quality = Quality::quality;
    uint64_t triangles = 0; ///< size of the mesh: large meshes buy more searching; 0 = unknown

    /// Called now and then with the fraction of the packing done, 0..1, not decreasing; false
    /// aborts.
    std::function<bool(double)> proceed;
};

/// texel = scale * (cosine*x - sine*y, sine*x + cosine*y) + (x, y) of the placement, in the inner
/// rectangle [0, inner_width] x [0, inner_height] that the caller's margin leaves.
struct Placement {
    double cosine = 1.0;
    double sine = 0.0;
    double x = 0.0;
    double y = 0.0;
};

struct Packing {
    Status status = Status::ok; ///< ok, does_not_fit or aborted
    double scale = 1.0;         ///< texels per unit of the charts, > 0
    double coverage = 0.0;      ///< chart area over texture area in the final texture
    std::vector<Placement> placements;
};

/// What is left of the texture once the caller's margin is taken off, in final texels, and how
/// returned coordinates relate to it: texel = unit * returned coordinate on both axes.
struct InnerRectangle {
    double width = 0.0;  ///< w (1 - g/m), m the shorter side; <= 0 when the gutter eats it all
    double height = 0.0; ///< h (1 - g/m)
    double unit = 0.0;   ///< M (1 - g/m), M the longer side
};
InnerRectangle inner_rectangle(uint32_t width, uint32_t height, float gutter);

/// The gutter that packing keeps: the asked one plus what single precision can take away between
/// here and the final texture.
double safe_gutter(uint32_t width, uint32_t height, float gutter);

/// Most charts that can keep the gutter, even shrunk to points: (floor(We/g)+1) (floor(He/g)+1)
/// for the inner rectangle We x He; no limit (the largest value) for gutter 0, 0 when the
/// rectangle is empty.
uint64_t gutter_capacity(uint32_t width, uint32_t height, float gutter);

/// Errors: does_not_fit when the gutter leaves no room; may throw std::bad_alloc.
/// Cost:   one bitmap of at most 2048 x 2048 cells per level; time near-linear in charts and edges.
Packing pack(const PackCharts& charts, const PackOptions& options);

} // namespace tessora::atlas
