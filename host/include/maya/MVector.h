/// A vector of three double precision numbers, such as a direction, a difference of points or a
/// normal.
#pragma once

#include <maya/MStatus.h>

class MFloatVector;
class MMatrix;
class MPoint;

class MHOST_EXPORT MVector {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    MVector() = default;
    MVector(double xx, double yy, double zz = 0.0) : x(xx), y(yy), z(zz) {}
    MVector(const MPoint& point); ///< drops w
    MVector(const MFloatVector& other);
    explicit MVector(const double values[3]) : x(values[0]), y(values[1]), z(values[2]) {}

    double operator[](unsigned int index) const { return index == 0 ? x : (index == 1 ? y : z); }
    double& operator[](unsigned int index) { return index == 0 ? x : (index == 1 ? y : z); }

    MVector operator+(const MVector& b) const { return MVector(x + b.x, y + b.y, z + b.z); }
    MVector operator-(const MVector& b) const { return MVector(x - b.x, y - b.y, z - b.z); }
    MVector operator-() const { return MVector(-x, -y, -z); }
    MVector operator*(double s) const { return MVector(x * s, y * s, z * s); }
    MVector operator/(double s) const { return MVector(x / s, y / s, z / s); }
    MVector& operator+=(const MVector& b) { return *this = *this + b; }
    MVector& operator-=(const MVector& b) { return *this = *this - b; }
    MVector& operator*=(double s) { return *this = *this * s; }
    MVector& operator/=(double s) { return *this = *this / s; }

    /// operator* is the dot product, operator^ the cross product.
    double operator*(const MVector& b) const { return x * b.x + y * b.y + z * b.z; }
    MVector operator^(const MVector& b) const {
        return MVector(y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x);
    }
    /// Row vector times matrix; vectors are not affected by translation.
    MVector operator*(const MMatrix& matrix) const;

    bool operator==(const MVector& b) const { return x == b.x && y == b.y && z == b.z; }
    bool operator!=(const MVector& b) const { return !(*this == b); }
    /// Whether the length of the difference is at most `tolerance`.
    bool isEquivalent(const MVector& other, double tolerance = 1.0e-10) const;

    double length() const;
    /// The unit vector; a zero vector is returned unchanged.
    MVector normal() const;
    MStatus normalize();
    /// Angle between the vectors in radians, 0 to pi; 0 if either is a zero vector.
    double angle(const MVector& other) const;
    MStatus get(double values[3]) const;
};

inline MVector operator*(double s, const MVector& v) { return v * s; }
