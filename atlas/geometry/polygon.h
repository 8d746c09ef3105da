/// Polygons in space: whether any way of dividing one into triangles will do.
#pragma once

#include "atlas/geometry/vec.h"

#include <vector>

namespace tessora::atlas {

/// A polygon counts as convex when every corner turns left about its area vector by more than this
/// share of the vector's squared length. `measure` and `verify` hold the same figure.
constexpr double k_least_turn = 1e-3;

/// How far corner i turns left about an axis: the cross product of its two edges along the axis.
inline double turn(const std::vector<Vec3>& corners, size_t i, Vec3 axis) {
    const size_t n = corners.size();
    const Vec3 here = corners[i];
    return dot(cross(here - corners[(i + n - 1) % n], corners[(i + 1) % n] - here), axis);
}

} // namespace tessora::atlas
