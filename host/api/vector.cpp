#include <maya/MFloatVector.h>
#include <maya/MMatrix.h>
#include <maya/MPoint.h>
#include <maya/MVector.h>

#include <cmath>

MVector::MVector(const MPoint& point) : x(point.x), y(point.y), z(point.z) {}
MVector::MVector(const MFloatVector& other)
    : x(static_cast<double>(other.x)), y(static_cast<double>(other.y)),
      z(static_cast<double>(other.z)) {}

MVector MVector::operator*(const MMatrix& m) const {
    return MVector(x * m[0][0] + y * m[1][0] + z * m[2][0], x * m[0][1] + y * m[1][1] + z * m[2][1],
                   x * m[0][2] + y * m[1][2] + z * m[2][2]);
}

bool MVector::isEquivalent(const MVector& other, double tolerance) const {
    return (*this - other).length() <= tolerance;
}

double MVector::length() const { return std::sqrt(x * x + y * y + z * z); }

MVector MVector::normal() const {
    MVector result = *this;
    result.normalize();
    return result;
}

MStatus MVector::normalize() {
    const double size = length();
    if (size > 0.0)
        *this /= size;
    return MS::kSuccess;
}

double MVector::angle(const MVector& other) const {
    // More accurate for small angles than the arc cosine of the dot product.
    return std::atan2((*this ^ other).length(), *this * other);
}

MStatus MVector::get(double values[3]) const {
    values[0] = x;
    values[1] = y;
    values[2] = z;
    return MS::kSuccess;
}

MFloatVector::MFloatVector(const MVector& other)
    : x(static_cast<float>(other.x)), y(static_cast<float>(other.y)),
      z(static_cast<float>(other.z)) {}

bool MFloatVector::isEquivalent(const MFloatVector& other, float tolerance) const {
    return (*this - other).length() <= tolerance;
}

float MFloatVector::length() const { return std::sqrt(x * x + y * y + z * z); }

MFloatVector MFloatVector::normal() const {
    MFloatVector result = *this;
    result.normalize();
    return result;
}

MStatus MFloatVector::normalize() {
    const float size = length();
    if (size > 0.0f)
        *this = *this / size;
    return MS::kSuccess;
}

MVector MPoint::operator-(const MPoint& other) const {
    MPoint a = *this;
    MPoint b = other;
    a.cartesianize();
    b.cartesianize();
    return MVector(a.x - b.x, a.y - b.y, a.z - b.z);
}

MPoint MPoint::operator*(const MMatrix& m) const {
    return MPoint(x * m[0][0] + y * m[1][0] + z * m[2][0] + w * m[3][0],
                  x * m[0][1] + y * m[1][1] + z * m[2][1] + w * m[3][1],
                  x * m[0][2] + y * m[1][2] + z * m[2][2] + w * m[3][2],
                  x * m[0][3] + y * m[1][3] + z * m[2][3] + w * m[3][3]);
}

bool MPoint::isEquivalent(const MPoint& other, double tolerance) const {
    return distanceTo(other) <= tolerance;
}

double MPoint::distanceTo(const MPoint& other) const { return (*this - other).length(); }

MPoint& MPoint::cartesianize() {
    if (w != 0.0 && w != 1.0) {
        x /= w;
        y /= w;
        z /= w;
        w = 1.0;
    }
    return *this;
}

MStatus MPoint::get(double values[4]) const {
    values[0] = x;
    values[1] = y;
    values[2] = z;
    values[3] = w;
    return MS::kSuccess;
}
