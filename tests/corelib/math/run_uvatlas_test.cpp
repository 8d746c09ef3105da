#include "corelib/math/run_uvatlas.h"
#include "faultpoint/faultpoint.h"
#include "tests/corelib/math/math_fixture.h"
#include "tests/platform/d3dx9/fake_engine.h"

namespace {

using fake_engine::state;
using tessora::atlas::Quality;
using tessora::atlas::Status;

std::vector<float> fractions_heard;

int32_t hear(float fraction) {
    fractions_heard.push_back(fraction);
    return 0;
}

template <class T>
void drop(T* object) {
    if (object != nullptr)
        object->Release();
}

/// The atlas call over the recording engine.
class RunUvAtlas : public WithDevice {
protected:
    RunUvAtlas() : mesh_(make_mesh(4, k_quad)) {
        state() = {};
        fractions_heard.clear();
    }
    ~RunUvAtlas() override {
        mesh_->Release();
        drop(out_mesh_);
        drop(remap_buffer_);
        drop(partition_adjacency_);
        drop(face_partitioning_);
    }

    bool run(bool use_create = true, bool check_false_edges = true, bool with_false_edges = true) {
        return run_uvatlas(context_, mesh_, &out_mesh_, &remap_buffer_, progress_callback<hear>,
                           use_create, &partition_adjacency_, &face_partitioning_,
                           adjacency_.data(), with_false_edges ? false_edges_.data() : nullptr,
                           check_false_edges);
    }
    bool fail_with(Status status, uint32_t element = k_none) {
        state().failure = {status, element};
        return run();
    }

    ID3DXMesh* mesh_;
    std::vector<uint32_t> adjacency_ = {k_none, k_none, 1, 0, k_none, k_none};
    std::vector<uint32_t> false_edges_ = {k_none, k_none, 0, 0, k_none, k_none};
    ID3DXMesh* out_mesh_ = nullptr;
    ID3DXBuffer* remap_buffer_ = nullptr;
    ID3DXBuffer* partition_adjacency_ = nullptr;
    ID3DXBuffer* face_partitioning_ = nullptr;
};

TEST_F(RunUvAtlas, PassesTheContextAndTheArrays) {
    context_.max_charts = 3;
    context_.max_stretch = 0.5f;
    context_.width = 640;
    context_.height = 320;
    context_.gutter = 1.5f;
    ASSERT_TRUE(run());
    EXPECT_EQ(state().creates, 1u);
    EXPECT_EQ(state().options.max_charts, 3u);
    EXPECT_EQ(state().options.max_stretch, 0.5f);
    EXPECT_EQ(state().options.width, 640u);
    EXPECT_EQ(state().options.height, 320u);
    EXPECT_EQ(state().options.gutter, 1.5f);
    EXPECT_EQ(state().adjacency, adjacency_);
    EXPECT_EQ(state().false_edges, false_edges_);
    EXPECT_EQ(state().indices, k_quad);
}

TEST_F(RunUvAtlas, QualityFlagReachesTheAtlasCall) {
    release_device(context_);
    for (const bool high_quality : {true, false}) {
        AtlasContext context;
        ASSERT_TRUE(create_device(context, nullptr, 0, 0.25f, 64, 64, 1.0f, high_quality));
        ID3DXMesh* const mesh = create_mesh(context, vertices_in_a_row(4), list_of(k_quad));
        EXPECT_TRUE(run_uvatlas(context, mesh, nullptr, nullptr, nullptr, true, nullptr, nullptr,
                                adjacency_.data(), nullptr, true));
        EXPECT_EQ(state().options.quality, high_quality ? Quality::quality : Quality::fast);
        mesh->Release();
        release_device(context);
    }
}

TEST_F(RunUvAtlas, StoresStretchAndChartCountOnSuccess) {
    ASSERT_TRUE(run());
    EXPECT_EQ(context_.stretch_out, fake_engine::k_stretch);
    EXPECT_EQ(context_.charts_out, 2u);
    EXPECT_NE(out_mesh_, nullptr);
    EXPECT_NE(remap_buffer_, nullptr);
    EXPECT_NE(face_partitioning_, nullptr);
    EXPECT_EQ(partition_adjacency_, nullptr);
    EXPECT_EQ(logged(), "");
}

TEST_F(RunUvAtlas, PartitionsOnlyWhenAskedTo) {
    ASSERT_TRUE(run(false));
    EXPECT_EQ(state().creates, 0u);
    EXPECT_EQ(state().partitions, 1u);
    EXPECT_NE(partition_adjacency_, nullptr);
    EXPECT_EQ(context_.charts_out, 2u);
}

TEST_F(RunUvAtlas, ProgressIsReportedEveryTenth) {
    for (int tenth = 0; tenth <= 10; ++tenth)
        state().fractions.push_back(static_cast<float>(tenth) / 10.0f);
    ASSERT_TRUE(run());
    EXPECT_EQ(fractions_heard, state().fractions);
}

/// The quad with its diagonal false on one side only: the second triangle is never reached, and its
/// own false edge leads nowhere, so it is a polygon whose chains the repair joins.
TEST_F(RunUvAtlas, RepairsTheFalseEdgesFirst) {
    adjacency_ = std::vector<uint32_t>(6, k_none);
    false_edges_ = {0, 0, 0, k_none, k_none, k_none};
    ASSERT_TRUE(run());
    EXPECT_NE(false_edges_, (std::vector<uint32_t>{0, 0, 0, k_none, k_none, k_none}));
    EXPECT_EQ(state().false_edges, false_edges_);
}

TEST_F(RunUvAtlas, DoesNotRepairUnlessRequested) {
    adjacency_ = std::vector<uint32_t>(6, k_none);
    false_edges_ = {0, 0, 0, k_none, k_none, k_none};
    const std::vector<uint32_t> before = false_edges_;
    ASSERT_TRUE(run(true, false));
    EXPECT_EQ(state().false_edges, before);
}

TEST_F(RunUvAtlas, WithoutFalseEdgesPassesNull) {
    ASSERT_TRUE(run(true, true, false));
    EXPECT_TRUE(state().false_edges.empty());
}

TEST_F(RunUvAtlas, InvalidMeshIsLoggedAsNonManifold) {
    const faultpoint::Scope fault("D3DXUVAtlasCreate", D3DXERR_INVALIDMESH);
    EXPECT_FALSE(run());
    EXPECT_EQ(logged(), "Non-manifold mesh!");
}

TEST_F(RunUvAtlas, InvalidMeshTakesPrecedenceOverTheChartLimit) {
    context_.max_charts = 1;
    const faultpoint::Scope fault("D3DXUVAtlasPartition", D3DXERR_INVALIDMESH);
    EXPECT_FALSE(run(false));
    EXPECT_EQ(logged(), "Non-manifold mesh!");
}

TEST_F(RunUvAtlas, ChartLimitThatIsTooLowLogsTheMinimum) {
    context_.max_charts = 4;
    EXPECT_FALSE(fail_with(Status::chart_limit, 9));
    EXPECT_EQ(logged(), "Minimum number of charts is 9");
}

std::string not_possible(const std::string& name) {
    return "Unwrapping not possible. Try increasing the maximum number of charts, the allowed "
           "stretch or the texture size.\n(" +
           name + ")";
}

TEST_F(RunUvAtlas, FailureWithinTheChartLimitIsLoggedWithTheResultsName) {
    context_.max_charts = 9;
    EXPECT_FALSE(fail_with(Status::chart_limit, 9));
    EXPECT_EQ(logged(), not_possible("E_FAIL"));
}

TEST_F(RunUvAtlas, WithoutAChartLimitTheReportedCountIsIgnored) {
    EXPECT_FALSE(fail_with(Status::chart_limit, 9));
    EXPECT_EQ(logged(), not_possible("E_FAIL"));
}

TEST_F(RunUvAtlas, OtherFailuresAreLoggedWithTheirName) {
    context_.max_charts = 4;
    EXPECT_FALSE(fail_with(Status::does_not_fit, 9));
    EXPECT_EQ(logged(), not_possible("D3DERR_MOREDATA"));
}

TEST_F(RunUvAtlas, FailureKeepsTheLastResults) {
    context_.stretch_out = 0.75f;
    context_.charts_out = 7;
    EXPECT_FALSE(fail_with(Status::out_of_memory));
    EXPECT_EQ(context_.stretch_out, 0.75f);
    EXPECT_EQ(context_.charts_out, 7u);
    EXPECT_EQ(out_mesh_, nullptr);
}

} // namespace
