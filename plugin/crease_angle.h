/// The angle between two faces, computed bit-identically on every system.
#pragma once

#include <maya/MVector.h>

/// Angle of the vector (x, y) with the positive x axis, y >= 0, signed zeros of x included.
/// Units:  radians, 0 to pi; NaN if an argument is NaN or if y + |x| exceeds 1e300.
/// Why:    the last bit of std::atan2 differs between systems, and the angle decides whether an
/// edge
///         is cut. Error below 1.5 units in the last place.
/// Source: argument reduction by a table and a short series: W. J. Cody, W. Waite, "Software Manual
///         for the Elementary Functions", 1980, chapter 11, with a finer table.
double portable_atan2(double y, double x);

/// Angle between two face normals of any length, in degrees, 0 (flat) to 180 (folded onto itself).
/// Single precision with a fixed sequence of roundings, so that a right angle is exactly 90:
/// thresholds compare with `>=`.
float crease_degrees(const MVector& normal_a, const MVector& normal_b);
