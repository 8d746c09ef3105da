/// Stretch and distortion of the map from the surface to the texture.
///
/// Source: Sander, Snyder, Gortler, Hoppe, "Texture mapping progressive meshes", 2001: L2 and
/// L-infinity stretch from the singular values of the map from texture to surface. Both are scaled
/// here so that an isometry of equal total area has 1.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

/// One triangle's map. Lengths in texture space are texels.
struct TriangleMap {
    double area = 0.0;         ///< in space
    double texel_area = 0.0;   ///< signed
    double larger = 0.0;       ///< singular values of the map from space to texels
    double smaller = 0.0;      ///< 0 when collapsed
    double texel_height = 0.0; ///< least height in texels
    /// Area against the mean too small, or so thin at the layout's scale that single-precision UVs
    /// cannot tell its shape. Depends on the triangle in space and the layout's scale only, so that
    /// no error in the layout excuses itself.
    bool is_unresolved = false;
};

struct StretchSum {
    double area = 0.0;
    double texel_area = 0.0; ///< without sign
    double l2 = 1.0;
    double linf = 1.0;
    /// The least value of l2 that the rounding of UVs to single precision leaves possible.
    double l2_floor = 1.0;
};

/// Triangles without UVs get a default TriangleMap.
std::vector<TriangleMap> map_triangles(const Layout& layout, const Texture& texture,
                                       const ChartTable& charts);

/// Stretch of the chosen triangles: those whose chart number is `chart_of_sum[c]`... every triangle
/// counts in the sum of its chart and in the last one, which is the whole layout. Collapsed and
/// unresolved triangles count with their areas only.
/// Shape: chart_count + 1 results.
std::vector<StretchSum> sum_stretch(const std::vector<TriangleMap>& maps, const ChartTable& charts,
                                    double uv_spacing);

struct Distortion {
    double angle_mean = 0.0;     ///< degrees between an angle in space and in texels, area-weighted
    double angle_max = 0.0;      ///< degrees
    double conformal_mean = 1.0; ///< ratio of the singular values, >= 1, area-weighted
    double area_mean = 1.0;      ///< ratio of area shares in texels and in space, or its inverse
    double area_max = 1.0;
};

Distortion distortion(const Layout& layout, const Texture& texture,
                      const std::vector<TriangleMap>& maps, const StretchSum& whole);

} // namespace measure
