/// A vector of three single precision numbers.
#pragma once

#include <maya/MStatus.h>

class MVector;

class MHOST_EXPORT MFloatVector {
public:
    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;

    MFloatVector() = default;
    MFloatVector(float xx, float yy, float zz = 0.0f) : x(xx), y(yy), z(zz) {}
    MFloatVector(const MVector& other); ///< rounds each component

    float operator[](unsigned int index) const { return index == 0 ? x : (index == 1 ? y : z); }
    float& operator[](unsigned int index) { return index == 0 ? x : (index == 1 ? y : z); }

    MFloatVector operator+(const MFloatVector& b) const {
        return MFloatVector(x + b.x, y + b.y, z + b.z);
    }
    MFloatVector operator-(const MFloatVector& b) const {
        return MFloatVector(x - b.x, y - b.y, z - b.z);
    }
    MFloatVector operator-() const { return MFloatVector(-x, -y, -z); }
    MFloatVector operator*(float s) const { return MFloatVector(x * s, y * s, z * s); }
    MFloatVector operator/(float s) const { return MFloatVector(x / s, y / s, z / s); }
    MFloatVector& operator+=(const MFloatVector& b) { return *this = *this + b; }
    MFloatVector& operator-=(const MFloatVector& b) { return *this = *this - b; }

    /// operator* is the dot product, operator^ the cross product.
    float operator*(const MFloatVector& b) const { return x * b.x + y * b.y + z * b.z; }
    MFloatVector operator^(const MFloatVector& b) const {
        return MFloatVector(y * b.z - z * b.y, z * b.x - x * b.z, x * b.y - y * b.x);
    }

    bool operator==(const MFloatVector& b) const { return x == b.x && y == b.y && z == b.z; }
    bool operator!=(const MFloatVector& b) const { return !(*this == b); }
    bool isEquivalent(const MFloatVector& other, float tolerance = 1.0e-5f) const;

    float length() const;
    /// The unit vector; a zero vector is returned unchanged.
    MFloatVector normal() const;
    MStatus normalize();
};
