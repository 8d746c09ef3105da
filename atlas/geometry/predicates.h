/// Exact geometric predicates: the sign is right for every finite input short of overflow, so that
/// "these two borders do not cross" is a fact and not an estimate.
#pragma once

#include "atlas/geometry/vec.h"

namespace tessora::atlas {

/// Side of c seen from the directed line a->b: 1 left, -1 right, 0 exactly on it.
/// Source: error-free transformations (Dekker, "A floating-point technique for extending the
/// available precision", 1971); the filter bound is that of Shewchuk, "Adaptive Precision
/// Floating-Point Arithmetic and Fast Robust Geometric Predicates", 1997.
int side_of_line(Vec2 a, Vec2 b, Vec2 c);

} // namespace tessora::atlas
