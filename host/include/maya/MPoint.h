/// A point with homogeneous coordinates: x, y, z and a weight w, normally 1.
#pragma once

#include <maya/MVector.h>

class MMatrix;

class MHOST_EXPORT MPoint {
public:
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double w = 1.0;

    MPoint() = default;
    MPoint(double xx, double yy, double zz = 0.0, double ww = 1.0) : x(xx), y(yy), z(zz), w(ww) {}
    MPoint(const MVector& vector) : x(vector.x), y(vector.y), z(vector.z) {}

    double operator[](unsigned int index) const {
        return index == 0 ? x : (index == 1 ? y : (index == 2 ? z : w));
    }
    double& operator[](unsigned int index) {
        return index == 0 ? x : (index == 1 ? y : (index == 2 ? z : w));
    }

    /// Difference of two points, after division by their weights.
    MVector operator-(const MPoint& other) const;
    MPoint operator+(const MVector& v) const { return MPoint(x + v.x, y + v.y, z + v.z, w); }
    MPoint operator-(const MVector& v) const { return MPoint(x - v.x, y - v.y, z - v.z, w); }
    MPoint& operator+=(const MVector& v) { return *this = *this + v; }
    MPoint& operator-=(const MVector& v) { return *this = *this - v; }
    /// Row vector times matrix.
    MPoint operator*(const MMatrix& matrix) const;
    MPoint& operator*=(const MMatrix& matrix) { return *this = *this * matrix; }

    bool operator==(const MPoint& b) const { return x == b.x && y == b.y && z == b.z && w == b.w; }
    bool operator!=(const MPoint& b) const { return !(*this == b); }
    bool isEquivalent(const MPoint& other, double tolerance = 1.0e-10) const;

    double distanceTo(const MPoint& other) const;
    /// Divides by w, making w 1; no effect if w is 0.
    MPoint& cartesianize();
    MStatus get(double values[4]) const;
};
