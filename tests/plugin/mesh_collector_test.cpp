#include "faultpoint/faultpoint.h"
#include "host/base/object.h"
#include "host/mesh/mesh.h"
#include "plugin/mesh_collector.h"
#include "tests/corelib/support.h"
#include "tests/plugin/collected.h"
#include "tests/plugin/progress_record.h"

#include <maya/MFnMesh.h>
#include <maya/MProgressWindow.h>

#include <gtest/gtest.h>

namespace {

using Words = std::vector<uint32_t>;
constexpr uint32_t k_all = 0xFFFFFFFF;

TEST(CollectMeshData, TriangleMapsToItsOwnCorners) {
    Collected result;
    collect(plain_settings(), make_host_mesh(fixtures::triangle()), result);
    ASSERT_TRUE(result.status);
    ASSERT_EQ(result.data.vertices.count(), 3u);
    EXPECT_EQ(result.data.vertices.get(1).x, 1.0f);
    EXPECT_EQ(result.data.vertices.get(2).y, 1.0f);
    EXPECT_EQ(result.indices(), (Words{0, 1, 2}));
    EXPECT_EQ(result.corners(0), (Words{0, 1, 2}));
    EXPECT_EQ(result.real_edges(), (Words{k_all, k_all, k_all}));
    EXPECT_EQ(result.cut_edges(), (Words{0, 0, 0}));
}

TEST(CollectMeshData, EveryTriangleOfATriangleMeshHasRealEdgesOnly) {
    Collected result;
    collect(plain_settings(), make_host_mesh(fixtures::hub(9)), result);
    ASSERT_EQ(result.data.face_corners.count(), 9u);
    for (uint32_t p = 0; p < 9; ++p) {
        Words sorted = result.corners(p);
        std::sort(sorted.begin(), sorted.end());
        EXPECT_EQ(sorted, (Words{0, 1, 2}));
    }
    EXPECT_EQ(result.real_edges(), Words(27, k_all));
}

TEST(CollectMeshData, QuadHasFourRealEdgesAndADiagonal) {
    Collected result;
    collect(plain_settings(), make_host_mesh(fixtures::quad()), result);
    const Words real = result.real_edges();
    ASSERT_EQ(real.size(), 6u);
    EXPECT_EQ(std::count(real.begin(), real.end(), k_all), 4);
    EXPECT_EQ(std::count(real.begin(), real.end(), 0u), 2);
    EXPECT_EQ(result.reals(), (std::vector<std::pair<int, int>>{{0, 1}, {0, 3}, {1, 2}, {2, 3}}));
}

TEST(CollectMeshData, CornerPositionsMapBackToTheVertices) {
    const fixtures::Mesh mesh = fixtures::concave_ngon(6);
    Collected result;
    collect(plain_settings(), make_host_mesh(mesh), result);
    const Words corners = result.corners(0);
    ASSERT_EQ(corners.size(), result.indices().size());
    for (size_t j = 0; j < corners.size(); ++j) {
        ASSERT_LT(corners[j], mesh.polygons[0].size());
        EXPECT_EQ(mesh.polygons[0][corners[j]], static_cast<int>(result.indices()[j]));
    }
}

TEST(CollectMeshData, RepeatedVertexGetsAnEntryForEveryMatchingPosition) {
    const fixtures::Mesh mesh = fixtures::polygon_with_repeated_vertices();
    Collected result;
    collect(plain_settings(), make_host_mesh(mesh), result);
    Words expected;
    for (const uint32_t id : result.indices())
        for (uint32_t j = 0; j < mesh.polygons[0].size(); ++j)
            if (mesh.polygons[0][j] == static_cast<int>(id))
                expected.push_back(j);
    EXPECT_EQ(result.corners(0), expected);
    EXPECT_GT(expected.size(), result.indices().size());
}

TEST(CollectMeshData, PositionsAreNarrowedAndTextureCoordinatesZero) {
    fixtures::Mesh mesh = fixtures::triangle();
    mesh.points[1][0] = 1.0 / 3.0;
    Collected result;
    collect(plain_settings(), make_host_mesh(mesh), result);
    const Vertex vertex = result.data.vertices.get(1);
    EXPECT_EQ(vertex.x, static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(vertex.u, 0.0f);
    EXPECT_EQ(vertex.v, 0.0f);
}

TEST(CollectMeshData, CubeWithAShellPerFaceIsCutAtAllButTheDiagonals) {
    const fixtures::Mesh cube = fixtures::cube();
    UnwrapSettings settings = plain_settings();
    settings.keep_seams = true;
    Collected result;
    collect(settings, make_host_mesh(cube, fixtures::shell_per_polygon(cube)), result);
    EXPECT_EQ(result.cuts().size(), 12u);
    EXPECT_EQ(result.cut_edges(), result.real_edges());
    const Words real = result.real_edges();
    EXPECT_EQ(std::count(real.begin(), real.end(), k_all), 24);
    EXPECT_EQ(std::count(real.begin(), real.end(), 0u), 12);
    EXPECT_EQ(result.seam_pairs.length(), 2u * 24u);
}

TEST(CollectMeshData, EmptyMeshMakesEmptyLists) {
    Collected result;
    collect(plain_settings(), make_host_mesh(fixtures::empty()), result);
    EXPECT_TRUE(result.status);
    EXPECT_EQ(result.data.vertices.count(), 0u);
    EXPECT_EQ(result.data.indices.count(), 0u);
    EXPECT_EQ(result.data.face_corners.count(), 0u);
}

TEST(CollectMeshData, SeamListMayBeNull) {
    const fixtures::Mesh cube = fixtures::cube();
    UnwrapSettings settings = plain_settings();
    settings.keep_seams = true;
    const Unwrapper unwrapper(&settings);
    MObject mesh = make_host_mesh(cube, fixtures::shell_per_polygon(cube));
    MeshData data;
    EXPECT_TRUE(collect_mesh_data(unwrapper, mesh, data, nullptr));
    EXPECT_EQ(Collected::values(data.cut_edges), Collected::values(data.real_edges));
}

TEST(CollectMeshData, SecondCollectionReplacesAllListsButTheEdgeFlags) {
    const fixtures::Mesh cube = fixtures::cube();
    UnwrapSettings settings = plain_settings();
    const Unwrapper unwrapper(&settings);
    MObject mesh = make_host_mesh(cube, fixtures::shell_per_polygon(cube));
    MeshData data;
    MIntArray seams;
    ASSERT_TRUE(collect_mesh_data(unwrapper, mesh, data, &seams));
    const unsigned pairs = seams.length();
    const uint64_t live = live_blocks;
    ASSERT_TRUE(collect_mesh_data(unwrapper, mesh, data, &seams));
    EXPECT_EQ(live_blocks, live);
    EXPECT_EQ(data.vertices.count(), 8u);
    EXPECT_EQ(data.indices.count(), 36u);
    EXPECT_EQ(data.face_corners.count(), 6u);
    EXPECT_EQ(seams.length(), pairs);
    EXPECT_EQ(data.cut_edges.count(), 72u);
    EXPECT_EQ(data.real_edges.count(), 72u);
}

TEST(CollectMeshData, FindsTheSeamsOfTheCurrentUvSet) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    set_layout(mesh, fixtures::shell_per_polygon(cube), "other");
    UnwrapSettings settings = plain_settings();
    settings.uv_set = "other";
    Collected result;
    collect(settings, mesh, result);
    EXPECT_EQ(result.seam_pairs.length(), 0u);
    ASSERT_TRUE(MFnMesh(mesh).setCurrentUVSetName("other"));
    collect(settings, mesh, result);
    EXPECT_EQ(result.seam_pairs.length(), 48u);
}

TEST(CollectMeshData, FindsTheSeamsOfTheNamedUvSetIfNoneIsCurrent) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    set_layout(mesh, fixtures::shell_per_polygon(cube), "other");
    UnwrapSettings settings = plain_settings();
    settings.uv_set = "other";
    const faultpoint::Scope fault("MFnMesh::currentUVSetName", MStatus::kFailure);
    Collected result;
    collect(settings, mesh, result);
    EXPECT_EQ(result.seam_pairs.length(), 48u);
}

TEST(CollectMeshData, FindsTheSeamsOfTheNamedUvSetIfTheCurrentNameIsEmpty) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    mesh.host_object()->as_mesh()->edit()->set_current_uv_set(-1);
    ASSERT_EQ(MFnMesh(mesh).currentUVSetName().length(), 0u);
    Collected result;
    collect(plain_settings(), mesh, result);
    ASSERT_TRUE(result.status);
    EXPECT_EQ(result.seam_pairs.length(), 0u); // "map1", which is named, has no seams
}

// ---- failures -----------------------------------------------------------------------------------

struct Failure {
    const char* point;
    unsigned nth;
    const char* text;
};

/// Expects collecting a mesh to fail with a status and to write one line.
void expect_failure(const UnwrapSettings& settings, MObject& mesh, MStatus::MStatusCode code,
                    const std::string& line) {
    Collected result;
    testing::internal::CaptureStderr();
    collect(settings, mesh, result);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), line + "\n");
    EXPECT_EQ(result.status, code);
}

class CollectMeshDataFails : public testing::TestWithParam<Failure> {};

TEST_P(CollectMeshDataFails, WritesOneLineAndReturnsTheHostsStatus) {
    MObject mesh = make_host_mesh(fixtures::cube(), fixtures::one_shell(fixtures::cube()));
    UnwrapSettings settings = plain_settings();
    settings.use_ridges = true;
    const uint64_t live = live_blocks;
    for (const MStatus::MStatusCode code : {MStatus::kFailure, MStatus::kNotFound}) {
        const faultpoint::Scope fault(GetParam().point, code, GetParam().nth);
        expect_failure(settings, mesh, code, GetParam().text);
    }
    EXPECT_EQ(live_blocks, live);
}

constexpr const char* k_no_faces = "Data collector could not retrieve faces from mesh.";

INSTANTIATE_TEST_SUITE_P(
    HostCalls, CollectMeshDataFails,
    testing::Values(
        Failure{"MItMeshPolygon::MItMeshPolygon", 1, k_no_faces},
        Failure{"MItMeshEdge::MItMeshEdge", 1, k_no_faces},
        Failure{"MItMeshEdge::MItMeshEdge", 2, k_no_faces},
        Failure{"MItMeshVertex::MItMeshVertex", 1, k_no_faces},
        Failure{"MItMeshVertex::MItMeshVertex", 2, k_no_faces},
        Failure{"MItMeshVertex::count", 1, k_no_faces},
        Failure{"MItMeshEdge::count", 1, k_no_faces},
        Failure{"MFnMesh::setObject", 1, "Data collector could not retrieve mesh_fn from mesh."},
        Failure{"MFnMesh::getPoints", 1, "Data collector could not retrieve mesh_fn from mesh."},
        Failure{"MItMeshPolygon::count", 1, "Data collector could not iterate triangles."},
        Failure{"MItMeshPolygon::getVertices", 4,
                "Data collector could not retrieve vertices from faces."}));

TEST(CollectMeshData, ReportsAFailedPolygonCountWithoutCreasesToo) {
    MObject mesh = make_host_mesh(fixtures::cube());
    const faultpoint::Scope fault("MItMeshPolygon::count", MStatus::kFailure);
    expect_failure(plain_settings(), mesh, MStatus::kFailure,
                   "Data collector could not iterate triangles.");
}

TEST(CollectMeshData, EdgeWhoseEndsCannotBeReadCountsAsADiagonal) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    const faultpoint::Scope fault("MItMeshEdge::index", MStatus::kFailure, 1, 2);
    Collected result;
    collect(plain_settings(), mesh, result);
    EXPECT_TRUE(result.status);
    EXPECT_EQ(result.reals().size(), 11u);
}

TEST(CollectMeshData, VerticesBehindAnEarlyEndOfTheIteratorCountAsUnmapped) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    const faultpoint::Scope fault("MItMeshVertex::isDone", MStatus::kFailure, 4);
    Collected result;
    collect(plain_settings(), mesh, result);
    EXPECT_TRUE(result.status);
    EXPECT_GT(result.seam_pairs.length(), 0u);
}

TEST(CollectMeshData, EdgesBehindAnEarlyEndOfTheIteratorCountAsDiagonals) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    const faultpoint::Scope fault("MItMeshEdge::isDone", MStatus::kFailure, 5);
    Collected result;
    collect(plain_settings(), mesh, result);
    EXPECT_TRUE(result.status);
    EXPECT_EQ(result.reals().size(), 4u);
}

TEST(CollectMeshData, FailsIfThePolygonIteratorEndsEarly) {
    MObject mesh = make_host_mesh(fixtures::cube());
    const faultpoint::Scope fault("MItMeshPolygon::isDone", MStatus::kFailure, 3);
    expect_failure(plain_settings(), mesh, MStatus::kFailure,
                   "Data collector could not iterate triangles.");
}

// -1 and the largest number: below all vertices, and above.
constexpr MStatus::MStatusCode k_wrong_ids[] = {MStatus::kFailure, MStatus::kNotFound};

TEST(CollectMeshData, FailsIfAPolygonHasAVertexThatTheMeshHasNot) {
    MObject mesh = make_host_mesh(fixtures::cube());
    for (const MStatus::MStatusCode code : k_wrong_ids) {
        const faultpoint::Scope fault("MItMeshPolygon::getVertices, wrong id", code, 3);
        expect_failure(plain_settings(), mesh, MStatus::kFailure,
                       "Data collector could not retrieve vertices from faces.");
    }
}

TEST(CollectMeshData, TriangleOfAVertexThatTheMeshHasNotRepeatsThePreviousOne) {
    MObject mesh = make_host_mesh(fixtures::cube());
    for (const MStatus::MStatusCode code : k_wrong_ids) {
        const faultpoint::Scope fault("MItMeshPolygon::getTriangle, wrong id", code, 2);
        Collected result;
        collect(plain_settings(), mesh, result);
        EXPECT_TRUE(result.status);
        const Words indices = result.indices();
        ASSERT_EQ(indices.size(), 36u);
        EXPECT_EQ(Words(indices.begin(), indices.begin() + 3),
                  Words(indices.begin() + 3, indices.begin() + 6));
    }
}

/// A host call that fails, or returns -1 or an early end, from its n-th use on.
struct WrongAnswer {
    const char* point;
    unsigned nth;
    unsigned times;
};

class WrongAnswers : public testing::TestWithParam<WrongAnswer> {};

TEST_P(WrongAnswers, NeitherCrashTheUnwrapNorKeepItFromEnding) {
    const fixtures::Mesh cube = fixtures::cube();
    MObject mesh = make_host_mesh(cube, fixtures::one_shell(cube));
    UnwrapSettings settings = plain_settings();
    settings.keep_seams = settings.use_grooves = settings.use_ridges = true;
    const uint64_t live = live_blocks;
    const MStatus::MStatusCode codes[] = {MStatus::kFailure, MStatus::kNotFound};
    for (const MStatus::MStatusCode code : codes) {
        const faultpoint::Scope fault(GetParam().point, code, GetParam().nth, GetParam().times);
        MIntArray existing;
        MIntArray found;
        notices() = Notices();
        testing::internal::CaptureStderr();
        Unwrapper(&settings).unwrap(mesh, &existing, &found);
        testing::internal::GetCapturedStderr();
    }
    EXPECT_EQ(live_blocks, live);
}

std::vector<WrongAnswer> wrong_answers() {
    std::vector<WrongAnswer> answers;
    for (const char* point : {"MFnMesh::getPoints",
                              "MFnMesh::currentUVSetName",
                              "MFnMesh::getUVSetNames",
                              "MItMeshEdge::index",
                              "MItMeshEdge::isDone",
                              "MItMeshEdge::next",
                              "MItMeshEdge::reset",
                              "MItMeshEdge::getConnectedFaces",
                              "MItMeshPolygon::index",
                              "MItMeshPolygon::isDone",
                              "MItMeshPolygon::next",
                              "MItMeshPolygon::reset",
                              "MItMeshPolygon::getVertices",
                              "MItMeshPolygon::getTriangle",
                              "MItMeshPolygon::getVertices, wrong id",
                              "MItMeshPolygon::getTriangle, wrong id",
                              "MItMeshPolygon::numTriangles",
                              "MItMeshPolygon::getNormal",
                              "MItMeshVertex::getUVIndices",
                              "MItMeshVertex::getUVs",
                              "MItMeshVertex::isDone",
                              "MItMeshVertex::next",
                              "MItMeshVertex::reset"})
        for (const unsigned nth : {1u, 2u, 7u})
            for (const unsigned times : {1u, 0u})
                answers.push_back({point, nth, times});
    return answers;
}

INSTANTIATE_TEST_SUITE_P(HostCalls, WrongAnswers, testing::ValuesIn(wrong_answers()));

TEST(CollectMeshData, KeepsElementsReadBeforeAFailure) {
    MObject mesh = make_host_mesh(fixtures::cube());
    const faultpoint::Scope fault("MItMeshPolygon::getVertices", MStatus::kFailure, 4);
    Collected result;
    testing::internal::CaptureStderr();
    collect(plain_settings(), mesh, result);
    testing::internal::GetCapturedStderr();
    EXPECT_EQ(result.data.vertices.count(), 8u);
    EXPECT_EQ(result.data.face_corners.count(), 3u);
    EXPECT_EQ(result.data.indices.count(), 18u);
}

TEST(CollectMeshData, TriangleThatCannotBeReadRepeatsThePreviousOne) {
    MObject mesh = make_host_mesh(fixtures::cube());
    const faultpoint::Scope fault("MItMeshPolygon::getTriangle", MStatus::kFailure, 2);
    Collected result;
    collect(plain_settings(), mesh, result);
    EXPECT_TRUE(result.status);
    const Words indices = result.indices();
    ASSERT_EQ(indices.size(), 36u);
    EXPECT_EQ(Words(indices.begin(), indices.begin() + 3),
              Words(indices.begin() + 3, indices.begin() + 6));
}

TEST(CollectMeshData, PolygonWhoseTrianglesCannotBeCountedHasNone) {
    MObject mesh = make_host_mesh(fixtures::cube());
    const faultpoint::Scope fault("MItMeshPolygon::numTriangles", MStatus::kFailure, 2);
    Collected result;
    collect(plain_settings(), mesh, result);
    EXPECT_TRUE(result.status);
    EXPECT_EQ(result.data.indices.count(), 30u);
    EXPECT_EQ(result.corners(1).size(), 0u);
}

TEST(CollectMeshData, FailsWhenALookUpTableCannotBeAllocated) {
    MObject mesh = make_host_mesh(fixtures::cube(), fixtures::one_shell(fixtures::cube()));
    UnwrapSettings settings = plain_settings();
    settings.use_ridges = true;
    unsigned reported = 0;
    for (size_t fail_from = 0; fail_from < 60; ++fail_from) {
        const uint64_t live = live_blocks;
        {
            Collected result;
            testing::internal::CaptureStderr();
            {
                AllocationWatch watch(fail_from);
                collect(settings, mesh, result);
            }
            const std::string text = testing::internal::GetCapturedStderr();
            if (!result.status) {
                ++reported;
                EXPECT_EQ(result.status, MStatus::kInsufficientMemory);
                EXPECT_TRUE(text == std::string(k_no_faces) + "\n" ||
                            text == "Data collector could not retrieve vertices from faces.\n")
                    << text;
            } else {
                EXPECT_EQ(text, "");
            }
        }
        EXPECT_EQ(live_blocks, live);
    }
    EXPECT_GT(reported, 5u);
}

// ---- progress -----------------------------------------------------------------------------------

TEST(CollectMeshData, ShowsThePercentageOfPolygonsDone) {
    MObject mesh = make_host_mesh(fixtures::cube());
    UnwrapSettings settings = plain_settings();
    const Unwrapper unwrapper(&settings);
    ProgressRecord record;
    begin_progress();
    ASSERT_TRUE(progress_reserved);
    record.states.clear();
    MeshData data;
    const faultpoint::Scope calls("MProgressWindow::setProgress", MStatus::kFailure, 1000);
    EXPECT_TRUE(collect_mesh_data(unwrapper, mesh, data, nullptr));
    EXPECT_EQ(faultpoint::passes("MProgressWindow::setProgress"), 6u);
    EXPECT_EQ(record.values(), (std::vector<int>{16, 33, 50, 66, 83})); // 0 changes nothing
    end_progress();
}

TEST(CollectMeshData, ShowsNoProgressWithoutTheProgressWindow) {
    MObject mesh = make_host_mesh(fixtures::cube());
    const ProgressRecord record;
    const faultpoint::Scope calls("MProgressWindow::setProgress", MStatus::kFailure, 1000);
    Collected result;
    collect(plain_settings(), mesh, result);
    EXPECT_TRUE(result.status);
    EXPECT_EQ(faultpoint::passes("MProgressWindow::setProgress"), 0u);
}

} // namespace
