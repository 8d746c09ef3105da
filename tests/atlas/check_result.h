/// Judges a result of the engine from the arrays alone, by brute force and without any of its code.
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
    /// Corners in order around the polygon; fanned from the first, diagonals marked false.
    void polygon(const std::vector<uint32_t>& corners);
    /// Neighbours are the two triangles that share exactly that edge by vertex id; an edge of three
    /// or more triangles has none.
    void connect();
    uint32_t faces() const { return uint32_t(indices.size() / 3); }
    tessora::atlas::Mesh view() const;
};

struct Judgement {
    std::vector<std::string> faults; ///< empty: every guarantee holds
    uint32_t charts = 0;
    double seam = 0;        ///< 3D length of edges whose UVs differ, over sqrt(area)
    double l2 = 0;          ///< over the whole mesh, 1 for an isometry
    double worst_chart = 1; ///< greatest L2 of a chart
    double coverage = 0;    ///< UV area over the texture's
};

/// Smallest Euclidean distance between triangles of different charts in the final texture, in
/// texels: behind the caller's aspect correction and margin. Quadratic; infinite for one chart.
double smallest_gap(const TestMesh& mesh, const tessora::atlas::Options& options,
                    const tessora::atlas::Result& result);

/// `packed`: coordinates are those of create(); else those of partition().
/// `overlaps`: also look for overlaps, in time about quadratic in the triangles of a grid cell.
Judgement judge(const TestMesh& mesh, const tessora::atlas::Options& options,
                const tessora::atlas::Result& result, bool packed, bool overlaps);

} // namespace atlas_test
