#include "atlas/polygons/triangles.h"

#include "atlas/geometry/adjacency.h"
#include "polygon/pair_set.h"
#include "polygon/separate.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <numeric>
#include <tuple>
#include <utility>

namespace tessora::atlas {
namespace {

uint32_t next_edge(uint32_t edge) { return edge % 3 == 2 ? edge - 2 : edge + 1; }

/// The corners with vertices of their own where that is needed, and their triangulation.
polygon::Triangulation divide(const std::vector<float>& positions, bool split_repeats,
                              polygon::SeparateCorners& corners, std::vector<float>& all) {
    if (split_repeats)
        corners.split_repeats();
    all = positions;
    for (size_t added = 0;;) {
        for (; added < corners.copy_of().size(); ++added) {
            const size_t source = 3 * size_t{corners.copy_of()[added]};
            for (size_t k = 0; k < 3; ++k)
                all.push_back(positions[source + k]);
        }
        polygon::Triangulation division = polygon::triangulate(corners.polygons(), all.data());
        // With these polygons isolated, the others may be divided differently: check again.
        const std::vector<uint32_t> torn =
            polygon::torn_polygons(corners.polygons(), all.data(), division);
        if (torn.empty())
            return division;
        for (const uint32_t polygon : torn)
            corners.isolate(polygon);
    }
}

/// Marks the diagonals, those that are an edge of some polygon excepted.
std::vector<uint32_t> find_false_edges(const polygon::Polygons& polygons,
                                       const Triangles& triangles) {
    if (polygons.diagonal_count() == 0)
        return {};
    const polygon::PairSet edges = polygon::edge_pairs(polygons);
    std::vector<uint32_t> false_edges(triangles.indices.size());
    for (uint32_t e = 0; e < false_edges.size(); ++e)
        false_edges[e] =
            edges.contains(triangles.indices[e], triangles.indices[next_edge(e)]) ? k_none : 0;
    return false_edges;
}

/// Finds the half-edge on the other side of one.
class Across {
public:
    explicit Across(const Triangles& triangles) : triangles_(triangles) {}

    /// k_none if there is none.
    uint32_t operator()(uint32_t edge) const {
        const uint32_t face = triangles_.adjacency[edge];
        if (face == k_none)
            return k_none;
        for (uint32_t other = 3 * face; other < 3 * face + 3; ++other)
            if (triangles_.adjacency[other] == edge / 3 && same_ends(edge, other))
                return other;
        return k_none;
    }

private:
    bool same_ends(uint32_t edge, uint32_t other) const {
        const std::vector<uint32_t>& v = triangles_.indices;
        return std::minmax(v[edge], v[next_edge(edge)]) ==
               std::minmax(v[other], v[next_edge(other)]);
    }
    const Triangles& triangles_;
};

/// Whether two normals differ by more than one degree; one without length differs from none.
bool differ(const float* a, const float* b) {
    constexpr double k_cosine = 0.99984769515639127; // of one degree
    double ab = 0, aa = 0, bb = 0;
    for (int k = 0; k < 3; ++k) {
        ab += double{a[k]} * double{b[k]};
        aa += double{a[k]} * double{a[k]};
        bb += double{b[k]} * double{b[k]};
    }
    return aa > 0 && bb > 0 && ab < k_cosine * std::sqrt(aa) * std::sqrt(bb);
}

/// Opens edges on both of their sides.
class Opener {
public:
    Opener(const MeshArrays& arrays, bool normals_per_corner, Triangles& triangles)
        : arrays_(arrays), per_corner_(normals_per_corner), triangles_(triangles),
          across_(triangles) {}

    void run() {
        for (uint32_t edge = 0; edge < triangles_.indices.size(); ++edge) {
            const uint32_t other = across_(edge);
            if (is_cut(edge) || (other != k_none && is_hard(edge, other))) {
                triangles_.adjacency[edge] = k_none;
                if (other != k_none)
                    triangles_.adjacency[other] = k_none;
            }
        }
    }

private:
    bool is_cut(uint32_t edge) const {
        if (arrays_.cuts.empty())
            return false;
        const uint32_t from = triangles_.corner[edge], to = triangles_.corner[next_edge(edge)];
        return follows(from, to) && arrays_.cuts[from] != 0;
    }
    /// Whether corner `to` is the next one of its polygon, and the edge no diagonal.
    bool follows(uint32_t from, uint32_t to) const {
        if (to == from + 1)
            return true;
        const auto end = std::upper_bound(arrays_.offsets.begin(), arrays_.offsets.end(), from);
        return from + 1 == *end && to == *(end - 1);
    }
    bool is_hard(uint32_t edge, uint32_t other) const {
        if (arrays_.normals.empty())
            return false;
        const std::vector<uint32_t>& v = triangles_.indices;
        const bool opposite = v[edge] == v[next_edge(other)];
        const uint32_t from = opposite ? next_edge(other) : other;
        const uint32_t to = opposite ? other : next_edge(other);
        return differ(normal(edge), normal(from)) || differ(normal(next_edge(edge)), normal(to));
    }
    const float* normal(uint32_t edge) const {
        const uint32_t corner = triangles_.corner[edge];
        return &arrays_.normals[3 * size_t{per_corner_ ? corner : arrays_.corners[corner]}];
    }

    const MeshArrays& arrays_;
    bool per_corner_;
    Triangles& triangles_;
    Across across_;
};

} // namespace

Mesh Triangles::view() const {
    Mesh mesh;
    mesh.positions = {positions.data(), positions.size()};
    mesh.indices = {indices.data(), indices.size()};
    mesh.adjacency = {adjacency.data(), adjacency.size()};
    mesh.false_edges = {false_edges.data(), false_edges.size()};
    return mesh;
}

void weld_vertices(const std::vector<float>& positions, std::vector<uint32_t>& corners) {
    const auto place = [&](uint32_t v) {
        const float* const p = &positions[3 * size_t{v}];
        return std::make_tuple(p[0], p[1], p[2]);
    };
    std::vector<uint32_t> order(positions.size() / 3);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return place(a) != place(b) ? place(a) < place(b) : a < b;
    });
    std::vector<uint32_t> first(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        first[order[i]] =
            i > 0 && place(order[i]) == place(order[i - 1]) ? first[order[i - 1]] : order[i];
    for (uint32_t& vertex : corners)
        vertex = first[vertex];
}

Triangles make_triangles(const MeshArrays& arrays, bool weld) {
    std::vector<uint32_t> vertices = arrays.corners;
    if (weld)
        weld_vertices(arrays.positions, vertices);
    polygon::SeparateCorners corners(
        {arrays.offsets.data(), arrays.polygon_count(), vertices.data()}, arrays.vertex_count);
    Triangles triangles;
    // Vertices that are only welded to one another must not come apart again.
    const polygon::Triangulation division =
        divide(arrays.positions, !weld, corners, triangles.positions);
    const polygon::Polygons polygons = corners.polygons();
    triangles.vertex_count = corners.vertex_count();
    triangles.corner = division.corners;
    triangles.indices.resize(triangles.corner.size());
    size_t e = 0;
    for (uint32_t p = 0; p < polygons.count; ++p)
        for (; e < polygon::Triangulation::first_corner(polygons, p + 1); ++e) {
            triangles.corner[e] += polygons.corner_begin[p];
            triangles.indices[e] = polygons.corner_vertex[triangles.corner[e]];
        }
    triangles.false_edges = find_false_edges(polygons, triangles);
    if (!arrays.false_edges.empty()) {
        triangles.false_edges.resize(triangles.indices.size());
        for (size_t c = 0; c < arrays.false_edges.size(); ++c)
            triangles.false_edges[c] = arrays.false_edges[c] != 0 ? 0 : k_none;
    }
    return triangles;
}

void connect(const MeshArrays& arrays, bool normals_per_corner, Triangles& triangles) {
    triangles.adjacency = arrays.neighbours;
    if (triangles.adjacency.empty()) {
        triangles.adjacency.resize(triangles.indices.size());
        const VertexPositions positions = {
            reinterpret_cast<const unsigned char*>(triangles.positions.data()), 3 * sizeof(float)};
        const auto faces = static_cast<uint32_t>(triangles.indices.size() / 3);
        if (face_adjacency(triangles.indices.data(), faces, triangles.vertex_count, positions,
                           triangles.adjacency.data()) != AdjacencyResult::ok)
            throw std::bad_alloc();
    }
    if (!arrays.cuts.empty() || !arrays.normals.empty())
        Opener(arrays, normals_per_corner, triangles).run();
}

} // namespace tessora::atlas
