#include "faultpoint/faultpoint.h"
#include "host/ui/panels.h"
#include "plugin/unwrapper.h"
#include "tests/corelib/math/math_fixture.h"
#include "tests/plugin/collected.h"
#include "tests/plugin/progress_record.h"

#include <maya/MProgressWindow.h>

#include <csignal>
#include <gtest/gtest.h>
#include <set>

namespace {

using Edges = std::vector<std::pair<int, int>>;
using fixtures::UvLayout;

class Unwrap : public LoggedLines {
protected:
    Unwrap() : settings_(plain_settings()) {}

    /// One unwrap between begin_progress and end_progress; captures standard error.
    MStatus unwrap(MObject mesh) {
        mesh_ = mesh;
        Unwrapper unwrapper(&settings_);
        begin_progress();
        testing::internal::CaptureStderr();
        const MStatus status = unwrapper.unwrap(mesh_, &existing_, &new_);
        said_ = testing::internal::GetCapturedStderr();
        end_progress();
        return status;
    }

    static Edges edges_of(const MIntArray& pairs) {
        std::set<std::pair<int, int>> edges;
        for (const auto& [a, b] : pairs_of(pairs))
            edges.insert({std::min(a, b), std::max(a, b)});
        return Edges(edges.begin(), edges.end());
    }

    /// The current seams of the mesh, each once, sorted.
    Edges seams_now() {
        Collected result;
        collect(settings_, mesh_, result);
        return edges_of(result.seam_pairs);
    }

    /// A cube with one UV shell per face.
    static MObject torn_cube() {
        return make_host_mesh(fixtures::cube(), fixtures::shell_per_polygon(fixtures::cube()));
    }

    UnwrapSettings settings_;
    MObject mesh_;
    MIntArray existing_;
    MIntArray new_;
    std::string said_;
};

TEST_F(Unwrap, GivesEveryCornerATextureCoordinateInTheUnitSquare) {
    for (const fixtures::Mesh& mesh :
         {fixtures::triangle(), fixtures::cube(), fixtures::hills(5, 1), fixtures::ring(8, 5),
          fixtures::hub(40), fixtures::concave_ngon(5), fixtures::edge_with_three_faces(),
          fixtures::bowtie_vertex(), fixtures::touching_by_position(),
          fixtures::tangle(20, 3, false)}) {
        ASSERT_TRUE(unwrap(make_host_mesh(mesh))) << mesh.name;
        EXPECT_EQ(said_, "");
        const UvLayout layout = layout_of(mesh_, "map1");
        ASSERT_EQ(layout.ids.size(), mesh.polygons.size()) << mesh.name;
        for (size_t p = 0; p < layout.ids.size(); ++p) {
            ASSERT_EQ(layout.ids[p].size(), mesh.polygons[p].size()) << mesh.name;
            for (const int id : layout.ids[p])
                for (const float coordinate : layout.uvs[static_cast<size_t>(id)])
                    ASSERT_TRUE(coordinate >= 0 && coordinate <= 1) << mesh.name;
        }
        EXPECT_GE(settings_.charts_result, 1) << mesh.name;
    }
}

TEST_F(Unwrap, ClampsTheSettingsFirst) {
    settings_.tex_width = 4;
    settings_.stretch = 1.5;
    settings_.epsilon = 0;
    settings_.padding = 0;
    settings_.charts = 100;
    ASSERT_TRUE(unwrap(make_host_mesh(fixtures::triangle())));
    EXPECT_EQ(settings_.tex_width, 8);
    EXPECT_EQ(settings_.stretch, 1.0);
    EXPECT_EQ(settings_.epsilon, 0.001);
    EXPECT_EQ(settings_.charts, 64);
}

TEST_F(Unwrap, MakesTheSetThatTheSettingsName) {
    settings_.uv_set = "lightmap";
    const UvLayout old = fixtures::one_shell(fixtures::quad());
    ASSERT_TRUE(unwrap(make_host_mesh(fixtures::quad(), old)));
    EXPECT_EQ(uv_sets_of(mesh_), (std::vector<std::string>{"map1", "lightmap"}));
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), old));
    EXPECT_EQ(layout_of(mesh_, "lightmap").ids.size(), 1u);
}

TEST_F(Unwrap, EverySeamIsNewWhenSeamsAreNotKept) {
    ASSERT_TRUE(unwrap(torn_cube()));
    EXPECT_EQ(existing_.length(), 0u);
    EXPECT_GE(new_.length(), 2u * 7u); // flattening a cube needs at least seven cut edges
    EXPECT_EQ(pairs_of(new_), seams_now());
}

TEST_F(Unwrap, KeptSeamIsListedAsExistingAndNotAsNew) {
    settings_.keep_seams = true;
    ASSERT_TRUE(unwrap(torn_cube()));
    EXPECT_EQ(edges_of(existing_).size(), 12u);
    EXPECT_EQ(existing_.length(), 2u * 24u); // 12 edges, each once per adjacent triangle
    EXPECT_EQ(seams_now(), edges_of(existing_));
    EXPECT_EQ(new_.length(), 0u);
}

TEST_F(Unwrap, NewSeamsContainNoKeptSeam) {
    settings_.keep_seams = true;
    const fixtures::Mesh cube = fixtures::cube();
    ASSERT_TRUE(unwrap(make_host_mesh(cube, fixtures::shells(cube, {0, 1, 1, 1, 1, 1}))));
    const Edges existing = edges_of(existing_);
    EXPECT_EQ(existing.size(), 4u);
    const Edges found = seams_now();
    for (const auto& edge : existing) { // existing seams stay seams
        EXPECT_NE(std::find(found.begin(), found.end(), edge), found.end());
        const Edges fresh = pairs_of(new_);
        EXPECT_EQ(std::find(fresh.begin(), fresh.end(), edge), fresh.end());
    }
    EXPECT_EQ(existing.size() + pairs_of(new_).size(), found.size());
}

TEST_F(Unwrap, SeamListsMayBeNull) {
    for (const bool keep : {false, true}) {
        settings_.keep_seams = keep;
        MObject mesh = torn_cube();
        Unwrapper unwrapper(&settings_);
        EXPECT_TRUE(unwrapper.unwrap(mesh, nullptr, nullptr));
        EXPECT_TRUE(unwrapper.unwrap(mesh, nullptr, &new_));
        EXPECT_TRUE(unwrapper.unwrap(mesh, &existing_, nullptr));
    }
}

TEST_F(Unwrap, NoSeamIsSubtractedWithoutAListOfExistingSeams) {
    settings_.keep_seams = true;
    MObject mesh = torn_cube();
    Unwrapper unwrapper(&settings_);
    ASSERT_TRUE(unwrapper.unwrap(mesh, nullptr, &new_));
    EXPECT_EQ(pairs_of(new_).size(), 12u);
}

TEST_F(Unwrap, OldUvsChangeNothingUnlessSeamsAreKept) {
    const fixtures::Mesh hills = fixtures::hills(5, 9);
    ASSERT_TRUE(unwrap(make_host_mesh(hills)));
    const UvLayout from_none = layout_of(mesh_, "map1");
    ASSERT_TRUE(unwrap(make_host_mesh(hills, fixtures::random_shells(hills, 4, 2))));
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), from_none));
}

TEST_F(Unwrap, ASecondUnwrapMakesTheSameUvs) {
    const fixtures::Mesh ring = fixtures::ring(9, 6);
    ASSERT_TRUE(unwrap(make_host_mesh(ring)));
    const UvLayout first = layout_of(mesh_, "map1");
    ASSERT_TRUE(unwrap(make_host_mesh(ring)));
    const UvLayout second = layout_of(mesh_, "map1");
    EXPECT_EQ(first.uvs, second.uvs);
    EXPECT_EQ(first.ids, second.ids);
}

TEST_F(Unwrap, FreesAllItsLists) {
    const uint64_t live = live_blocks;
    ASSERT_TRUE(unwrap(torn_cube()));
    EXPECT_EQ(live_blocks, live);
}

// ---- progress -----------------------------------------------------------------------------------

TEST_F(Unwrap, ShowsTheNamesOfItsThreeStages) {
    ProgressRecord record;
    ASSERT_TRUE(unwrap(torn_cube()));
    EXPECT_EQ(record.stages(),
              (std::vector<std::string>{"", "Unwrapping mesh.", "Tessora: extracting required data",
                                        "Tessora: generating UV set", "Tessora: applying UV set"}));
    for (const auto& state : record.states)
        if (state.is_shown && state.status == "Tessora: applying UV set") {
            EXPECT_STREQ(state.title.asChar(), "Tessora: applying UV set");
        }
}

TEST_F(Unwrap, AtlasStageMovesTheProgressBarTo100) {
    ProgressRecord record;
    ASSERT_TRUE(unwrap(torn_cube()));
    int highest = 0;
    for (const auto& state : record.states)
        if (state.status == "Tessora: generating UV set")
            highest = std::max(highest, state.value);
    EXPECT_EQ(highest, 100);
}

TEST_F(Unwrap, RunsWithoutProgressWhenTheWindowIsAlreadyReserved) {
    ProgressRecord record;
    ASSERT_TRUE(MProgressWindow::reserve());
    record.states.clear();
    const faultpoint::Scope titles("MProgressWindow::setTitle", MStatus::kFailure, 1000000);
    const faultpoint::Scope stages("MProgressWindow::setProgressStatus", MStatus::kFailure,
                                   1000000);
    const faultpoint::Scope values("MProgressWindow::setProgress", MStatus::kFailure, 1000000);
    EXPECT_TRUE(unwrap(torn_cube()));
    EXPECT_FALSE(progress_reserved);
    EXPECT_TRUE(record.states.empty());
    EXPECT_EQ(faultpoint::passes("MProgressWindow::setTitle"), 0u);
    EXPECT_EQ(faultpoint::passes("MProgressWindow::setProgressStatus"), 0u);
    EXPECT_EQ(faultpoint::passes("MProgressWindow::setProgress"), 0u);
    MProgressWindow::endProgress();
}

TEST_F(Unwrap, ConstructionResetsTheProgressFlag) {
    progress_reserved = true;
    const Unwrapper unwrapper(&settings_);
    EXPECT_FALSE(progress_reserved);
}

// ---- failures -----------------------------------------------------------------------------------

TEST_F(Unwrap, WithoutAMainWindowChangesNothing) {
    const UvLayout before = fixtures::one_shell(fixtures::cube());
    for (const char* const point : {"M3dView::applicationShell", "M3dView::active3dView"})
        for (const MStatus::MStatusCode code : {MStatus::kFailure, MStatus::kNotFound}) {
            const faultpoint::Scope fault(point, code);
            existing_ = int_array({1, 2});
            new_ = int_array({3, 4});
            settings_.tex_width = 4;
            EXPECT_EQ(unwrap(make_host_mesh(fixtures::cube(), before)), code);
            EXPECT_EQ(said_, "Could not access Maya HWND.\n");
            EXPECT_EQ(settings_.tex_width, 4); // not even the settings are clamped
            EXPECT_EQ(existing_.length(), 2u);
            EXPECT_EQ(new_.length(), 2u);
            EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
        }
}

TEST_F(Unwrap, NullMainWindowFails) {
    void* const window = host::main_window();
    host::set_main_window(nullptr);
    EXPECT_FALSE(unwrap(make_host_mesh(fixtures::cube())));
    EXPECT_EQ(said_, "Could not access Maya HWND.\n");
    host::set_main_window(window);
}

TEST_F(Unwrap, ReturnsTheStatusOfAFailedCollection) {
    const uint64_t live = live_blocks;
    const UvLayout before = fixtures::one_shell(fixtures::cube());
    const faultpoint::Scope fault("MItMeshPolygon::getVertices", MStatus::kNotFound, 3);
    EXPECT_EQ(unwrap(make_host_mesh(fixtures::cube(), before)), MStatus::kNotFound);
    EXPECT_EQ(said_, "Data collector could not retrieve vertices from faces.\n");
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
    EXPECT_EQ(live_blocks, live);
}

TEST_F(Unwrap, FailedAtlasLeavesTheUvsAndReturnsKFailure) {
    const uint64_t live = live_blocks;
    const UvLayout before = fixtures::shell_per_polygon(fixtures::cube());
    settings_.uv_set = "lightmap";
    settings_.charts_result = -7;
    const faultpoint::Scope fault("D3DXUVAtlasCreate", static_cast<int>(D3DXERR_INVALIDMESH));
    EXPECT_EQ(unwrap(torn_cube()), MStatus::kFailure);
    EXPECT_EQ(said_, "");
    EXPECT_EQ(logged(), "Non-manifold mesh!");
    EXPECT_TRUE(same_uvs(layout_of(mesh_, "map1"), before));
    EXPECT_EQ(uv_sets_of(mesh_), (std::vector<std::string>{"map1"}));
    EXPECT_EQ(settings_.charts_result, -7);
    EXPECT_EQ(live_blocks, live);
}

TEST_F(Unwrap, WindowLostBetweenTheStagesReturnsKFailureWithoutALine) {
    const faultpoint::Scope fault("M3dView::applicationShell", MStatus::kFailure, 2);
    EXPECT_EQ(unwrap(torn_cube()), MStatus::kFailure);
    EXPECT_EQ(said_, "");
    EXPECT_EQ(logged(), "");
}

TEST_F(Unwrap, ReturnsTheStatusOfAFailedApply) {
    const uint64_t live = live_blocks;
    const faultpoint::Scope fault("MFnMesh::setUVs", MStatus::kInvalidParameter);
    // Without UVs, because setting them passes the same fault point.
    EXPECT_EQ(unwrap(make_host_mesh(fixtures::cube())), MStatus::kInvalidParameter);
    EXPECT_EQ(said_, "Data updater could not set new UV's.\n");
    EXPECT_EQ(live_blocks, live);
}

TEST_F(Unwrap, ReturnsTheStatusOfTheSecondCollection) {
    const uint64_t live = live_blocks;
    // Lets the polygon iterators of the first collection and of the updater pass.
    const faultpoint::Scope fault("MItMeshPolygon::MItMeshPolygon", MStatus::kNotFound, 3);
    EXPECT_EQ(unwrap(make_host_mesh(fixtures::cube())), MStatus::kNotFound);
    EXPECT_EQ(said_, "Data collector could not retrieve faces from mesh.\n");
    EXPECT_FALSE(layout_of(mesh_, "map1").uvs.empty()); // the UVs are written all the same
    EXPECT_EQ(live_blocks, live);
}

using UnwrapDeathTest = Unwrap;

// The corner lists are then longer than the list of triangle corners, so the updater reads past the
// end of the atlas. Callers must give every repeated vertex an id of its own first.
TEST_F(UnwrapDeathTest, PolygonThatListsAVertexTwiceIsABug) {
    MObject mesh = make_host_mesh(fixtures::polygon_with_repeated_vertices());
    Unwrapper unwrapper(&settings_);
    EXPECT_EXIT(
        {
            unsetenv("OUTPUT_DEBUG_STRING_FILE");
            notices().answer = 0; // the line goes to standard error
            unwrapper.unwrap(mesh, nullptr, nullptr);
        },
        testing::KilledBySignal(SIGABRT), literally("assertion ind < cur_elements failed!"));
}

TEST_F(Unwrap, FailsWhenTheUvSetCannotBeCreated) {
    settings_.uv_set = "lightmap";
    const faultpoint::Scope fault("MFnMesh::createUVSetDataMesh", MStatus::kFailure);
    EXPECT_EQ(unwrap(make_host_mesh(fixtures::cube())), MStatus::kFailure);
    EXPECT_EQ(said_, "UV Set creation failed.\n"
                     "Unwrapping aborted because UV Set does not exist.\n");
}

} // namespace
