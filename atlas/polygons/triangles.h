/// The engine's input, made of a polygon mesh.
#pragma once

#include "atlas/polygons/read.h"

namespace tessora::atlas {

struct Triangles {
    uint32_t vertex_count = 0;
    std::vector<float> positions;  ///< 3 per vertex
    std::vector<uint32_t> indices; ///< 3 per triangle
    std::vector<uint32_t> adjacency;
    std::vector<uint32_t> false_edges; ///< k_none = real edge; empty = all are real
    std::vector<uint32_t> corner;      ///< 3 per triangle: the caller's corners

    Mesh view() const;
};

/// Triangulates. Sets all but the adjacency.
/// Errors: std::bad_alloc.
Triangles make_triangles(const MeshArrays& arrays, bool weld);

/// Replaces every vertex by the first one at the same position.
void weld_vertices(const std::vector<float>& positions, std::vector<uint32_t>& corners);

/// Finds the neighbours and opens them at cuts and where normals differ.
/// Errors: std::bad_alloc.
void connect(const MeshArrays& arrays, bool normals_per_corner, Triangles& triangles);

} // namespace tessora::atlas
