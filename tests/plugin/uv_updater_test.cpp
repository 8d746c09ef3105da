#include "faultpoint/faultpoint.h"
#include "plugin/uv_updater.h"
#include "tests/corelib/support.h"
#include "tests/plugin/collected.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<uint32_t>;
using fixtures::UvLayout;

/// A mesh, its corner lists, and an atlas to write into it.
class ApplyUvs : public testing::Test {
protected:
    ApplyUvs() : settings_(plain_settings()), unwrapper_(&settings_) {}

    /// Atlas vertex i gets the coordinates (i / 8, i / 16).
    void start(MObject mesh, uint32_t atlas_vertices, const Words& atlas_indices) {
        mesh_ = mesh;
        ASSERT_TRUE(collect_mesh_data(unwrapper_, mesh_, data_, nullptr));
        for (uint32_t i = 0; i < atlas_vertices; ++i)
            vertices_.append({0, 0, 0, float(i) / 8, float(i) / 16});
        for (const uint32_t index : atlas_indices)
            indices_.append(index);
    }

    MStatus apply() {
        return apply_uvs(unwrapper_, mesh_, vertices_, indices_, data_.face_corners);
    }

    /// A quad's two triangles, which share none of the six atlas vertices.
    void start_torn_quad() {
        start(make_host_mesh(fixtures::quad(), fixtures::one_shell(fixtures::quad())), 6,
              {0, 1, 2, 3, 4, 5});
    }

    UnwrapSettings settings_;
    Unwrapper unwrapper_;
    MObject mesh_;
    MeshData data_;
    array<Vertex> vertices_;
    array<uint32_t> indices_;
};

TEST_F(ApplyUvs, WritesTheAtlasVerticesUnchangedInTheirOrder) {
    start(make_host_mesh(fixtures::triangle()), 3, {2, 0, 1});
    ASSERT_TRUE(apply());
    const UvLayout layout = layout_of(mesh_, "map1");
    EXPECT_EQ(layout.uvs,
              (std::vector<std::array<float, 2>>{{0, 0}, {0.125f, 0.0625f}, {0.25f, 0.125f}}));
    EXPECT_EQ(layout.ids, (std::vector<std::vector<int>>{{2, 0, 1}}));
}

TEST_F(ApplyUvs, ReplacesASetThatExistsEntirely) {
    const fixtures::Mesh cube = fixtures::cube();
    start(make_host_mesh(cube, fixtures::shell_per_polygon(cube)), 1, Words(36, 0));
    ASSERT_TRUE(apply());
    EXPECT_EQ(uv_sets_of(mesh_), (std::vector<std::string>{"map1"}));
    const UvLayout layout = layout_of(mesh_, "map1");
    EXPECT_EQ(layout.uvs.size(), 1u); // before: 24
    for (const auto& polygon : layout.ids)
        EXPECT_EQ(polygon, (std::vector<int>{0, 0, 0, 0}));
}

TEST_F(ApplyUvs, CreatesAMissingSetAndKeepsTheOthers) {
    settings_.uv_set = "lightmap";
    const UvLayout old = fixtures::one_shell(fixtures::triangle());
    start(make_host_mesh(fixtures::triangle(), old), 3, {0, 1, 2});
    ASSERT_TRUE(apply());
    EXPECT_EQ(uv_sets_of(mesh_), (std::vector<std::string>{"map1", "lightmap"}));
    EXPECT_EQ(layout_of(mesh_, "lightmap").ids, (std::vector<std::vector<int>>{{0, 1, 2}}));
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), old));
}

TEST_F(ApplyUvs, SharedCornersOfASplitQuadGetTheUvsOfTheSecondTriangle) {
    start_torn_quad();
    ASSERT_TRUE(apply());
    // Expected from the host's triangulation: of the triangles at a corner the last one wins.
    std::vector<int> expected(4, -1);
    for (uint32_t i = 0; i < 6; ++i)
        expected[data_.face_corners.get(0)->get(i)] = static_cast<int>(i);
    const std::vector<int> ids = layout_of(mesh_, "map1").ids[0];
    EXPECT_EQ(ids, expected);
    int from_second = 0;
    for (const int id : ids)
        from_second += id >= 3;
    EXPECT_EQ(from_second, 3);
}

TEST_F(ApplyUvs, WithoutPolygonsSetsTheUvsAndAssignsNone) {
    settings_.uv_set = "lightmap";
    start(make_host_mesh(fixtures::empty()), 2, {});
    ASSERT_TRUE(apply());
    const UvLayout layout = layout_of(mesh_, "lightmap");
    EXPECT_EQ(layout.uvs.size(), 2u);
    EXPECT_TRUE(layout.ids.empty());
}

TEST_F(ApplyUvs, CornerThatNoTriangleReachesGetsUv0) {
    start(make_host_mesh(fixtures::quad()), 6, {3, 4, 5, 3, 4, 5});
    CornerList& corners = *data_.face_corners.get(0);
    const uint32_t unreached = corners.get(1);
    for (uint32_t j = 0; j < corners.count(); ++j)
        if (corners.get(j) == unreached)
            corners[j] = (unreached + 1) % 4;
    ASSERT_TRUE(apply());
    EXPECT_EQ(layout_of(mesh_, "map1").ids[0][unreached], 0);
}

TEST_F(ApplyUvs, RepeatedVertexIsMappedByItsPositionInTheCornerLists) {
    const fixtures::Mesh mesh = fixtures::polygon_with_repeated_vertices();
    MObject object = make_host_mesh(mesh);
    MeshData data;
    ASSERT_TRUE(collect_mesh_data(unwrapper_, object, data, nullptr));
    const uint32_t entries = data.face_corners.get(0)->count();
    Words ascending;
    for (uint32_t i = 0; i < entries; ++i)
        ascending.push_back(i);
    start(object, entries, ascending);
    ASSERT_TRUE(apply());
    std::vector<int> expected(mesh.polygons[0].size(), 0);
    for (uint32_t j = 0; j < entries; ++j)
        expected[data_.face_corners.get(0)->get(j)] = static_cast<int>(j);
    EXPECT_EQ(layout_of(mesh_, "map1").ids[0], expected);
}

TEST_F(ApplyUvs, FreesItsLists) {
    start_torn_quad();
    const uint64_t live = live_blocks;
    ASSERT_TRUE(apply());
    EXPECT_EQ(live_blocks, live);
}

TEST_F(ApplyUvs, IdListGrowsPerCornerWhenItCannotBeReserved) {
    start_torn_quad();
    {
        AllocationWatch watch(0);
        EXPECT_FALSE(static_cast<bool>([this] {
            testing::internal::CaptureStderr();
            const MStatus status = apply();
            EXPECT_EQ(testing::internal::GetCapturedStderr(),
                      "Data updater could not assign new UV's.\n");
            return status;
        }()));
    }
}

using ApplyUvsDeathTest = ApplyUvs;

TEST_F(ApplyUvsDeathTest, AtlasIndicesThatEndEarlyAreABug) {
    start(make_host_mesh(fixtures::quad()), 3, {0, 1, 2, 0, 1});
    notices() = Notices(); // no hook: the message box goes to standard error
    EXPECT_EXIT(apply(), testing::KilledBySignal(SIGABRT),
                literally("array<unsigned long>::get() BUG at file \"corelib/array\", line ") +
                    "[0-9]+" + literally(": assertion ind < cur_elements failed!"));
}

// ---- failures -----------------------------------------------------------------------------------

class ApplyUvsFails : public ApplyUvs {
protected:
    /// Applies twice, with one host call failing with different codes, and expects the lines.
    void expect_lines(const char* point, unsigned nth, const std::string& lines) {
        for (const MStatus::MStatusCode code : {MStatus::kFailure, MStatus::kNotFound}) {
            const faultpoint::Scope fault(point, code, nth);
            testing::internal::CaptureStderr();
            const MStatus status = apply();
            EXPECT_EQ(testing::internal::GetCapturedStderr(), lines) << point;
            EXPECT_EQ(status, code) << point;
        }
    }
};

TEST_F(ApplyUvsFails, WithoutFacesTheMeshIsUntouched) {
    start_torn_quad();
    const UvLayout before = layout_of(mesh_, "map1");
    expect_lines("MItMeshPolygon::MItMeshPolygon", 1,
                 "Data updater could not retrieve faces from mesh\n");
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
}

TEST_F(ApplyUvsFails, WithoutAMeshFunctionSetTheMeshIsUntouched) {
    start_torn_quad();
    const UvLayout before = layout_of(mesh_, "map1");
    expect_lines("MFnMesh::setObject", 1, "Data updater could not retrieve mesh_fn from mesh.\n");
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
}

TEST_F(ApplyUvsFails, FailureInsideTheSetCheckWritesBothLines) {
    start_torn_quad();
    expect_lines("MFnMesh::setObject", 2,
                 "Data updater could not retrieve mesh_fn from mesh.\n"
                 "Unwrapping aborted because UV Set does not exist.\n");
}

TEST_F(ApplyUvsFails, IfTheUvSetsCannotBeListedTheMeshIsUntouched) {
    start_torn_quad();
    const UvLayout before = layout_of(mesh_, "map1");
    expect_lines("MFnMesh::getUVSetNames", 1,
                 "Unwrapping aborted because UV Set does not exist.\n");
    EXPECT_EQ(uv_sets_of(mesh_), (std::vector<std::string>{"map1"}));
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
}

TEST_F(ApplyUvsFails, WithoutTheUvSetTheMeshIsUntouched) {
    settings_.uv_set = "lightmap";
    start_torn_quad();
    expect_lines("MFnMesh::createUVSetDataMesh", 1,
                 "UV Set creation failed.\n"
                 "Unwrapping aborted because UV Set does not exist.\n");
    EXPECT_EQ(uv_sets_of(mesh_), (std::vector<std::string>{"map1"}));
}

TEST_F(ApplyUvsFails, WhenTheSetCannotBeClearedItKeepsItsUvs) {
    start_torn_quad();
    const UvLayout before = layout_of(mesh_, "map1");
    expect_lines("MFnMesh::clearUVs", 1, "Data updater could not clear old UV's.\n");
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
}

TEST_F(ApplyUvsFails, WhenTheUvsCannotBeSetTheSetIsEmpty) {
    start_torn_quad();
    expect_lines("MFnMesh::setUVs", 1, "Data updater could not set new UV's.\n");
    EXPECT_TRUE(layout_of(mesh_, "map1").uvs.empty());
}

TEST_F(ApplyUvsFails, WhenACornerCannotBeAssignedTheEarlierOnesAre) {
    start(make_host_mesh(fixtures::triangle()), 3, {0, 1, 2});
    expect_lines("MFnMesh::assignUV", 3, "Data updater could not assign new UV's.\n");
    const UvLayout layout = layout_of(mesh_, "map1");
    EXPECT_EQ(layout.uvs.size(), 3u);
    EXPECT_EQ(layout.ids.size(), 1u);
    if (layout.ids[0].size() == 3) {
        EXPECT_EQ(layout.ids[0][0], 0);
        EXPECT_EQ(layout.ids[0][1], 1);
        EXPECT_LT(layout.ids[0][2], 0);
    }
}

TEST(EnsureUvSet, FailsOnAMeshThatCannotHaveANewSet) {
    MObject nothing;
    testing::internal::CaptureStderr();
    const MStatus status = ensure_uv_set("map1", nothing);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Data updater could not retrieve mesh_fn from mesh.\n");
    EXPECT_FALSE(status);
}

TEST(EnsureUvSet, CreatesASetOnlyOnce) {
    MObject mesh = make_host_mesh(fixtures::quad());
    EXPECT_TRUE(ensure_uv_set("bake", mesh));
    EXPECT_TRUE(ensure_uv_set("bake", mesh));
    EXPECT_EQ(uv_sets_of(mesh), (std::vector<std::string>{"map1", "bake"}));
}

} // namespace
