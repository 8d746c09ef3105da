/// The polygons of a mesh as plain arrays, and the vectors that their geometry is computed with.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace tessora::polygon {

/// A read-only range of an array of indices.
class IndexSpan {
public:
    IndexSpan(const uint32_t* begin, const uint32_t* end) : begin_(begin), end_(end) {}
    const uint32_t* begin() const { return begin_; }
    const uint32_t* end() const { return end_; }
    uint32_t size() const { return static_cast<uint32_t>(end_ - begin_); }
    uint32_t operator[](uint32_t index) const { return begin_[index]; }

private:
    const uint32_t* begin_;
    const uint32_t* end_;
};

/// Polygon p has the corners corner_begin[p] .. corner_begin[p+1]-1, in winding order; each corner
/// is at a vertex. The arrays are the caller's.
/// Limits: at least three corners per polygon.
struct Polygons {
    const uint32_t* corner_begin = nullptr; ///< count + 1 entries, the first 0
    uint32_t count = 0;
    const uint32_t* corner_vertex = nullptr;

    uint32_t corner_count() const { return count == 0 ? 0 : corner_begin[count]; }
    uint32_t corners_of(uint32_t polygon) const {
        return corner_begin[polygon + 1] - corner_begin[polygon];
    }
    IndexSpan vertices(uint32_t polygon) const {
        return IndexSpan(corner_vertex + corner_begin[polygon],
                         corner_vertex + corner_begin[polygon + 1]);
    }
    uint32_t triangle_count() const { return corner_count() - 2 * count; }
    /// Of all triangulations together.
    uint32_t diagonal_count() const { return corner_count() - 3 * count; }
};

struct Vector {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    Vector() = default;
    Vector(double xx, double yy, double zz) : x(xx), y(yy), z(zz) {}

    double operator[](unsigned axis) const { return axis == 0 ? x : (axis == 1 ? y : z); }
    Vector operator-(const Vector& b) const { return Vector(x - b.x, y - b.y, z - b.z); }
    Vector& operator+=(const Vector& b) { return *this = Vector(x + b.x, y + b.y, z + b.z); }
    bool operator==(const Vector& b) const { return x == b.x && y == b.y && z == b.z; }
    double length() const { return std::sqrt(x * x + y * y + z * z); }
};

inline double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline Vector cross(const Vector& a, const Vector& b) {
    return Vector(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

} // namespace tessora::polygon
