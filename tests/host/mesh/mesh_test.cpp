#include "host/mesh/mesh.h"
#include "tests/host/mesh/mesh_builder.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <set>

namespace {

using host::Connectivity;
using host::Float3;
using host::IndexSpan;
using host::Mesh;
using mesh_builder::cube;
using mesh_builder::fan;
using mesh_builder::grid;
using mesh_builder::Parts;

std::vector<std::uint32_t> list(const IndexSpan& span) { return {span.begin(), span.end()}; }

using Ids = std::vector<std::uint32_t>;

// === Connectivity ================================================================================

TEST(Connectivity, CountsTheEdgesOfACube) {
    const Mesh mesh = cube().mesh();
    EXPECT_EQ(mesh.connectivity().vertex_count(), 8u);
    EXPECT_EQ(mesh.connectivity().edge_count(), 12u);
    EXPECT_EQ(mesh.connectivity().polygon_count(), 6u);
    EXPECT_EQ(mesh.connectivity().corner_count(), 24u);
}

TEST(Connectivity, NumbersEdgesInCornerOrder) {
    const Mesh mesh = grid(2, 1).mesh();
    EXPECT_EQ(list(mesh.connectivity().polygon_edges(0)), (Ids{0, 1, 2, 3}));
    EXPECT_EQ(list(mesh.connectivity().polygon_edges(1)), (Ids{4, 5, 6, 1}));
}

TEST(Connectivity, DirectsEdgesAsFirstVisited) {
    const Mesh mesh = grid(2, 1).mesh();
    EXPECT_EQ(mesh.connectivity().edge(1), (std::pair<std::uint32_t, std::uint32_t>(1, 4)));
}

TEST(Connectivity, ListsBothPolygonsOfAnEdge) {
    const Mesh mesh = grid(2, 1).mesh();
    EXPECT_EQ(list(mesh.connectivity().edge_polygons(1)), (Ids{0, 1}));
    EXPECT_EQ(list(mesh.connectivity().edge_polygons(0)), (Ids{0}));
}

TEST(Connectivity, ListsAllPolygonsOfANonManifoldEdge) {
    Parts parts;
    for (int i = 0; i < 5; ++i)
        parts.point(i, i * i, 0);
    parts.polygon({0, 1, 2});
    parts.polygon({1, 0, 3});
    parts.polygon({0, 1, 4});
    const Mesh mesh = parts.mesh();
    EXPECT_EQ(list(mesh.connectivity().edge_polygons(0)), (Ids{0, 1, 2}));
}

TEST(Connectivity, ListsAPolygonOnceThatVisitsAnEdgeTwice) {
    Parts parts;
    for (int i = 0; i < 5; ++i)
        parts.point(i, i % 2, 0);
    parts.polygon({0, 1, 2, 1, 3, 4});
    const Mesh mesh = parts.mesh();
    EXPECT_EQ(mesh.connectivity().edge_count(), 5u);
    EXPECT_EQ(list(mesh.connectivity().edge_polygons(1)), (Ids{0}));
    EXPECT_EQ(list(mesh.connectivity().vertex_edges(1)), (Ids{0, 1, 2}));
    EXPECT_EQ(list(mesh.connectivity().vertex_corners(1)), (Ids{1, 3}));
}

TEST(Connectivity, ListsAnEdgeFromAVertexToItselfOnce) {
    Parts parts;
    for (int i = 0; i < 3; ++i)
        parts.point(i, i % 2, 0);
    parts.polygon({0, 0, 1, 2});
    const Mesh mesh = parts.mesh();
    EXPECT_EQ(list(mesh.connectivity().vertex_edges(0)), (Ids{0, 1, 3}));
}

TEST(Connectivity, ListsNoEdgesAtAnIsolatedVertex) {
    Parts parts = grid(1, 1);
    const std::uint32_t lonely = parts.point(9, 9, 9);
    const Mesh mesh = parts.mesh();
    EXPECT_EQ(mesh.connectivity().vertex_edges(lonely).size(), 0u);
    EXPECT_EQ(mesh.connectivity().vertex_corners(lonely).size(), 0u);
}

TEST(Connectivity, ListsAllEdgesOfAHub) {
    const Mesh mesh = fan(20000).mesh();
    EXPECT_EQ(mesh.connectivity().vertex_edges(0).size(), 20000u);
    EXPECT_EQ(mesh.connectivity().vertex_corners(0).size(), 20000u);
    EXPECT_EQ(mesh.connectivity().edge_count(), 40000u);
}

TEST(Connectivity, AgreesWithABruteForceCountOnAMixedMesh) {
    Parts parts = cube();
    parts.polygon({0, 7, 3});
    parts.polygon({0, 7, 5, 2, 6});
    const Mesh mesh = parts.mesh();
    const Connectivity& c = mesh.connectivity();
    std::map<std::pair<std::uint32_t, std::uint32_t>, std::set<std::uint32_t>> slow;
    for (std::uint32_t p = 0; p < c.polygon_count(); ++p) {
        const Ids ids = list(c.polygon_vertices(p));
        for (std::size_t i = 0; i < ids.size(); ++i) {
            const std::uint32_t a = ids[i];
            const std::uint32_t b = ids[(i + 1) % ids.size()];
            slow[{std::min(a, b), std::max(a, b)}].insert(p);
        }
    }
    ASSERT_EQ(slow.size(), c.edge_count());
    for (std::uint32_t e = 0; e < c.edge_count(); ++e) {
        const auto& ends = c.edge(e);
        const auto& polygons =
            slow[{std::min(ends.first, ends.second), std::max(ends.first, ends.second)}];
        EXPECT_EQ(list(c.edge_polygons(e)), Ids(polygons.begin(), polygons.end()));
        for (const std::uint32_t v : {ends.first, ends.second}) {
            const IndexSpan edges = c.vertex_edges(v);
            EXPECT_EQ(std::count(edges.begin(), edges.end(), e), 1);
        }
    }
}

// === Creation ====================================================================================

MStatus make(const std::vector<std::uint32_t>& counts, const std::vector<std::uint32_t>& vertices) {
    Mesh mesh;
    return Mesh::make(std::vector<Float3>(4), counts, vertices, mesh);
}

TEST(Mesh, IsEmptyByDefault) {
    const Mesh mesh;
    EXPECT_EQ(mesh.connectivity().polygon_count(), 0u);
    EXPECT_TRUE(mesh.points().empty());
    EXPECT_EQ(mesh.uv_set_count(), 0u);
    EXPECT_EQ(mesh.current_uv_set(), -1);
}

TEST(Mesh, RejectsAPolygonOfTwoCorners) { EXPECT_TRUE(make({2}, {0, 1}) == MS::kInvalidParameter); }
TEST(Mesh, RejectsAVertexOutOfRange) { EXPECT_TRUE(make({3}, {0, 1, 4}) == MS::kInvalidParameter); }
TEST(Mesh, RejectsTooFewOrTooManyCorners) {
    EXPECT_TRUE(make({3}, {0, 1}) == MS::kInvalidParameter);
    EXPECT_TRUE(make({3}, {0, 1, 2, 3}) == MS::kInvalidParameter);
}
TEST(Mesh, RejectsCountsWhoseSumOverflows) {
    EXPECT_TRUE(make({0x80000000u, 0x80000003u}, {0, 1, 2}) == MS::kInvalidParameter);
}

TEST(Mesh, IsUnchangedWhenMakingFails) {
    Mesh mesh = cube().mesh();
    EXPECT_TRUE(Mesh::make({}, {3}, {0, 1, 2}, mesh).error());
    EXPECT_EQ(mesh.connectivity().polygon_count(), 6u);
}

TEST(Mesh, MayHavePointsWithoutPolygons) {
    Mesh mesh;
    EXPECT_TRUE(Mesh::make(std::vector<Float3>(3), {}, {}, mesh));
    EXPECT_EQ(mesh.points().size(), 3u);
    EXPECT_EQ(mesh.connectivity().edge_count(), 0u);
}

// === Sharing =====================================================================================

TEST(Mesh, SharesItsStorageWithCopies) {
    const Mesh a = cube().mesh();
    const Mesh b = a;
    EXPECT_EQ(&a.connectivity(), &b.connectivity());
    EXPECT_EQ(a.points().data(), b.points().data());
}

TEST(Mesh, CopiesAreIndependentOncePointsChange) {
    const Mesh a = cube().mesh();
    Mesh b = a;
    std::vector<Float3> points = a.points();
    points[0].x = 42.0f;
    EXPECT_TRUE(b.set_points(points));
    EXPECT_EQ(a.points()[0].x, 0.0f);
    EXPECT_EQ(b.points()[0].x, 42.0f);
    EXPECT_EQ(&a.connectivity(), &b.connectivity());
}

TEST(Mesh, RejectsADifferentNumberOfPoints) {
    Mesh mesh = cube().mesh();
    EXPECT_TRUE(mesh.set_points(std::vector<Float3>(7)) == MS::kInvalidParameter);
    EXPECT_EQ(mesh.points().size(), 8u);
}

TEST(Mesh, CopiesAreIndependentOnceAUvSetIsWritten) {
    Mesh a = cube().mesh();
    a.add_uv_set("one");
    a.add_uv_set("two");
    Mesh b = a;
    b.edit_uv_set(0).corner_uvs[3] = 5;
    EXPECT_EQ(a.uv_set(0).corner_uvs[3], -1);
    EXPECT_EQ(b.uv_set(0).corner_uvs[3], 5);
    EXPECT_EQ(&a.uv_set(1), &b.uv_set(1));
}

TEST(Mesh, WritesInPlaceUnlessShared) {
    Mesh mesh = cube().mesh();
    mesh.add_uv_set("one");
    const host::UvSet* const place = &mesh.uv_set(0);
    mesh.edit_uv_set(0).u.push_back(1.0f);
    EXPECT_EQ(&mesh.uv_set(0), place);
}

TEST(Mesh, SharesTriangulationWithCopies) {
    const Mesh a = cube().mesh();
    const Mesh b = a;
    EXPECT_EQ(a.triangles(0).begin(), b.triangles(0).begin());
}

TEST(Mesh, TriangulatesAgainWhenPointsChange) {
    Mesh mesh = grid(1, 1).mesh();
    EXPECT_EQ(list(mesh.triangles(0)), (Ids{0, 1, 2, 0, 2, 3}));
    EXPECT_TRUE(mesh.set_points({{0, 0, 0}, {3, -1, 0}, {3, 1, 0}, {4, 0, 0}}));
    EXPECT_EQ(list(mesh.triangles(0)), (Ids{0, 1, 3, 1, 2, 3}));
}

// === Normals =====================================================================================

TEST(Mesh, HasOutwardNormalsOnACube) {
    const Mesh mesh = cube().mesh();
    EXPECT_EQ(mesh.normal(0), MVector(0, 0, -1));
    EXPECT_EQ(mesh.normal(1), MVector(0, 0, 1));
    EXPECT_EQ(mesh.normal(5), MVector(1, 0, 0));
}

TEST(Mesh, HasAZeroNormalOnAPolygonWithoutArea) {
    Parts parts;
    for (int i = 0; i < 3; ++i)
        parts.point(i, 0, 0);
    parts.polygon({0, 1, 2});
    EXPECT_EQ(parts.mesh().normal(0), MVector());
}

TEST(Mesh, KeepsNormalsExactFarFromTheOrigin) {
    Parts parts = cube();
    for (Float3& p : parts.points)
        p = Float3{p.x + 4.0e6f, p.y - 4.0e6f, p.z + 1.0e6f};
    EXPECT_EQ(parts.mesh().normal(3), MVector(0, 1, 0));
}

TEST(Mesh, AveragesTheNormalOfANonPlanarPolygon) {
    Parts parts;
    parts.point(0, 0, 0);
    parts.point(1, 0, 1);
    parts.point(1, 1, 0);
    parts.point(0, 1, 1);
    parts.polygon({0, 1, 2, 3});
    EXPECT_TRUE(parts.mesh().normal(0).isEquivalent(MVector(0, 0, 1)));
}

// === UV sets =====================================================================================

TEST(Mesh, NamesAUvSetMap1ByDefault) {
    Mesh mesh = cube().mesh();
    EXPECT_EQ(mesh.uv_set(mesh.add_uv_set("")).name, "map1");
}

TEST(Mesh, MakesUvSetNamesUnique) {
    Mesh mesh = cube().mesh();
    mesh.add_uv_set("map1");
    EXPECT_EQ(mesh.uv_set(mesh.add_uv_set("map1")).name, "map2");
    EXPECT_EQ(mesh.uv_set(mesh.add_uv_set("map2")).name, "map3");
    mesh.add_uv_set("uv");
    EXPECT_EQ(mesh.uv_set(mesh.add_uv_set("uv")).name, "uv1");
}

TEST(Mesh, MakesTheFirstUvSetCurrent) {
    Mesh mesh = cube().mesh();
    mesh.add_uv_set("one");
    mesh.add_uv_set("two");
    EXPECT_EQ(mesh.current_uv_set(), 0);
}

TEST(Mesh, FindsUvSetsByName) {
    Mesh mesh = cube().mesh();
    mesh.add_uv_set("one");
    mesh.add_uv_set("two");
    EXPECT_EQ(mesh.find_uv_set("two"), 1);
    EXPECT_EQ(mesh.find_uv_set("three"), -1);
}

TEST(Mesh, KeepsTheCurrentUvSetWhenAnotherIsRemoved) {
    Mesh mesh = cube().mesh();
    mesh.add_uv_set("one");
    mesh.add_uv_set("two");
    mesh.set_current_uv_set(1);
    mesh.remove_uv_set(0);
    EXPECT_EQ(mesh.uv_set(static_cast<std::uint32_t>(mesh.current_uv_set())).name, "two");
}

TEST(Mesh, HasNoCurrentUvSetWithoutUvSets) {
    Mesh mesh = cube().mesh();
    mesh.add_uv_set("one");
    mesh.remove_uv_set(0);
    EXPECT_EQ(mesh.current_uv_set(), -1);
}

TEST(Mesh, NewUvSetsAreUnmapped) {
    Mesh mesh = cube().mesh();
    const auto& corners = mesh.uv_set(mesh.add_uv_set("one")).corner_uvs;
    EXPECT_EQ(corners, std::vector<std::int32_t>(24, -1));
}

} // namespace
