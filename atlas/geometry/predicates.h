/// Exact geometric predicates: the sign is correct for every finite input that does not overflow.
#pragma once

#include "atlas/geometry/vec.h"

namespace tessora::atlas {

/// On which side of the directed line a->b the point c lies: 1 left, -1 right, 0 exactly on it.
/// Source: error-free transformations (Dekker, "A floating-point technique for extending the
/// available precision", 1971); the filter bound is that of Shewchuk, "Adaptive Precision
/// Floating-Point Arithmetic and Fast Robust Geometric Predicates", 1997.
int side_of_line(Vec2 a, Vec2 b, Vec2 c);

} // namespace tessora::atlas
