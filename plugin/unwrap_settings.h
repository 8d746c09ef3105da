/// The request for one unwrap, and its two results.
///
/// A plain record owned by whoever asks (a node's evaluation or the command). Angles in degrees,
/// texture sizes and padding in texels. The unwrap reads it through a pointer and writes the two
/// result fields only, both of them when everything succeeded.
#pragma once

#include <maya/MString.h>

#include <cstdint>

struct UnwrapSettings {
    MString uv_set;               ///< receives the result; created if the mesh lacks it
    int32_t charts = 0;           ///< 0..64; carried: the stretch limit alone decides the number
    double stretch = 0.0;         ///< 0 (isometric only) .. 1 (any)
    int32_t padding = 0;          ///< 0..32, gutter between charts
    int32_t tex_width = 8;        ///< 8..8192
    int32_t tex_height = 8;       ///< 8..8192
    double reserved_scale = 1.0;  ///< carried without effect
    bool high_quality = false;    ///< which of the atlas call's two quality modes
    bool keep_seams = false;      ///< existing UV borders become chart borders
    int32_t skip_false_edges = 0; ///< 0: the atlas call learns which edges are mere diagonals
    int32_t adjacency_method = 0; ///< 0..1; carried without effect
    double epsilon = 0.001;       ///< 0.001..1000; carried without effect
    bool reserved_flag = false;   ///< carried without effect
    int32_t charts_result = 0;    ///< out: number of charts
    double stretch_result = 0.0;  ///< out: stretch reached
    bool use_grooves = false;     ///< cut along concave creases
    double groove_angle = 0.0;    ///< 0..180; concave edges bent by at least this much are cut
    bool use_ridges = false;      ///< cut along convex creases
    double ridge_angle = 0.0;     ///< 0..180; convex edges bent by at least this much are cut
};

/// Forces every field with a range above into it. A value that is not a number becomes the lower
/// end. Fields without a range stay.
void clamp_settings(UnwrapSettings& settings);
