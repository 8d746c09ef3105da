#include "faultpoint/faultpoint.h"
#include "host/ui/panels.h"
#include "platform/d3dx9/inspect.h"
#include "plugin/atlas_stage.h"
#include "tests/corelib/math/math_fixture.h"
#include "tests/plugin/atlas_call_watch.h"
#include "tests/plugin/collected.h"
#include "tests/plugin/malloc_watch.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <utility>

namespace {

using Words = std::vector<uint32_t>;

/// The atlas stage run on a collected mesh; every test checks the logged lines.
class GenerateAtlas : public LoggedLines {
protected:
    GenerateAtlas() : settings_(plain_settings()) {
        settings_.charts_result = -7;
        settings_.stretch_result = -7.0;
        atlas_call() = AtlasCall();
    }

    void start(const fixtures::Mesh& mesh) {
        input_ = std::make_unique<Collected>();
        collect(settings_, make_host_mesh(mesh), *input_);
    }

    bool generate() {
        Unwrapper unwrapper(&settings_);
        array<Vertex> vertices;
        vertices.append_array(input_->data.vertices);
        array<uint32_t> indices;
        indices.append_array(input_->data.indices);
        array<uint32_t> cut_edges, real_edges;
        cut_edges.append_array(input_->data.cut_edges);
        real_edges.append_array(input_->data.real_edges);
        return generate_atlas(unwrapper, std::move(vertices), std::move(indices),
                              std::move(cut_edges), std::move(real_edges), vertices_, indices_);
    }

    void expect_no_results() {
        EXPECT_EQ(settings_.charts_result, -7);
        EXPECT_EQ(settings_.stretch_result, -7.0);
    }

    UnwrapSettings settings_;
    std::unique_ptr<Collected> input_;
    array<Vertex> vertices_;
    array<uint32_t> indices_;
};

TEST_F(GenerateAtlas, ListsTakeNoMemoryWhileTheAtlasIsMade) {
    start(fixtures::hills(8, 2));
    const uint64_t live = live_blocks;
    ASSERT_TRUE(generate());
    EXPECT_EQ(live, atlas_call().blocks);
}

TEST_F(GenerateAtlas, KeepsTrianglesAndCornersInTheirOrder) {
    start(fixtures::hills(8, 2));
    ASSERT_TRUE(generate());
    ASSERT_EQ(indices_.count(), input_->data.indices.count());
    for (uint32_t i = 0; i < indices_.count(); ++i) {
        const Vertex from = input_->data.vertices.get(input_->data.indices.get(i));
        const Vertex to = vertices_.get(indices_.get(i));
        ASSERT_EQ(from.x, to.x);
        ASSERT_EQ(from.y, to.y);
        ASSERT_EQ(from.z, to.z);
    }
    EXPECT_EQ(logged(), "");
}

TEST_F(GenerateAtlas, CoordinatesLieInTheUnitSquare) {
    settings_.tex_width = 1024;
    settings_.tex_height = 256;
    settings_.padding = 8;
    start(fixtures::ring(8, 6));
    ASSERT_TRUE(generate());
    for (uint32_t i = 0; i < vertices_.count(); ++i) {
        const Vertex vertex = vertices_.get(i);
        ASSERT_TRUE(vertex.u >= 0 && vertex.u <= 1 && vertex.v >= 0 && vertex.v <= 1);
    }
}

TEST_F(GenerateAtlas, LeavesChartCountAndStretchInTheSettings) {
    start(fixtures::cube());
    ASSERT_TRUE(generate());
    EXPECT_GE(settings_.charts_result, 1);
    EXPECT_GE(settings_.stretch_result, 0.0);
    EXPECT_LE(settings_.stretch_result, settings_.stretch);
}

TEST_F(GenerateAtlas, ResultsAreThoseOfTheAtlasCall) {
    settings_.stretch = 0.5;
    start(fixtures::hills(6, 3));
    ASSERT_TRUE(generate());
    EXPECT_GT(atlas_call().stretch_out, 0.0f);
    EXPECT_EQ(settings_.stretch_result, static_cast<double>(atlas_call().stretch_out));
    EXPECT_EQ(settings_.charts_result, static_cast<int32_t>(atlas_call().charts_out));
}

TEST_F(GenerateAtlas, MakesTheDeviceForTheMainWindow) {
    void* const before = host::main_window();
    int window = 0;
    host::set_main_window(&window);
    start(fixtures::cube());
    EXPECT_TRUE(generate());
    host::set_main_window(before);
    EXPECT_EQ(device_window, &window);
}

class GenerateAtlasAdjusts : public GenerateAtlas, public testing::WithParamInterface<float> {};

// A call that returns coordinates beyond 1 has them fitted first; the aspect is corrected always.
TEST_P(GenerateAtlasAdjusts, CoordinatesToATextureThatIsNotSquare) {
    settings_.tex_width = 1024;
    settings_.tex_height = 256;
    settings_.padding = 8;
    start(fixtures::grid(12, 2)); // as long as the texture is wide
    atlas_call().uv_scale = GetParam();
    ASSERT_TRUE(generate());
    const std::vector<float>& raw = atlas_call().uvs;
    ASSERT_EQ(raw.size(), 2 * vertices_.count());
    const bool beyond = *std::max_element(raw.begin(), raw.end()) > 1.0f;
    EXPECT_EQ(beyond, GetParam() > 1.0f);
    const float fit = beyond ? 256.0f / 1024.0f : 1.0f;
    const float gutter = 8.0f / 1024.0f;
    const float keep = 1.0f - gutter * 4.0f;
    for (uint32_t i = 0; i < vertices_.count(); ++i) {
        const Vertex vertex = vertices_.get(i);
        ASSERT_NEAR(vertex.u, raw[2 * i] * fit * keep + gutter / 2, 1e-6);
        ASSERT_NEAR(vertex.v, raw[2 * i + 1] * fit * 4.0f * keep + gutter / 2, 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, GenerateAtlasAdjusts, testing::Values(1.0f, 4.0f));

TEST_F(GenerateAtlas, HandsTheSettingsToTheAtlasCall) {
    settings_.stretch = 0.25;
    settings_.tex_width = 1024;
    settings_.tex_height = 512;
    settings_.padding = 3;
    start(fixtures::cube());
    ASSERT_TRUE(generate());
    const AtlasCall& call = atlas_call();
    EXPECT_EQ(call.calls, 1u);
    EXPECT_EQ(call.max_stretch, 0.25f);
    EXPECT_EQ(call.width, 1024u);
    EXPECT_EQ(call.height, 512u);
    EXPECT_EQ(call.gutter, 3.0f);
    EXPECT_EQ(call.texture_index, 0u);
    EXPECT_EQ(call.callback_frequency, 0.1f);
    EXPECT_TRUE(call.has_callback);
    EXPECT_EQ(call.vertices, 8u);
    EXPECT_EQ(call.faces, 12u);
}

TEST_F(GenerateAtlas, HighQualityChoosesTheQualityMode) {
    start(fixtures::cube());
    ASSERT_TRUE(generate());
    EXPECT_EQ(atlas_call().options, static_cast<DWORD>(D3DXUVATLAS_GEODESIC_FAST));
    settings_.high_quality = true;
    ASSERT_TRUE(generate());
    EXPECT_EQ(atlas_call().options, static_cast<DWORD>(D3DXUVATLAS_GEODESIC_QUALITY));
}

TEST_F(GenerateAtlas, ChartsSettingChangesNothing) {
    start(fixtures::ring(6, 5));
    ASSERT_TRUE(generate());
    EXPECT_EQ(atlas_call().max_charts, 0u);
    const std::vector<Vertex> without = values_of(vertices_);
    const Words without_indices = values_of(indices_);
    settings_.charts = 10;
    ASSERT_TRUE(generate());
    EXPECT_EQ(atlas_call().max_charts, 0u);
    EXPECT_EQ(values_of(indices_), without_indices);
    ASSERT_EQ(vertices_.count(), without.size());
    for (uint32_t i = 0; i < vertices_.count(); ++i) {
        ASSERT_EQ(vertices_.get(i).u, without[i].u);
        ASSERT_EQ(vertices_.get(i).v, without[i].v);
    }
}

TEST_F(GenerateAtlas, PaddingOf0LeavesNoMargin) {
    settings_.padding = 0;
    start(fixtures::quad());
    ASSERT_TRUE(generate());
    float low = 1, high = 0;
    for (uint32_t i = 0; i < vertices_.count(); ++i) {
        low = std::min({low, vertices_.get(i).u, vertices_.get(i).v});
        high = std::max({high, vertices_.get(i).u, vertices_.get(i).v});
    }
    EXPECT_LE(low, 1.0f / 512);
    EXPECT_LE(high, 1.0f);
}

TEST_F(GenerateAtlas, PassesDiagonalsAsFalseEdges) {
    start(fixtures::cube());
    ASSERT_TRUE(generate());
    EXPECT_EQ(atlas_call().false_edges, input_->real_edges());
}

TEST_F(GenerateAtlas, PassesNoFalseEdgesWhenSkipFalseEdgesIsSet) {
    settings_.skip_false_edges = 1;
    start(fixtures::cube());
    ASSERT_TRUE(generate());
    EXPECT_FALSE(atlas_call().has_false_edges);
}

TEST_F(GenerateAtlas, OpensTheAdjacencyAtCutEdges) {
    settings_.use_ridges = true;
    settings_.ridge_angle = 90;
    start(fixtures::cube());
    ASSERT_TRUE(generate());
    EXPECT_EQ(settings_.charts_result, 6);
    const Words real = input_->real_edges();
    for (uint32_t i = 0; i < 36; ++i)
        EXPECT_EQ(atlas_call().adjacency[i] == k_none, real[i] == k_none);
}

// A triangle of false edges only has three chains; the repair joins them by making edges real.
TEST_F(GenerateAtlas, RepairsACopyOfTheFalseEdges) {
    start(fixtures::triangle());
    input_->data.real_edges.clear();
    for (int i = 0; i < 3; ++i)
        input_->data.real_edges.append(0);
    generate();
    EXPECT_EQ(atlas_call().false_edges, (Words{k_none, k_none, k_none}));
    EXPECT_EQ(input_->real_edges(), (Words{0, 0, 0}));
}

TEST_F(GenerateAtlas, ReleasesEverythingButTheRemapBuffer) {
    start(fixtures::cube());
    const unsigned objects = d3dx9_live_objects();
    const uint64_t live = live_blocks;
    {
        MallocWatch watch;
        ASSERT_TRUE(generate());
        EXPECT_TRUE(MallocWatch::live().empty());
    }
    EXPECT_EQ(d3dx9_live_objects(), objects + 1); // deliberately neither read nor released
    vertices_.resize(0);
    indices_.resize(0);
    EXPECT_EQ(live_blocks, live);
}

TEST_F(GenerateAtlas, AllocatesSixteenBytesPerEdgeForFalseEdgesAndForAdjacency) {
    start(fixtures::cube());
    MallocWatch watch;
    ASSERT_TRUE(generate());
    const std::vector<size_t> requests = MallocWatch::requests();
    ASSERT_GE(requests.size(), 2u);
    EXPECT_EQ(requests[0], 36u * 16u);
    EXPECT_EQ(requests[1], 36u * 16u);
}

// ---- failures -----------------------------------------------------------------------------------

TEST_F(GenerateAtlas, WithoutAMainWindowMakesNoDeviceAndLogsNothing) {
    start(fixtures::cube());
    for (const char* const point : {"M3dView::applicationShell", "M3dView::active3dView"}) {
        const faultpoint::Scope fault(point, MStatus::kFailure);
        const faultpoint::Scope device("Direct3DCreate9", 1, 1000);
        MallocWatch watch;
        EXPECT_FALSE(generate());
        EXPECT_EQ(faultpoint::passes("Direct3DCreate9"), 0u);
        EXPECT_TRUE(MallocWatch::live().empty());
    }
    EXPECT_EQ(logged(), "");
    expect_no_results();
}

TEST_F(GenerateAtlas, OnlyTheStatusKFailureOfTheWindowStopsIt) {
    start(fixtures::cube());
    const faultpoint::Scope fault("M3dView::applicationShell", MStatus::kNotFound);
    EXPECT_TRUE(generate());
}

TEST_F(GenerateAtlas, LogsWhenMemoryForTheFalseEdgesRunsOut) {
    start(fixtures::cube());
    const uint64_t live = live_blocks;
    {
        MallocWatch watch(0);
        EXPECT_FALSE(generate());
        EXPECT_TRUE(MallocWatch::live().empty());
    }
    EXPECT_EQ(logged(), "Out of memory, can not generate false edges");
    EXPECT_EQ(live_blocks, live);
    expect_no_results();
}

TEST_F(GenerateAtlas, ReleasesEverythingWhenDirect3DIsMissing) {
    start(fixtures::cube());
    const faultpoint::Scope fault("Direct3DCreate9", 1);
    MallocWatch watch;
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "Direct3DCreate9 failed");
    EXPECT_TRUE(MallocWatch::live().empty());
    expect_no_results();
}

TEST_F(GenerateAtlas, ReleasesEverythingWhenTheDeviceFails) {
    start(fixtures::cube());
    const unsigned objects = d3dx9_live_objects();
    const faultpoint::Scope fault("IDirect3D9::CreateDevice",
                                  static_cast<int>(D3DERR_NOTAVAILABLE));
    MallocWatch watch;
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "CreateDevice failed");
    EXPECT_TRUE(MallocWatch::live().empty());
    EXPECT_EQ(d3dx9_live_objects(), objects);
    expect_no_results();
}

TEST_F(GenerateAtlas, LeaksDeviceAndFalseEdgesWhenTheMeshFails) {
    start(fixtures::cube());
    const unsigned objects = d3dx9_live_objects();
    const uint64_t live = live_blocks;
    const faultpoint::Scope fault("D3DXCreateMesh", static_cast<int>(E_OUTOFMEMORY));
    MallocWatch watch;
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "Failed to create d3dx mesh: E_OUTOFMEMORY");
    EXPECT_EQ(d3dx9_live_objects(), objects + 1);
    EXPECT_EQ(MallocWatch::live(), (std::vector<size_t>{36 * 16}));
    MallocWatch::free_live();
    EXPECT_EQ(live_blocks, live);
    expect_no_results();
}

TEST_F(GenerateAtlas, LeaksTheMeshTooWhenItsBuffersCannotBeLocked) {
    for (const auto& [point, line] :
         {std::pair{"ID3DXMesh::LockVertexBuffer", "Unable to lock vertex buffer"},
          std::pair{"ID3DXMesh::LockIndexBuffer", "Unable to lock index buffer"}}) {
        start(fixtures::cube());
        const size_t lines = notices().texts.size();
        const unsigned objects = d3dx9_live_objects();
        const faultpoint::Scope fault(point, static_cast<int>(E_OUTOFMEMORY));
        MallocWatch watch;
        EXPECT_FALSE(generate());
        ASSERT_EQ(notices().texts.size(), lines + 1);
        EXPECT_NE(notices().texts.back().find(line), std::string::npos);
        EXPECT_EQ(d3dx9_live_objects(), objects + 2);
        MallocWatch::free_live();
    }
}

TEST_F(GenerateAtlas, LeaksMeshDeviceAndFalseEdgesWhenTheAdjacencyFails) {
    start(fixtures::cube());
    const unsigned objects = d3dx9_live_objects();
    const faultpoint::Scope fault("ID3DXMesh::ConvertPointRepsToAdjacency",
                                  static_cast<int>(D3DERR_INVALIDCALL));
    MallocWatch watch;
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "ConvertPointRepsToAdjacency() failed: D3DERR_INVALIDCALL\n");
    EXPECT_EQ(d3dx9_live_objects(), objects + 2);
    EXPECT_EQ(MallocWatch::live(), (std::vector<size_t>{36 * 16, 36 * 16}));
    MallocWatch::free_live();
    expect_no_results();
}

TEST_F(GenerateAtlas, LeaksMeshAndDeviceWhenMemoryForTheAdjacencyRunsOut) {
    start(fixtures::cube());
    const unsigned objects = d3dx9_live_objects();
    // While any point is armed the library marks its objects as leaked on purpose.
    const faultpoint::Scope planned("failure of the ordinary allocator", 1);
    MallocWatch watch(1);
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "Out of memory, can not generate adjacency list");
    EXPECT_EQ(d3dx9_live_objects(), objects + 2);
    MallocWatch::free_live();
}

TEST_F(GenerateAtlas, InvalidMeshIsLoggedAsNonManifold) {
    start(fixtures::cube());
    const unsigned objects = d3dx9_live_objects();
    const uint64_t live = live_blocks;
    const faultpoint::Scope fault("D3DXUVAtlasCreate", static_cast<int>(D3DXERR_INVALIDMESH));
    MallocWatch watch;
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "Non-manifold mesh!");
    EXPECT_TRUE(MallocWatch::live().empty());
    EXPECT_EQ(d3dx9_live_objects(), objects);
    EXPECT_EQ(live_blocks, live);
    expect_no_results();
}

TEST_F(GenerateAtlas, OtherFailuresOfTheAtlasCallAreLoggedWithTheResultsName) {
    start(fixtures::cube());
    const faultpoint::Scope fault("D3DXUVAtlasCreate", static_cast<int>(D3DERR_MOREDATA));
    EXPECT_FALSE(generate());
    EXPECT_EQ(logged(), "Unwrapping not possible. Try increasing the maximum number of charts, the "
                        "allowed stretch or the texture size.\n(D3DERR_MOREDATA)");
    expect_no_results();
}

TEST_F(GenerateAtlas, FailsWhenTheResultCannotBeReadBack) {
    for (const auto& [point, line] :
         {std::pair{"ID3DXMesh::LockVertexBuffer", "Unable to lock vertex buffer"},
          std::pair{"ID3DXMesh::LockIndexBuffer", "Unable to lock index buffer"}}) {
        start(fixtures::cube());
        const size_t lines = notices().texts.size();
        // The last lock is the reading back; how many the library makes before does not matter.
        unsigned passes;
        {
            const faultpoint::Scope count(point, 1, 1000);
            ASSERT_TRUE(generate());
            passes = faultpoint::passes(point);
        }
        settings_.charts_result = -7;
        settings_.stretch_result = -7.0;
        const faultpoint::Scope fault(point, static_cast<int>(E_FAIL), passes);
        EXPECT_FALSE(generate());
        ASSERT_EQ(notices().texts.size(), lines + 1);
        EXPECT_NE(notices().texts.back().find(line), std::string::npos);
        expect_no_results();
    }
}

TEST_F(GenerateAtlas, SkipsAnAdjustmentThatCannotLockTheMesh) {
    start(fixtures::cube());
    unsigned passes;
    {
        const faultpoint::Scope count("ID3DXMesh::LockVertexBuffer", 1, 1000);
        ASSERT_TRUE(generate());
        passes = faultpoint::passes("ID3DXMesh::LockVertexBuffer");
    }
    const std::vector<Vertex> with_margin = values_of(vertices_);
    const faultpoint::Scope fault("ID3DXMesh::LockVertexBuffer", static_cast<int>(E_FAIL),
                                  passes - 1);
    EXPECT_TRUE(generate());
    EXPECT_EQ(logged(), "");
    EXPECT_LT(vertices_.get(0).u + vertices_.get(0).v, 2.0f);
    bool differs = false;
    for (uint32_t i = 0; i < vertices_.count(); ++i)
        differs = differs || vertices_.get(i).u != with_margin[i].u;
    EXPECT_TRUE(differs);
}

} // namespace
