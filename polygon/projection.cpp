#include "polygon/outline.h"

#include <cmath>

namespace tessora::polygon {

namespace {

Vector area_vector(const std::vector<Vector>& space) {
    Vector sum;
    for (size_t i = 2; i < space.size(); ++i)
        sum += cross(space[i - 1] - space[0], space[i] - space[0]);
    return sum;
}

/// Rounds a slope in -1..1 to a multiple of 2^-12.
double short_slope(double slope) { return std::nearbyint(slope * 4096.0) / 4096.0; }

} // namespace

/// Projects along a direction close to the polygon's normal whose slopes are short binary
/// fractions. The projection of single-precision points is then exact, and collinear corners stay
/// collinear.
bool project(Outline& outline) {
    const Vector area = area_vector(outline.space);
    const double size = std::fabs(area.x) + std::fabs(area.y) + std::fabs(area.z);
    if (!std::isfinite(size) || size == 0.0)
        return false;
    unsigned int axis = 2;
    if (std::fabs(area.x) >= std::fabs(area.y) && std::fabs(area.x) > std::fabs(area.z))
        axis = 0;
    else if (std::fabs(area.y) > std::fabs(area.z))
        axis = 1;
    const bool is_up = area[axis] > 0.0;
    const unsigned int first = (axis + (is_up ? 1u : 2u)) % 3u;
    const unsigned int second = (axis + (is_up ? 2u : 1u)) % 3u;
    const double slope_1 = short_slope(area[first] / area[axis]);
    const double slope_2 = short_slope(area[second] / area[axis]);
    outline.flat.resize(outline.space.size());
    for (size_t i = 0; i < outline.space.size(); ++i) {
        const Vector& p = outline.space[i];
        outline.flat[i] = Point2{p[first] - slope_1 * p[axis], p[second] - slope_2 * p[axis]};
    }
    return true;
}

} // namespace tessora::polygon
