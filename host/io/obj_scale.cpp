#include "host/io/obj_scale.h"

#include "polygon/unit_scale.h"

#include <algorithm>

namespace host {
namespace {

/// Change of an edge, as a share of its polygon's longest edge, that counts as distortion.
constexpr double k_max_edge_change = 0.1;

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
    document.unit =
        tessora::polygon::scale_to_unit(exact, document.corner_vertex.data(),
                                        document.corner_vertex.size(), document.unit_positions);
    CoarsePolygons coarse;
    for (uint32_t polygon = 0; polygon < document.polygon_count(); ++polygon)
        if (is_polygon_distorted(exact, document, polygon) && coarse.count++ == 0)
            coarse.first = polygon;
    return coarse;
}

} // namespace host
