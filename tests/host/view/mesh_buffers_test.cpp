#include "host/view/mesh_buffers.h"
#include "tests/host/mesh/mesh_builder.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

struct Surface {
    std::vector<host::SurfaceVertex> vertices;
    std::vector<uint32_t> indices;
};

Surface surface_of(const host::Mesh& mesh) {
    Surface surface;
    host::make_surface(mesh, surface.vertices, surface.indices);
    return surface;
}

/// Two unit squares that share an edge, bent by an angle along it.
mesh_builder::Parts bent(double degrees) {
    const double turn = degrees * 3.14159265358979 / 180.0;
    mesh_builder::Parts parts;
    for (const double y : {0.0, 1.0}) {
        parts.point(-1, y, 0);
        parts.point(0, y, 0);
        parts.point(std::cos(turn), y, -std::sin(turn));
    }
    parts.polygon({0, 1, 4, 3});
    parts.polygon({1, 2, 5, 4});
    return parts;
}

TEST(MakeSurface, SharesVerticesAcrossASmoothEdge) {
    EXPECT_EQ(surface_of(bent(30).mesh()).vertices.size(), 6u);
}

TEST(MakeSurface, SplitsVerticesAlongACrease) {
    EXPECT_EQ(surface_of(bent(60).mesh()).vertices.size(), 8u);
    EXPECT_EQ(surface_of(mesh_builder::cube().mesh()).vertices.size(), 24u);
}

TEST(MakeSurface, AveragesNormalsAlongASmoothEdge) {
    for (const host::SurfaceVertex& vertex : surface_of(bent(30).mesh()).vertices) {
        const double length = std::sqrt(double(vertex.normal.x) * double(vertex.normal.x) +
                                        double(vertex.normal.z) * double(vertex.normal.z));
        const double lean = std::asin(double(vertex.normal.x) / length) * 180.0 / 3.14159265358979;
        const double wanted =
            vertex.position.x < -0.5f ? 0.0 : (vertex.position.x < 0.5f ? 15.0 : 30.0);
        EXPECT_NEAR(lean, wanted, 0.01);
    }
}

TEST(MakeSurface, TrianglesCoverEachPolygonInItsWinding) {
    const Surface surface = surface_of(mesh_builder::cube().mesh());
    ASSERT_EQ(surface.indices.size(), 36u);
    double volume = 0.0;
    for (size_t i = 0; i < surface.indices.size(); i += 3) {
        MVector p[3];
        for (size_t k = 0; k < 3; ++k) {
            const host::Float3& at = surface.vertices[surface.indices[i + k]].position;
            p[k] = MVector(double(at.x), double(at.y), double(at.z));
        }
        volume += p[0] * (p[1] ^ p[2]) / 6.0;
    }
    EXPECT_NEAR(volume, 1.0, 1e-6);
}

TEST(MakeSurface, AcceptsAMeshWithoutPolygons) {
    const Surface surface = surface_of(host::Mesh());
    EXPECT_TRUE(surface.vertices.empty());
    EXPECT_TRUE(surface.indices.empty());
}

TEST(MakeSurface, AcceptsAPolygonWithoutArea) {
    mesh_builder::Parts parts;
    for (int i = 0; i < 3; ++i)
        parts.point(i, 0, 0);
    parts.polygon({0, 1, 2});
    EXPECT_EQ(surface_of(parts.mesh()).indices.size(), 3u);
}

} // namespace
