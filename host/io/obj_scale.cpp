#include "host/io/obj_scale.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace host {
namespace {

/// Distance from the origin, in half sizes of the box, beyond which the mesh is moved. Up to there,
/// the distance costs at most four of the 24 bits of a coordinate, and coordinates stay as they
/// are.
constexpr double k_max_distance = 16.0;

/// Change of an edge, as a share of its polygon's longest edge, that counts as distortion.
constexpr double k_max_edge_change = 0.1;

/// Box of the vertices that polygons use; others say nothing about the mesh's size.
struct Box {
    double low[3], high[3];

    Box(const std::vector<double>& exact, const ObjDocument& document) {
        std::fill(low, low + 3, std::numeric_limits<double>::max());
        std::fill(high, high + 3, std::numeric_limits<double>::lowest());
        for (const uint32_t vertex : document.corner_vertex)
            for (size_t axis = 0; axis < 3; ++axis) {
                const double x = exact[3 * size_t(vertex) + axis];
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

void narrow(const std::vector<double>& exact, ObjDocument& document) {
    double largest = 0.0;
    for (const double x : exact)
        largest = std::max(largest, std::fabs(x));
    // Powers of ten up to 1e22 are exact, so that the division rounds only once, as if the decimal
    // point in the file had been moved.
    double over = 1.0, under = 1.0;
    while (largest > 0.0 && largest / over >= 10.0 && over < 1e22)
        over *= 10.0;
    while (largest > 0.0 && largest * under < 1.0 && under < 1e22)
        under *= 10.0;
    document.unit = over / under;
    document.unit_positions.reserve(exact.size());
    for (const double x : exact)
        document.unit_positions.push_back(static_cast<float>(over > 1.0 ? x / over : x * under));
}

bool is_polygon_distorted(const std::vector<double>& exact, const ObjDocument& document,
                          uint32_t polygon) {
    const uint32_t begin = document.corner_begin[polygon], end = document.corner_begin[polygon + 1];
    double longest2 = 0.0, change2 = 0.0; // squares of lengths, in the document's unit
    for (uint32_t c = begin; c < end; ++c) {
        const size_t a = 3 * size_t(document.corner_vertex[c]);
        const size_t b = 3 * size_t(document.corner_vertex[c + 1 == end ? begin : c + 1]);
        double length2 = 0.0, edge_change2 = 0.0;
        for (size_t axis = 0; axis < 3; ++axis) {
            const double edge = (exact[b + axis] - exact[a + axis]) / document.unit;
            const double change = double(document.unit_positions[b + axis]) -
                                  double(document.unit_positions[a + axis]) - edge;
            length2 += edge * edge;
            edge_change2 += change * change;
        }
        longest2 = std::max(longest2, length2);
        change2 = std::max(change2, edge_change2);
    }
    return change2 > k_max_edge_change * k_max_edge_change * longest2;
}

} // namespace

CoarsePolygons fit_to_single_precision(std::vector<double>& exact, ObjDocument& document) {
    const Box box(exact, document);
    if (box.is_far())
        move_to_origin(box, exact);
    narrow(exact, document);
    CoarsePolygons coarse;
    for (uint32_t polygon = 0; polygon < document.polygon_count(); ++polygon)
        if (is_polygon_distorted(exact, document, polygon) && coarse.count++ == 0)
            coarse.first = polygon;
    return coarse;
}

} // namespace host
