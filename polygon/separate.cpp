#include "polygon/separate.h"

#include "polygon/pair_set.h"
#include "polygon/twins.h"

#include <algorithm>
#include <utility>

namespace tessora::polygon {

namespace {

using VertexPairs = std::vector<std::pair<uint32_t, uint32_t>>;

/// One polygon's vertices and triangles.
struct Piece {
    IndexSpan vertices;
    const uint32_t* triangles; ///< corner numbers
    const float* points;

    uint32_t entries() const { return 3 * (vertices.size() - 2); }
    uint32_t vertex(uint32_t entry) const { return vertices[triangles[entry]]; }
};

bool same_place(const float* points, uint32_t a, uint32_t b) {
    const float *const p = points + 3 * size_t{a}, *const q = points + 3 * size_t{b};
    return p[0] == q[0] && p[1] == q[1] && p[2] == q[2];
}

/// The edges of the polygon's triangles that have two corners in one place.
VertexPairs null_edges(const Piece& piece) {
    VertexPairs edges;
    for (uint32_t i = 0; i < piece.entries(); i += 3) {
        const uint32_t a = piece.vertex(i), b = piece.vertex(i + 1), c = piece.vertex(i + 2);
        if (same_place(piece.points, a, b) || same_place(piece.points, b, c) ||
            same_place(piece.points, c, a))
            for (const auto& ends : {std::minmax({a, b}), std::minmax({b, c}), std::minmax({c, a})})
                edges.push_back(ends);
    }
    return edges;
}

/// Calls visit(a, b) with the end vertices of every diagonal, twice per diagonal. Diagonals that
/// only cut off a triangle without area are left out.
template <class Visit>
void visit_diagonals(const Piece& piece, Visit visit) {
    const uint32_t corners = piece.vertices.size();
    if (corners == 3)
        return;
    const VertexPairs left_out = null_edges(piece);
    for (uint32_t i = 0; i < piece.entries(); ++i) {
        const uint32_t next = i % 3 == 2 ? i - 2 : i + 1;
        const uint32_t a = piece.triangles[i], b = piece.triangles[next];
        const uint32_t apart = a < b ? b - a : a - b;
        const std::pair<uint32_t, uint32_t> ends =
            std::minmax({piece.vertex(i), piece.vertex(next)});
        if (apart != 1 && apart != corners - 1 &&
            std::find(left_out.begin(), left_out.end(), ends) == left_out.end())
            visit(ends.first, ends.second);
    }
}

} // namespace

void SeparateCorners::add_copy(uint32_t& vertex) {
    const uint32_t original = vertex < vertex_count_ ? vertex : copy_of_[vertex - vertex_count_];
    vertex = vertex_count();
    copy_of_.push_back(original);
}

uint64_t SeparateCorners::split_repeats() {
    uint64_t polygons = 0;
    // Per vertex, the last polygon that used it, counted from 1.
    std::vector<uint32_t> named_by(vertex_count_, 0);
    for (uint32_t p = 0; p < polygons_; ++p) {
        const size_t before = copy_of_.size();
        for (uint32_t c = corner_begin_[p]; c < corner_begin_[p + 1]; ++c) {
            uint32_t& vertex = corner_vertex_[c];
            if (named_by[vertex] != p + 1)
                named_by[vertex] = p + 1;
            else
                add_copy(vertex);
        }
        polygons += copy_of_.size() > before ? 1 : 0;
    }
    return polygons;
}

void SeparateCorners::isolate(uint32_t polygon) {
    for (uint32_t c = corner_begin_[polygon]; c < corner_begin_[polygon + 1]; ++c)
        add_copy(corner_vertex_[c]);
}

std::vector<uint32_t> torn_polygons(const Polygons& polygons, const float* points,
                                    const Triangulation& triangulation) {
    std::vector<uint32_t> torn;
    if (polygons.diagonal_count() == 0)
        return torn;
    PairSet joined = edge_pairs(polygons);
    const std::vector<uint32_t> twins = first_twins(polygons);
    std::vector<uint8_t> is_torn(polygons.count, 0);
    for (uint32_t p = 0; p < polygons.count; ++p) {
        if (twins[p] != p) {
            is_torn[p] = is_torn[twins[p]];
        } else {
            const Piece piece = {polygons.vertices(p),
                                 &triangulation.corners[Triangulation::first_corner(polygons, p)],
                                 points};
            visit_diagonals(piece,
                            [&](uint32_t a, uint32_t b) { is_torn[p] |= joined.contains(a, b); });
            if (!is_torn[p])
                visit_diagonals(piece, [&](uint32_t a, uint32_t b) { joined.insert(a, b); });
        }
        if (is_torn[p])
            torn.push_back(p);
    }
    return torn;
}

} // namespace tessora::polygon
