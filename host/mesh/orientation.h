/// The sign of a triangle's area in the plane, without error.
///
/// Differences, products and sums of floating-point numbers are kept as sums of two or more numbers
/// that lose nothing; that costs time only when the rounded result is too small to be trusted.
/// Source: J. R. Shewchuk, "Adaptive Precision Floating-Point Arithmetic and Fast Robust Geometric
/// Predicates" (1997), sections 2 and 4.
#pragma once

#include <maya/MTypes.h>

namespace host {

struct Point2 {
    double x;
    double y;
};

inline bool operator==(const Point2& a, const Point2& b) { return a.x == b.x && a.y == b.y; }
inline bool operator!=(const Point2& a, const Point2& b) { return !(a == b); }

/// +1 when a, b, c turn counter-clockwise, -1 when clockwise, 0 when they lie on a line.
/// Limits: finite coordinates below 1e150 in magnitude; products must not underflow (either side of
///         the single-precision range is far from both).
MHOST_EXPORT int orientation(const Point2& a, const Point2& b, const Point2& c);

} // namespace host
