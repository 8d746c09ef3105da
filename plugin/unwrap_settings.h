/// The request for one unwrap, and its two results.
///
/// A plain record owned by the caller (the node's compute or the command). Angles in degrees,
/// texture sizes and padding in texels. The unwrap clamps the fields and writes the two results.
#pragma once

#include <maya/MString.h>

#include <cstdint>

struct UnwrapSettings {
    MString uv_set;               ///< receives the result; created if the mesh lacks it
    int32_t charts = 0;           ///< 0..64; unused: the stretch limit alone decides the number
    double stretch = 0.0;         ///< 0 (isometric only) .. 1 (any)
    int32_t padding = 0;          ///< 0..32, gutter between charts
    int32_t tex_width = 8;        ///< 8..8192
    int32_t tex_height = 8;       ///< 8..8192
    double reserved_scale = 1.0;  ///< stored but unused
    bool high_quality = false;    ///< which of the atlas call's two quality modes
    bool keep_seams = false;      ///< existing UV borders become chart borders
    int32_t skip_false_edges = 0; ///< 0: tell the atlas call which edges are diagonals
    int32_t adjacency_method = 0; ///< 0..1; stored but unused
    double epsilon = 0.001;       ///< 0.001..1000; stored but unused
    bool reserved_flag = false;   ///< stored but unused
    int32_t charts_result = 0;    ///< out: number of charts
    double stretch_result = 0.0;  ///< out: stretch reached
    bool use_grooves = false;     ///< cut along concave creases
    double groove_angle = 0.0;    ///< 0..180; concave edges bent by at least this much are cut
    bool use_ridges = false;      ///< cut along convex creases
    double ridge_angle = 0.0;     ///< 0..180; convex edges bent by at least this much are cut
};

/// Clamps every field that has a range above; NaN becomes the lower end. Other fields stay.
void clamp_settings(UnwrapSettings& settings);
