// How the node publishes results, with an atlas call that returns values set by the test.
#include "tests/plugin_in_host/fixture.h"

#include <d3dx9.h>

#include <dlfcn.h>

namespace {

/// Values that replace the results of the atlas call; empty = keep its own.
bool g_claims = false;
unsigned g_charts = 0;
float g_stretch = 0.0f;

} // namespace

// Found before the library's call, because the dynamic linker searches the program first.
extern "C" HRESULT WINAPI D3DXUVAtlasCreate(
    LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch, UINT width, UINT height, FLOAT gutter,
    DWORD texture_index, CONST DWORD* adjacency, CONST DWORD* false_edges, CONST FLOAT* imt_array,
    LPD3DXUVATLASCB callback, FLOAT callback_frequency, LPVOID user_context, DWORD options,
    LPD3DXMESH* mesh_out, LPD3DXBUFFER* face_partitioning, LPD3DXBUFFER* vertex_remap,
    FLOAT* max_stretch_out, UINT* num_charts) {
    void* const library = dlopen("libtessora_d3dx9.so", RTLD_LAZY | RTLD_NOLOAD);
    using Call = decltype(&D3DXUVAtlasCreate);
    const auto real = reinterpret_cast<Call>(dlsym(library, "D3DXUVAtlasCreate"));
    const HRESULT result =
        real(mesh, max_charts, max_stretch, width, height, gutter, texture_index, adjacency,
             false_edges, imt_array, callback, callback_frequency, user_context, options, mesh_out,
             face_partitioning, vertex_remap, max_stretch_out, num_charts);
    if (g_claims) {
        *num_charts = g_charts;
        *max_stretch_out = g_stretch;
    }
    return result;
}

namespace plugin_in_host {

class PublicationTest : public InHostTest {
protected:
    PublicationTest() {
        g_claims = true;
        g_charts = 12;
        g_stretch = 0.25f;
        run("polyCube -n box; tessora");
        printed.clear();
    }
    ~PublicationTest() override { g_claims = false; }
};

TEST_F(PublicationTest, TwelveChartsAndAQuarterOfStretchAreWrittenWithSixDigits) {
    shown("boxShape");
    EXPECT_EQ(printed, "setAttr \"tessora_node1.Charts_result\" 12; "
                       "setAttr \"tessora_node1.Stretch_result\" 0.250000;\n");
    EXPECT_EQ(number_of("tessora_node1.Charts_result"), 12.0);
    EXPECT_EQ(number_of("tessora_node1.Stretch_result"), 0.25);
}

TEST_F(PublicationTest, BothStatementsNameTheNodeThatWasPulled) {
    run("rename tessora_node1 other");
    run("polyCube -n second; tessora");
    printed.clear();
    shown("boxShape");
    EXPECT_EQ(printed, "setAttr \"other.Charts_result\" 12; "
                       "setAttr \"other.Stretch_result\" 0.250000;\n");
    EXPECT_EQ(number_of("tessora_node1.Charts_result"), 0.0);
}

TEST_F(PublicationTest, EveryUnwrapPublishesAnewAndSkippedPullsDoNot) {
    shown("boxShape"); // the first evaluation ignores Skip_compute
    publications();
    for (unsigned charts = 1; charts <= 4; ++charts) {
        g_charts = charts;
        run("setAttr tessora_node1.Skip_compute 0");
        shown("boxShape");
        EXPECT_EQ(number_of("tessora_node1.Charts_result"), charts);
        g_charts = 99;
        run("setAttr tessora_node1.Padding " + std::to_string(charts));
        shown("boxShape");
        EXPECT_EQ(number_of("tessora_node1.Charts_result"), charts);
    }
    EXPECT_EQ(publications(), 4u);
}

TEST_F(PublicationTest, PublishingResultsAddsNothingToTheUndoQueue) {
    const size_t entries = undo_queue.undo_count();
    shown("boxShape");
    EXPECT_EQ(undo_queue.undo_count(), entries);
    run("undo");
    run("redo");
    EXPECT_EQ(number_of("tessora_node1.Charts_result"), 12.0);
}

TEST_F(PublicationTest, AConnectedResultAttributeStaysAndTheUnwrapSucceeds) {
    run("createNode transform -n feed; connectAttr feed.translateX tessora_node1.Stretch_result");
    const std::string before = shown("boxShape");
    EXPECT_EQ(number_of("tessora_node1.Charts_result"), 12.0);
    EXPECT_EQ(number_of("tessora_node1.Stretch_result"), 0.0);
    EXPECT_EQ(callbacks_attached(), 4u);
}

} // namespace plugin_in_host
