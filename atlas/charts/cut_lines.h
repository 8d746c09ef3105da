/// Straight lines along which a chart is worth cutting for the texture.
///
/// What a chart costs beyond its area is the void that packing leaves around it. A cut across the
/// neck of an arm, or along the inner corner of an L, lets the two parts lie closer to their
/// neighbours; it pays by how much void it saves per length of seam.
/// Sources: M. Limper, N. Vining, A. Sheffer, "Box cutter: atlas refinement for efficient packing
///          via void elimination", 2018; H.-Y. Liu, X.-M. Fu, C. Ye, S. Chai, L. Liu, "Atlas
///          refinement with bounded packing efficiency", 2019: cuts along axis-parallel lines.
#pragma once

#include "atlas/geometry/border.h"

#include <vector>

namespace tessora::atlas {

/// What lies beyond the line dot(axis, p) = offset is cut off.
struct CutLine {
    Vec2 axis; ///< unit length
    double offset = 0;
};

struct CutCandidate {
    CutLine line;
    double saved = 0;  ///< void, in units of area
    double length = 0; ///< of the line inside the chart
};

/// The room that a chart with this outline is likely to take in a texture: halfway between its
/// convex hull and its smallest box.
double likely_room(const Outline& outline);

/// The lines that save at least `least` of void, those that save most per length first, at most a
/// few. Tried are the directions of the smallest box, its diagonals and those between them.
/// Cost: O(n log n) per direction in the points of the outline.
std::vector<CutCandidate> find_cut_lines(const Outline& outline, double least);

} // namespace tessora::atlas
