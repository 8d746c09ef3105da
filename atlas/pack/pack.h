/// Packing: places every chart in the texture.
///
/// Charts keep their shape and their relative size (one texel density for the whole atlas): each is
/// rotated, never mirrored, scaled by one common factor and moved. Between any two charts the
/// Euclidean distance in final texels is at least the gutter; a chart may lie in a hole or a notch
/// of another. Deterministic: decisions use only correctly rounded operations.
/// docs/atlas-packing.md has the method, its sources and the proof of the gutter.
#pragma once

#include "atlas/atlas.h"

#include <cstdint>
#include <functional>
#include <vector>

namespace tessora::atlas {

/// The borders of all charts, each chart in its own coordinates. A point is inside a chart by the
/// even-odd rule, so holes are free for other charts and the two coinciding sides of a slit cancel.
/// Shape:  points[2*np]: x, y; edges[2*ne]: pairs of point numbers, any order and direction;
///         edge_begin[nc+1]: chart c owns edges edge_begin[c] .. edge_begin[c+1]-1.
///         kind[nc], or empty if all are `border`.
/// Points may belong to several charts or to none. A chart may be a point, a segment or empty.
/// Units:  any, but the same for all charts; finite. Charts that are kept: final texels, measured
///         from the lower left corner of the room in their tile.
struct PackCharts {
    enum Kind : uint8_t {
        border,    ///< the edges are the chart's border
        triangles, ///< every three edges are a triangle; the chart is the union of them, whatever
                   ///< their orientation, so it may overlap itself
        kept       ///< as `triangles`, but the chart stays where it is; others keep their distance
    };
    Span<double> points;
    Span<uint32_t> edges;
    Span<uint32_t> edge_begin;
    Span<Kind> kind = {};
    Span<uint32_t> kept_tile = {}; ///< per chart; read for kept ones
};

struct PackOptions {
    uint32_t width = 512;  ///< texels
    uint32_t height = 512; ///< texels
    float gutter = 2.0f;   ///< texels between two charts in the final texture
    Quality quality = Quality::quality;
    ParallelFor executor = nullptr; ///< see Options
    uint64_t triangles = 0;         ///< of the whole mesh; larger meshes get more search effort
    bool quick = false; ///< a quick layout, which tells about how large the charts can be
    double effort = 1;  ///< factor on the search effort
    double wanted = 0;  ///< coverage; where it turns out not to be attainable, the layout so far is
                        ///< the result
    Turns turns = Turns::any;
    bool align = false;   ///< with Turns::any: charts are turned straight first, see ChartShape
    uint32_t tiles = 1;   ///< textures of the same size that the charts may be spread over
    double min_scale = 0; ///< texels per unit of the charts; 0: the packer's own bound
    double max_scale = 0; ///< the same

    /// Called regularly with the fraction of the packing that is done, 0..1, never decreasing;
    /// returning false aborts.
    std::function<bool(double)> proceed;
};

/// The factor for an effort of 0 to 10, as in Options.
inline double effort_factor(int effort) {
    return double(1 << effort) / double(1 << k_usual_effort);
}

/// texel = scale * (cosine*x - sine*y, sine*x + cosine*y) + (x, y) of the placement, in the inner
/// rectangle.
struct Placement {
    double cosine = 1.0;
    double sine = 0.0;
    double x = 0.0;
    double y = 0.0;
    uint32_t tile = 0;
};

struct Packing {
    Status status = Status::ok; ///< ok, does_not_fit or aborted
    double scale = 1.0;         ///< texels per unit of the charts, > 0
    double coverage = 0.0;      ///< chart area over texture area in the final texture
    double attainable = 1.0;    ///< coverage that was to be expected at most, judging by the first
                                ///< layouts; does not depend on what is wanted
    std::vector<Placement> placements;
};

/// The texture without the caller's margin, in final texels. Returned coordinates map to it by
/// texel = unit * coordinate on both axes.
struct InnerRectangle {
    double width = 0.0;  ///< w (1 - g/m), m the shorter side; <= 0 if the gutter leaves no room
    double height = 0.0; ///< h (1 - g/m)
    double unit = 0.0;   ///< M (1 - g/m), M the longer side
};
InnerRectangle inner_rectangle(uint32_t width, uint32_t height, float gutter);

/// The gutter that packing keeps: the requested one plus what rounding to single precision can take
/// away before the final texture.
double safe_gutter(uint32_t width, uint32_t height, float gutter);

/// Maximum number of charts that can keep the gutter, even shrunk to points:
/// (floor(We/g)+1) (floor(He/g)+1) for the inner rectangle We x He; the largest value for gutter 0,
/// 0 if the rectangle is empty.
uint64_t gutter_capacity(uint32_t width, uint32_t height, float gutter);

/// The part of a tile that charts may fill, and the distance they must keep in it, in texels.
struct PackRoom {
    double width = 0, height = 0;
    double gutter = 0;                ///< > 0
    uint64_t capacity = ~uint64_t(0); ///< more charts than this per tile are refused at once
};

/// The room that create()'s caller leaves: inner_rectangle, safe_gutter and gutter_capacity.
PackRoom room_of(const PackOptions& options);

/// Errors: does_not_fit if the gutter leaves no room; may throw std::bad_alloc.
/// Cost:   one bitmap of at most 2048 x 2048 cells per level; time near-linear in charts and edges.
Packing pack_charts(const PackCharts& charts, const PackOptions& options, const PackRoom& room);
inline Packing pack_charts(const PackCharts& charts, const PackOptions& options) {
    return pack_charts(charts, options, room_of(options));
}

} // namespace tessora::atlas
