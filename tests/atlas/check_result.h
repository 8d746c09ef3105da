/// Checks a result of the engine by brute force, from its arrays alone and without any of its code.
#pragma once

#include "atlas/atlas.h"

#include <string>
#include <vector>

namespace atlas_test {

/// Owns the arrays of a mesh.
struct TestMesh {
    std::vector<float> positions;
    std::vector<uint32_t> indices, adjacency, false_edges;

    uint32_t vertex(float x, float y, float z) {
        for (float coordinate : {x, y, z})
            positions.push_back(coordinate);
        return uint32_t(positions.size() / 3 - 1);
    }
    void triangle(uint32_t a, uint32_t b, uint32_t c) {
        for (uint32_t v : {a, b, c})
            indices.push_back(v);
    }
    /// Appends a polygon as a fan around its first corner; diagonals are false edges.
    void polygon(const std::vector<uint32_t>& corners);
    /// Fills the adjacency: triangles are neighbours if exactly two share an edge by vertex ids.
    void connect();
    uint32_t faces() const { return uint32_t(indices.size() / 3); }
    tessora::atlas::Mesh view() const;
};

struct Judgement {
    std::vector<std::string> faults; ///< at most 20; empty if every guarantee holds
    uint32_t charts = 0;
    double seam = 0;        ///< 3D length of edges whose UVs differ, over sqrt(area)
    double l2 = 0;          ///< over the whole mesh, 1 for an isometry
    double worst_chart = 1; ///< greatest L2 of a chart
    double coverage = 0;    ///< UV area over the texture's
};

/// Smallest Euclidean distance in texels between triangles of different charts in the final
/// texture, after the caller's aspect correction and margin. Quadratic time; 1e150 for a single
/// chart.
double smallest_gap(const TestMesh& mesh, const tessora::atlas::Options& options,
                    const tessora::atlas::Result& result);

/// `packed`: coordinates are those of create(); else those of partition().
/// `overlaps`: also look for overlapping triangles, which takes most of the time.
Judgement judge(const TestMesh& mesh, const tessora::atlas::Options& options,
                const tessora::atlas::Result& result, bool packed, bool overlaps);

} // namespace atlas_test
