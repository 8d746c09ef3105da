/// Stretch and distortion of the map from the surface to the texture.
///
/// Source: Sander, Snyder, Gortler, Hoppe, "Texture mapping progressive meshes", 2001: L2 and
/// L-infinity stretch from the singular values of the map from texture to surface. Both are
/// normalised so that an isometry up to uniform scale has 1.
#pragma once

#include "measure/charts.h"
#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

/// The affine map of one triangle from object space to texels.
struct TriangleMap {
    double area = 0.0;         ///< in object space
    double texel_area = 0.0;   ///< signed
    double larger = 0.0;       ///< larger singular value
    double smaller = 0.0;      ///< smaller singular value, 0 if collapsed
    double texel_height = 0.0; ///< minimum height in texels
    /// Too small relative to the mean area, or too thin at the layout's scale, for single-precision
    /// UVs to represent its shape. Depends only on the triangle in space and the layout's mean
    /// density, not on its UVs, so that a faulty layout is not excused.
    bool is_unresolved = false;
};

struct StretchSum {
    double area = 0.0;
    double texel_area = 0.0; ///< sum of absolute values
    double l2 = 1.0;
    double linf = 1.0;
    /// The minimum l2 reachable with UVs rounded to single precision.
    double l2_floor = 1.0;
    /// l2 with every convex quad divided along the diagonal that stretches it more, and the minimum
    /// of that.
    double worst_l2 = 1.0;
    double worst_l2_floor = 1.0;
};

/// A convex quad's own triangles and those along its other diagonal.
struct Quad {
    uint32_t own[2];
    TriangleMap other[2];
};

/// Triangles without UVs get a default TriangleMap.
std::vector<TriangleMap> map_triangles(const Layout& layout, const Texture& texture,
                                       const ChartTable& charts);

/// The map of the triangle of any three polygon corners; never unresolved.
TriangleMap map_corners(const Layout& layout, const Texture& texture, const uint32_t* corners);

/// Stretch per chart, and of the whole layout as the last element. Collapsed and unresolved
/// triangles contribute only their areas.
/// Shape: chart_count + 1 results.
std::vector<StretchSum> sum_stretch(const std::vector<TriangleMap>& maps,
                                    const std::vector<Quad>& quads, const ChartTable& charts,
                                    double uv_spacing);

struct Distortion {
    double angle_mean = 0.0;     ///< degrees between an angle in space and in texels, area-weighted
    double angle_max = 0.0;      ///< degrees
    double conformal_mean = 1.0; ///< ratio of the singular values, >= 1, area-weighted
    double area_mean = 1.0; ///< ratio of a triangle's shares of both areas, or its inverse if < 1
    double area_max = 1.0;
};

Distortion distortion(const Layout& layout, const Texture& texture,
                      const std::vector<TriangleMap>& maps, const StretchSum& whole);

} // namespace measure
