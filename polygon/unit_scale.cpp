#include "polygon/unit_scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessora::polygon {
namespace {

/// Distance from the origin, in half sizes of the box, beyond which the mesh is moved. Up to there,
/// the distance costs at most four of the 24 bits of a coordinate, and coordinates stay as they
/// are.
constexpr double k_max_distance = 16.0;

/// Box of the vertices that polygons use; others say nothing about the mesh's size.
struct Box {
    double low[3], high[3];

    Box(const std::vector<double>& exact, const uint32_t* corner_vertex, size_t corners) {
        std::fill(low, low + 3, std::numeric_limits<double>::max());
        std::fill(high, high + 3, std::numeric_limits<double>::lowest());
        for (size_t c = 0; c < corners; ++c)
            for (size_t axis = 0; axis < 3; ++axis) {
                const double x = exact[3 * size_t{corner_vertex[c]} + axis];
                low[axis] = std::min(low[axis], x);
                high[axis] = std::max(high[axis], x);
            }
    }
    bool is_far() const {
        double size = 0.0, reach = 0.0;
        for (size_t axis = 0; axis < 3; ++axis) {
            size = std::max(size, high[axis] - low[axis]);
            reach = std::max({reach, std::fabs(low[axis]), std::fabs(high[axis])});
        }
        return reach > k_max_distance * 0.5 * size;
    }
};

void move_to_origin(const Box& box, std::vector<double>& exact) {
    for (size_t i = 0; i < exact.size(); ++i)
        exact[i] -= 0.5 * box.low[i % 3] + 0.5 * box.high[i % 3];
}

} // namespace

double scale_to_unit(std::vector<double>& exact, const uint32_t* corner_vertex, size_t corners,
                     std::vector<float>& unit_positions) {
    const Box box(exact, corner_vertex, corners);
    if (box.is_far())
        move_to_origin(box, exact);
    double largest = 0.0;
    for (const double x : exact)
        largest = std::max(largest, std::fabs(x));
    // Powers of ten up to 1e22 are exact, so that the division rounds only once, as if the decimal
    // point had been moved.
    double over = 1.0, under = 1.0;
    while (largest > 0.0 && largest / over >= 10.0 && over < 1e22)
        over *= 10.0;
    while (largest > 0.0 && largest * under < 1.0 && under < 1e22)
        under *= 10.0;
    unit_positions.clear();
    unit_positions.reserve(exact.size());
    for (const double x : exact)
        unit_positions.push_back(static_cast<float>(over > 1.0 ? x / over : x * under));
    return over / under;
}

} // namespace tessora::polygon
