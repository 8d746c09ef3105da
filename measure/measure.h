/// Everything that can be told of a finished layout without knowing who made it.
///
/// Definitions, sources and tolerances: docs/measures.md. Shares no code with the atlas engine, so
/// that an error there cannot hide here.
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
    StretchSum stretch;         ///< scaled by the chart's own areas
    double signed_area = 0.0;   ///< texels; negative: the chart is mirrored
    bool is_one_polygon = true; ///< all triangles belong to one polygon
    /// Texels per unit of length.
    double density() const;
};

/// Texels per unit of length.
struct Density {
    double least = 0.0, mean = 0.0, most = 0.0; ///< over charts; the mean is of the whole surface
    double variation = 0.0; ///< standard deviation over the mean, by surface area, per triangle
};

/// Lengths in space, and what is per length, are in those of the layout's positions.
struct Measures {
    double unit = 1.0; ///< such a length in the mesh's own unit
    uint32_t polygons = 0, triangles = 0, vertices = 0;
    uint32_t unmapped_corners = 0; ///< without UV, or with one that is not finite
    std::vector<uint32_t> unmapped_polygons;

    std::vector<uint32_t> triangle_chart; ///< k_none: not wholly mapped
    /// Edges on chart outlines: 3 * triangle + k, from corner k to corner (k+1)%3, ascending.
    std::vector<uint32_t> outline;
    std::vector<ChartMeasure> charts;
    std::vector<TriangleMap> maps; ///< per triangle
    StretchSum whole;              ///< of all charts together, one scale
    Distortion distortion;
    double coverage = 0.0;      ///< UV area over the unit square
    double seam_length = 0.0;   ///< in space
    double seam_relative = 0.0; ///< over the square root of the surface area
    uint32_t seam_edges = 0;
    Density density;

    /// Triangles, ascending. Unresolved ones are in none of the three lists.
    std::vector<uint32_t> flipped;   ///< turned against their chart
    std::vector<uint32_t> collapsed; ///< with surface area but no UV area
    std::vector<uint32_t> outside;   ///< with a UV outside [0,1]
    uint32_t unresolved = 0;         ///< too thin or small for single-precision UVs
    std::vector<uint32_t> mirrored;  ///< charts
    Overlaps overlaps;

    std::optional<Gap> gap;                                 ///< nothing: fewer than two charts
    std::optional<double> border;                           ///< texels
    double uv_low[2] = {0.0, 0.0}, uv_high[2] = {0.0, 0.0}; ///< range of the mapped UVs

    /// The largest L2 stretch of a chart as a share of sampling rate lost, 1 - 1/L2.
    double worst_chart_stretch() const;
};

/// Errors: std::bad_alloc.
/// Cost:   near-linear in triangles, unless very many of them overlap.
Measures measure(const Layout& layout, const Texture& texture);

} // namespace measure
