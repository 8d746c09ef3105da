/// A polygon being triangulated: its corners projected along its normal, counter-clockwise.
#pragma once

#include "polygon/orientation.h"
#include "polygon/polygons.h"

#include <cstdint>
#include <vector>

namespace tessora::polygon {

struct Outline {
    std::vector<Point2> flat;        ///< corners projected to the plane
    std::vector<Vector> space;       ///< corners in object space
    std::vector<uint32_t> ids;       ///< mesh vertex of each corner
    std::vector<uint32_t> triangles; ///< result: polygon-relative corner numbers, counter-clockwise
    uint64_t steps = 0;              ///< elementary steps so far

    uint32_t size() const { return static_cast<uint32_t>(flat.size()); }
    uint32_t next(uint32_t corner) const { return corner + 1 == size() ? 0 : corner + 1; }
    uint32_t previous(uint32_t corner) const { return corner == 0 ? size() - 1 : corner - 1; }
    int turn(uint32_t a, uint32_t b, uint32_t c) {
        steps += 1;
        return orientation(flat[a], flat[b], flat[c]);
    }
    void emit(uint32_t a, uint32_t b, uint32_t c) {
        triangles.push_back(a);
        triangles.push_back(b);
        triangles.push_back(c);
    }
};

/// Computes `flat` from `space`. Returns false if coordinates are not finite or the polygon has no
/// area.
bool project(Outline& outline);

/// Triangulates a simple outline by one sweep. Returns false, with unspecified `triangles`, if the
/// outline proves not to be simple.
/// Cost:   O(n log n).
bool sweep_triangulate(Outline& outline);

/// Triangulates an outline with coincident corners, such as a bridge to a hole that is walked in
/// both directions: moves coincident corners slightly apart before the sweep. Returns false if no
/// corners coincide or the outline still is not simple.
bool sweep_touching(Outline& outline);

/// Triangulates any outline by ear clipping, including outlines that touch themselves. Returns true
/// if all triangles are counter-clockwise and do not overlap; a self-intersecting outline still
/// gets n - 2 triangles.
/// Cost:   about O(n) for short outlines; the number of tests against other corners is limited to a
///         multiple of n.
bool clip_ears(Outline& outline);

class PairSet;

/// Flips diagonals while that improves the smallest angles or removes a diagonal whose vertices are
/// already joined elsewhere (`taken`). All triangles stay counter-clockwise. Returns false, with
/// nothing changed, if the triangles do not form one connected piece bounded by the outline.
/// Cost:   O(n log n), and O(n) flips.
bool improve_diagonals(Outline& outline, const PairSet& taken);

} // namespace tessora::polygon
