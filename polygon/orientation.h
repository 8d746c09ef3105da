/// Exact sign of a triangle's area in the plane.
///
/// A floating-point filter decides most cases; otherwise differences, products and sums are
/// computed exactly as expansions of two or more numbers.
/// Source: J. R. Shewchuk, "Adaptive Precision Floating-Point Arithmetic and Fast Robust Geometric
///         Predicates" (1997), sections 2 and 4.
#pragma once

namespace tessora::polygon {

struct Point2 {
    double x;
    double y;
};

inline bool operator==(const Point2& a, const Point2& b) { return a.x == b.x && a.y == b.y; }
inline bool operator!=(const Point2& a, const Point2& b) { return !(a == b); }

/// +1 if a, b, c turn counter-clockwise, -1 if clockwise, 0 if collinear.
/// Limits: finite coordinates below 1e150 in magnitude; products must not underflow
///         (single-precision coordinates are far from both limits).
int orientation(const Point2& a, const Point2& b, const Point2& c);

} // namespace tessora::polygon
