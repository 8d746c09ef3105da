/// Meshes for tests, generated.
#pragma once

#include "host/mesh/mesh.h"

#include <cmath>
#include <vector>

namespace mesh_builder {

struct Parts {
    std::vector<host::Float3> points;
    std::vector<std::uint32_t> counts;
    std::vector<std::uint32_t> vertices;

    std::uint32_t point(double x, double y, double z) {
        points.push_back(
            host::Float3{static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
        return static_cast<std::uint32_t>(points.size() - 1);
    }
    void polygon(const std::vector<std::uint32_t>& ids) {
        counts.push_back(static_cast<std::uint32_t>(ids.size()));
        vertices.insert(vertices.end(), ids.begin(), ids.end());
    }
    host::Mesh mesh() const {
        host::Mesh made;
        host::Mesh::make(points, counts, vertices, made);
        return made;
    }
};

/// Unit cube: six quads with outward winding.
inline Parts cube() {
    Parts parts;
    for (int i = 0; i < 8; ++i)
        parts.point(i & 1, (i >> 1) & 1, (i >> 2) & 1);
    for (const auto& quad : std::vector<std::vector<std::uint32_t>>{
             {0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}})
        parts.polygon(quad);
    return parts;
}

/// A grid of quads in the xy plane, wound counter-clockwise.
inline Parts grid(std::uint32_t columns, std::uint32_t rows) {
    Parts parts;
    for (std::uint32_t r = 0; r <= rows; ++r)
        for (std::uint32_t c = 0; c <= columns; ++c)
            parts.point(c, r, 0);
    for (std::uint32_t r = 0; r < rows; ++r)
        for (std::uint32_t c = 0; c < columns; ++c) {
            const std::uint32_t a = r * (columns + 1) + c;
            parts.polygon({a, a + 1, a + columns + 2, a + columns + 1});
        }
    return parts;
}

/// A disk of triangles around vertex 0.
inline Parts fan(std::uint32_t spokes) {
    Parts parts;
    parts.point(0, 0, 1);
    for (std::uint32_t i = 0; i < spokes; ++i) {
        const double angle = 6.283185307179586 * i / spokes;
        parts.point(std::cos(angle), std::sin(angle), 0);
    }
    for (std::uint32_t i = 0; i < spokes; ++i)
        parts.polygon({0, 1 + i, 1 + (i + 1) % spokes});
    return parts;
}

/// Embeds a planar polygon in space: point (x, y) becomes origin + x * right + y * up.
struct Placement {
    MVector origin;
    MVector right = MVector(1, 0, 0);
    MVector up = MVector(0, 1, 0);
};
inline Parts outline(const std::vector<std::pair<double, double>>& points,
                     const Placement& placement = Placement()) {
    Parts parts;
    std::vector<std::uint32_t> ids;
    for (const auto& p : points) {
        const MVector at = placement.origin + placement.right * p.first + placement.up * p.second;
        ids.push_back(parts.point(at.x, at.y, at.z));
    }
    parts.polygon(ids);
    return parts;
}

} // namespace mesh_builder
