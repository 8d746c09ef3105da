#include "faultpoint/faultpoint.h"
#include "plugin/seams.h"
#include "tests/corelib/support.h"
#include "tests/plugin/host_mesh.h"

#include <maya/MFnMesh.h>
#include <maya/MItMeshEdge.h>

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using fixtures::Mesh;

std::vector<int> all_edges(MObject& mesh) {
    std::vector<int> edges;
    for (int e = 0; e < MFnMesh(mesh).numEdges(); ++e)
        edges.push_back(e);
    return edges;
}

/// The seams, by the edges that the host tells of.
std::vector<int> read_seams(MObject& mesh, const char* uv_set, MStatus& status) {
    EdgeTable edges;
    status = edges.build(mesh, 64);
    return status ? values_of(find_seam_edges(mesh, uv_set, edges, &status)) : std::vector<int>();
}

std::vector<int> seams_of(MObject& mesh, const char* uv_set = "map1") {
    MStatus status = MS::kFailure;
    const std::vector<int> seams = read_seams(mesh, uv_set, status);
    EXPECT_TRUE(status);
    return seams;
}

/// The vertex pairs of edge ids, the smaller id first.
std::vector<std::pair<int, int>> ends_of(MObject& mesh, const std::vector<int>& edges) {
    std::vector<std::pair<int, int>> ends;
    MItMeshEdge edge(mesh);
    int previous;
    for (const int id : edges) {
        edge.setIndex(id, previous);
        ends.emplace_back(std::min(edge.index(0), edge.index(1)),
                          std::max(edge.index(0), edge.index(1)));
    }
    return ends;
}

TEST(FindSeamEdges, CubeWithAShellPerFaceIsAllSeams) {
    MObject mesh = make_host_mesh(fixtures::cube(), fixtures::shell_per_polygon(fixtures::cube()));
    EXPECT_EQ(seams_of(mesh), all_edges(mesh));
}

TEST(FindSeamEdges, ContinuousShellHasNone) {
    MObject mesh = make_host_mesh(fixtures::cube(), fixtures::one_shell(fixtures::cube()));
    EXPECT_TRUE(seams_of(mesh).empty());
}

TEST(FindSeamEdges, EdgeWithDifferentUvsAtOneEndIsASeam) {
    const Mesh fold = fixtures::fold(1, 0);
    fixtures::UvLayout layout = fixtures::one_shell(fold);
    layout.uvs.push_back({9, 9});
    layout.ids[1][3] = static_cast<int>(layout.uvs.size()) - 1; // vertex 2 in the second face
    MObject mesh = make_host_mesh(fold, layout);
    EXPECT_EQ(ends_of(mesh, seams_of(mesh)), (std::vector<std::pair<int, int>>{{1, 2}}));
}

// Face 0 passes vertex 0 twice, with a UV each; face 1 shares the edge from 0 to 1 with it.
TEST(FindSeamEdges, FirstUvCountsWhereAFaceHasTwoAtAVertex) {
    const Mesh mesh = {"repeated_vertex",
                       {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {-1, 1, 0}, {-1, 0, 0}, {0, -1, 0}},
                       {{0, 1, 2, 0, 3, 4}, {1, 0, 5}}};
    for (const int shared : {0, 3}) {
        fixtures::UvLayout layout;
        for (int uv = 0; uv < 7; ++uv)
            layout.uvs.push_back({uv / 8.0f, 0.5f});
        layout.ids = {{0, 1, 2, 3, 4, 5}, {1, shared, 6}};
        MObject host_mesh = make_host_mesh(mesh, layout);
        const std::vector<std::pair<int, int>> seams = ends_of(host_mesh, seams_of(host_mesh));
        const bool is_seam = std::count(seams.begin(), seams.end(), std::pair(0, 1)) > 0;
        EXPECT_EQ(is_seam, shared != 0) << shared;
    }
}

TEST(FindSeamEdges, EqualCoordinatesUnderTwoIdsAreASeam) {
    const Mesh fold = fixtures::fold(1, 0);
    MObject mesh = make_host_mesh(fold, fixtures::shell_per_polygon(fold));
    EXPECT_EQ(ends_of(mesh, seams_of(mesh)), (std::vector<std::pair<int, int>>{{1, 2}}));
}

TEST(FindSeamEdges, OpenBordersAreNotSeams) {
    MObject mesh = make_host_mesh(fixtures::triangle(), fixtures::one_shell(fixtures::triangle()));
    EXPECT_TRUE(seams_of(mesh).empty());
    MObject unmapped = make_host_mesh(fixtures::triangle());
    EXPECT_TRUE(seams_of(unmapped).empty());
}

TEST(FindSeamEdges, EdgeWithThreeFacesIsAlwaysASeam) {
    const Mesh fan = fixtures::edge_with_three_faces();
    MObject mesh = make_host_mesh(fan, fixtures::one_shell(fan));
    EXPECT_EQ(ends_of(mesh, seams_of(mesh)), (std::vector<std::pair<int, int>>{{0, 1}}));
}

TEST(FindSeamEdges, UnmappedMeshHasASeamAtEveryEdgeWithTwoFaces) {
    MObject mesh = make_host_mesh(fixtures::cube());
    EXPECT_EQ(seams_of(mesh), all_edges(mesh));
}

TEST(FindSeamEdges, UnmappedFaceHasASeamToEveryNeighbour) {
    const Mesh fold = fixtures::fold(1, 0);
    MObject mesh = make_host_mesh(fold, fixtures::shells(fold, {0, -1}));
    EXPECT_EQ(ends_of(mesh, seams_of(mesh)), (std::vector<std::pair<int, int>>{{1, 2}}));
}

TEST(FindSeamEdges, UnknownUvSetCountsAsUnmapped) {
    MObject mesh = make_host_mesh(fixtures::cube(), fixtures::one_shell(fixtures::cube()));
    EXPECT_EQ(seams_of(mesh, "no such set"), all_edges(mesh));
}

TEST(FindSeamEdges, UsesTheNamedUvSet) {
    const Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    set_layout(mesh, fixtures::shell_per_polygon(cube), "other");
    EXPECT_TRUE(seams_of(mesh, "map1").empty());
    EXPECT_EQ(seams_of(mesh, "other"), all_edges(mesh));
}

TEST(FindSeamEdges, EmptyMeshHasNoSeams) {
    MObject mesh = make_host_mesh(fixtures::empty());
    EXPECT_TRUE(seams_of(mesh).empty());
}

TEST(FindSeamEdges, VertexWhoseUvsCannotBeReadCountsAsUnmapped) {
    const Mesh fold = fixtures::fold(1, 0);
    MObject mesh = make_host_mesh(fold, fixtures::one_shell(fold));
    const faultpoint::Scope fault("MItMeshVertex::getUVs", MStatus::kFailure, 2); // vertex 1
    EXPECT_EQ(ends_of(mesh, seams_of(mesh)), (std::vector<std::pair<int, int>>{{1, 2}}));
}

TEST(FindSeamEdges, ReturnsTheHostsStatusWhenAnIteratorFails) {
    MObject mesh = make_host_mesh(fixtures::cube());
    for (const char* const point : {"MItMeshEdge::MItMeshEdge", "MItMeshVertex::MItMeshVertex"}) {
        const faultpoint::Scope fault(point, MStatus::kNotFound);
        MStatus status;
        EXPECT_TRUE(read_seams(mesh, "map1", status).empty()) << point;
        EXPECT_EQ(status, MStatus::kNotFound) << point;
    }
}

TEST(FindSeamEdges, ReturnsNoSeamsWhenTheWalkBreaksOff) {
    MObject mesh = make_host_mesh(fixtures::cube()); // without UVs all edges are seams
    ASSERT_FALSE(seams_of(mesh).empty());
    const faultpoint::Scope fault("MItMeshEdge::next", MStatus::kNotFound, 3);
    MStatus status;
    EXPECT_TRUE(read_seams(mesh, "map1", status).empty());
    EXPECT_EQ(status, MStatus::kNotFound);
}

TEST(FindSeamEdges, ReportsWhenMemoryRunsOut) {
    MObject mesh = make_host_mesh(fixtures::cube(), fixtures::one_shell(fixtures::cube()));
    EdgeTable edges;
    ASSERT_TRUE(edges.build(mesh, 8));
    for (size_t fail_from = 0; fail_from < 2; ++fail_from) {
        AllocationWatch watch(fail_from);
        MStatus status;
        EXPECT_EQ(find_seam_edges(mesh, "map1", edges, &status).length(), 0u);
        EXPECT_EQ(status, MStatus::kInsufficientMemory);
    }
}

// ---- lists --------------------------------------------------------------------------------------

std::vector<std::pair<int, int>> sorted_of(const std::vector<int>& flat) {
    const array<SeamPair> sorted = seam_pairs_sorted(int_array(flat));
    std::vector<std::pair<int, int>> pairs;
    for (uint32_t i = 0; i < sorted.count(); ++i)
        pairs.emplace_back(sorted.get(i).low, sorted.get(i).high);
    return pairs;
}

std::vector<int> difference(const std::vector<int>& new_seams, const std::vector<int>& existing) {
    MIntArray list = int_array(new_seams);
    subtract_seams(list, int_array(existing));
    return values_of(list);
}

TEST(SeamPairsSorted, PutsTheSmallerIdFirstThenSorts) {
    EXPECT_EQ(sorted_of({9, 2, 1, 3, 3, 1, 2, 8}),
              (std::vector<std::pair<int, int>>{{1, 3}, {1, 3}, {2, 8}, {2, 9}}));
}

TEST(SeamPairsSorted, IgnoresAnOddLastEntry) {
    EXPECT_EQ(sorted_of({5, 4, 7}), (std::vector<std::pair<int, int>>{{4, 5}}));
}

TEST(SeamPairsSorted, IsTruncatedWhenMemoryRunsOut) {
    const MIntArray flat = int_array({1, 2, 3, 4});
    AllocationWatch watch(0);
    EXPECT_EQ(seam_pairs_sorted(flat).count(), 0u);
}

TEST(SubtractSeams, RemovesEveryEqualPairInEitherDirection) {
    EXPECT_EQ(difference({4, 3, 3, 4, 7, 1, 3, 4}, {4, 3}), (std::vector<int>{1, 7}));
}

TEST(SubtractSeams, WritesEachPairOnceSmallerIdFirst) {
    EXPECT_EQ(difference({9, 2, 2, 9, 5, 1}, {}), (std::vector<int>{1, 5, 2, 9}));
}

TEST(SubtractSeams, DropsALeadingPairOfVertexZeroWithItself) {
    EXPECT_EQ(difference({0, 0, 0, 0, 1, 2}, {}), (std::vector<int>{1, 2}));
}

TEST(SubtractSeams, KeepsAnEdgeOfVertexZero) {
    EXPECT_EQ(difference({0, 1, 1, 0}, {}), (std::vector<int>{0, 1}));
}

TEST(SubtractSeams, ExistingSeamsMayNameEdgesThatAreNotNew) {
    EXPECT_EQ(difference({5, 6}, {1, 2, 5, 6, 8, 9}), std::vector<int>());
    EXPECT_EQ(difference({5, 6}, {1, 2, 8, 9}), (std::vector<int>{5, 6}));
}

} // namespace
