/// All measures of a finished UV layout.
///
/// Definitions, sources and tolerances: docs/measures.md. Shares no code with the atlas engine, so
/// that an error in the engine is not repeated here.
#pragma once

#include "measure/gap.h"
#include "measure/layout.h"
#include "measure/overlaps.h"
#include "measure/stretch.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace measure {

struct ChartMeasure {
    uint32_t triangles = 0;
    uint32_t first_triangle = k_none;
    StretchSum stretch;         ///< relative to the chart's own mean density
    double signed_area = 0.0;   ///< texels; negative: the chart is mirrored
    bool is_one_polygon = true; ///< all triangles belong to one polygon
    /// Texels per unit of length.
    double density() const;
};

/// Texels per unit of length.
struct Density {
    double min = 0.0, max = 0.0; ///< over charts
    double mean = 0.0;           ///< of the whole surface
    double variation = 0.0;      ///< standard deviation over mean, per triangle, area-weighted
};

/// Lengths and densities refer to the scale of the layout's positions; see `unit`.
struct Measures {
    double unit = 1.0; ///< Layout::unit
    uint32_t polygons = 0, triangles = 0, vertices = 0;
    uint32_t unmapped_corners = 0; ///< without a finite UV
    std::vector<uint32_t> unmapped_polygons;

    std::vector<uint32_t> triangle_chart; ///< k_none if a corner has no UV
    /// Edges on chart outlines: 3 * triangle + k, from corner k to corner (k+1)%3, ascending.
    std::vector<uint32_t> outline;
    std::vector<ChartMeasure> charts;
    std::vector<TriangleMap> maps; ///< per triangle
    StretchSum whole;              ///< of all charts, relative to the layout's mean density
    Distortion distortion;
    double coverage = 0.0;      ///< UV area over the unit square
    double seam_length = 0.0;   ///< in object space
    double seam_relative = 0.0; ///< seam_length over the square root of the surface area
    uint32_t seam_edges = 0;
    Density density;

    /// Triangles, ascending; unresolved ones are not listed.
    std::vector<uint32_t> flipped;   ///< orientation opposite to their chart's
    std::vector<uint32_t> collapsed; ///< surface area but no UV area
    std::vector<uint32_t> outside;   ///< a UV outside [0,1]
    uint32_t unresolved = 0;         ///< too thin or small for single-precision UVs
    std::vector<uint32_t> mirrored;  ///< charts
    Overlaps overlaps;

    /// Polygons, ascending; see polygons.h.
    std::vector<uint32_t> dented; ///< convex in space, not in the texture: some fan has a flip
    std::vector<uint32_t> turned; ///< others with a corner that comes to turn right
    uint32_t split_polygons = 0;  ///< with triangles in several charts; in neither list

    std::optional<Gap> gap;                                 ///< none if fewer than two charts
    std::optional<double> border;                           ///< to the unit square, in texels
    double uv_low[2] = {0.0, 0.0}, uv_high[2] = {0.0, 0.0}; ///< range of the mapped UVs

    /// The maximum over charts of the fraction of the sampling rate lost, 1 - 1/L2.
    double worst_chart_stretch() const;
};

/// Errors: std::bad_alloc.
/// Cost:   O(n log n) in triangles plus the number of overlapping pairs.
Measures measure(const Layout& layout, const Texture& texture);

} // namespace measure
