/// The angle at which two faces meet, the same bits on every system.
#pragma once

#include <maya/MVector.h>

/// Angle of the vector (x, y) with the positive x axis, y >= 0, signed zeros of x included.
/// Units:  radians, 0 to pi; not a number when an argument is not one or exceeds 1e300.
/// Why:    the mathematical library's function differs in its last bit between systems, and an
///         angle decides whether an edge is cut. Error below 1.5 units in the last place.
/// Source: argument reduction by a table and a short series: W. J. Cody, W. Waite, "Software Manual
///         for the Elementary Functions", 1980, chapter 11, with a finer table.
double portable_atan2(double y, double x);

/// Angle between two face normals of any length, in degrees, 0 (flat) to 180 (folded onto itself).
/// Single precision, by a conversion whose roundings are fixed: thresholds compare with `>=`, and a
/// right angle gives 90 exactly.
float crease_degrees(const MVector& normal_a, const MVector& normal_b);
