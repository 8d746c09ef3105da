// Compares the mesh exchange with a slow reference implementation on random meshes.
#include "faultpoint/faultpoint.h"
#include "plugin/seams.h"
#include "plugin/uv_updater.h"
#include "tests/plugin/collected.h"
#include "tests/plugin/literal_exchange.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using fixtures::Mesh;

class Exchange : public testing::TestWithParam<uint32_t> {
protected:
    Exchange() : random_(GetParam()) {}

    uint32_t below(uint32_t limit) { return random_() % limit; }

    Mesh random_mesh() {
        const uint32_t seed = random_();
        switch (below(8)) {
        case 0:
            return fixtures::hills(2 + int(below(6)), seed);
        case 1:
            return fixtures::hub(3 + int(below(20)));
        case 2:
            return fixtures::ring(4 + int(below(5)), 4 + int(below(4)));
        case 3:
            return fixtures::concave_ngon(1 + int(below(8)));
        case 4:
            return fixtures::polygon_with_repeated_vertices();
        case 5:
            return fixtures::fold(double(below(5)) - 2, double(below(5)) - 2);
        default:
            return fixtures::tangle(1 + int(below(30)), seed, below(2) == 0);
        }
    }

    UnwrapSettings random_settings() {
        const double angles[] = {0, 30, 45, 89.99, 90, 120, 180};
        UnwrapSettings settings = plain_settings();
        settings.keep_seams = below(2) == 0;
        settings.use_grooves = below(2) == 0;
        settings.use_ridges = below(2) == 0;
        settings.groove_angle = angles[below(7)];
        settings.ridge_angle = angles[below(7)];
        return settings;
    }

    std::mt19937 random_;
};

TEST_P(Exchange, FindsTheSameSeamsAsTheReference) {
    for (int round = 0; round < 40; ++round) {
        const Mesh fixture = random_mesh();
        MObject mesh = make_host_mesh(fixture, fixtures::random_shells(fixture, 3, random_()));
        EdgeTable edges;
        ASSERT_TRUE(edges.build(mesh, static_cast<uint32_t>(fixture.points.size())));
        ASSERT_EQ(values_of(find_seam_edges(mesh, "map1", edges)), literal_seam_edges(mesh, "map1"))
            << fixture.name << ", seed " << GetParam() << ", round " << round;
    }
}

TEST_P(Exchange, CollectsTheSameListsAsTheReference) {
    for (int round = 0; round < 40; ++round) {
        const Mesh fixture = random_mesh();
        const UnwrapSettings settings = random_settings();
        MObject mesh = make_host_mesh(fixture, fixtures::random_shells(fixture, 3, random_()));
        const LiteralData expected =
            literal_collect(settings, mesh, literal_seam_edges(mesh, "map1"));
        Collected result;
        collect(settings, mesh, result);
        ASSERT_TRUE(result.status);
        const auto where = testing::Message()
                           << fixture.name << ", seed " << GetParam() << ", round " << round;
        ASSERT_EQ(result.indices(), expected.indices) << where;
        ASSERT_EQ(result.real_edges(), expected.real_edges) << where;
        ASSERT_EQ(result.cut_edges(), expected.cut_edges) << where;
        ASSERT_EQ(values_of(result.seam_pairs), expected.seam_pairs) << where;
        ASSERT_EQ(result.data.face_corners.count(), expected.face_corners.size()) << where;
        for (uint32_t p = 0; p < result.data.face_corners.count(); ++p)
            ASSERT_EQ(result.corners(p), expected.face_corners[p]) << where;
    }
}

TEST_P(Exchange, KeepsTheLengthsOfItsListsConsistent) {
    for (int round = 0; round < 40; ++round) {
        const Mesh fixture = random_mesh();
        Collected result;
        collect(random_settings(), make_host_mesh(fixture), result);
        const uint32_t count = result.data.indices.count();
        ASSERT_EQ(count % 3, 0u);
        ASSERT_EQ(result.data.cut_edges.count(), count);
        ASSERT_EQ(result.data.real_edges.count(), count);
        ASSERT_EQ(result.data.face_corners.count(), fixture.polygons.size());
        ASSERT_EQ(result.data.vertices.count(), fixture.points.size());
        for (const uint32_t id : result.indices())
            ASSERT_LT(id, fixture.points.size());
        for (uint32_t p = 0; p < fixture.polygons.size(); ++p)
            for (const uint32_t place : result.corners(p))
                ASSERT_LT(place, fixture.polygons[p].size());
        for (uint32_t i = 0; i < count; ++i) // a diagonal is never cut
            ASSERT_TRUE(result.real_edges()[i] != 0 || result.cut_edges()[i] == 0);
    }
}

TEST_P(Exchange, SubtractsTheSameSeamsAsTheReference) {
    for (int round = 0; round < 200; ++round) {
        std::vector<int> lists[2];
        for (auto& list : lists)
            for (uint32_t i = below(30) * 2; i-- > 0;)
                list.push_back(int(below(6)));
        MIntArray result = int_array(lists[0]);
        subtract_seams(result, int_array(lists[1]));
        ASSERT_EQ(values_of(result), literal_subtract(lists[0], lists[1]))
            << "seed " << GetParam() << ", round " << round;
    }
}

TEST_P(Exchange, WritesTheSameUvsAsTheReference) {
    for (int round = 0; round < 20; ++round) {
        const Mesh fixture = random_mesh();
        MObject mesh = make_host_mesh(fixture);
        UnwrapSettings settings = plain_settings();
        Collected data;
        collect(settings, mesh, data);
        // The atlas is arbitrary: each triangle corner gets a random atlas vertex.
        array<Vertex> vertices;
        array<uint32_t> indices;
        for (uint32_t i = 0; i < 50; ++i)
            vertices.append({0, 0, 0, float(i), float(i) / 2});
        std::vector<std::vector<uint32_t>> face_corners;
        std::vector<int> counts;
        for (uint32_t p = 0; p < data.data.face_corners.count(); ++p) {
            face_corners.push_back(data.corners(p));
            counts.push_back(int(fixture.polygons[p].size()));
            for (size_t i = 0; i < face_corners.back().size(); ++i)
                indices.append(below(50));
        }
        const Unwrapper unwrapper(&settings);
        ASSERT_TRUE(apply_uvs(unwrapper, mesh, vertices, indices, data.data.face_corners));
        ASSERT_EQ(layout_of(mesh, "map1").ids,
                  literal_corner_uvs(counts, face_corners, Collected::values(indices)))
            << fixture.name << ", seed " << GetParam() << ", round " << round;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Exchange, testing::Range(1u, 9u));

// ---- cost ---------------------------------------------------------------------------------------

/// Counts the passes of a fault point during its lifetime.
class Calls {
public:
    explicit Calls(const char* point) : point_(point), scope_(point, MStatus::kFailure, 1u << 30) {}
    unsigned count() const { return faultpoint::passes(point_); }

private:
    const char* point_;
    faultpoint::Scope scope_;
};

// One host call per edge of a vertex or per corner of a polygon would make the exchange quadratic.
TEST(ExchangeCost, VertexOfHighValenceIsReadOncePerElement) {
    const Mesh hub = fixtures::hub(500);
    MObject mesh = make_host_mesh(hub, fixtures::random_shells(hub, 3, 1));
    UnwrapSettings settings = plain_settings();
    settings.use_ridges = settings.use_grooves = settings.keep_seams = true;
    const Calls uvs("MItMeshVertex::getUVs");
    const Calls spokes("MItMeshVertex::getConnectedEdges");
    const Calls faces("MItMeshEdge::getConnectedFaces");
    const Calls normals("MItMeshPolygon::getNormal");
    const Calls triangles("MItMeshPolygon::getTriangle");
    Collected result;
    collect(settings, mesh, result);
    ASSERT_TRUE(result.status);
    EXPECT_EQ(uvs.count(), 501u);
    EXPECT_EQ(spokes.count(), 0u);
    EXPECT_EQ(faces.count(), 1000u); // for the edge table, which the seams are found in, too
    EXPECT_EQ(normals.count(), 500u);
    EXPECT_EQ(triangles.count(), 500u);
}

TEST(ExchangeCost, LargePolygonIsReadOnce) {
    MObject mesh = make_host_mesh(fixtures::concave_ngon(100));
    const Calls vertices("MItMeshPolygon::getVertices");
    const Calls triangles("MItMeshPolygon::getTriangle");
    Collected result;
    collect(plain_settings(), mesh, result);
    ASSERT_TRUE(result.status);
    EXPECT_EQ(vertices.count(), 1u);
    EXPECT_EQ(triangles.count(), 398u);
}

} // namespace
