#include "faultpoint/faultpoint.h"
#include "platform/d3dx9/inspect.h"
#include "tests/platform/d3dx9/failing_new.h"
#include "tests/platform/d3dx9/fake_engine.h"
#include "tests/platform/d3dx9/mesh_fixture.h"

#include <limits>
#include <string>

namespace {

/// The calls of the stage hook, and at which it cancels.
struct StageCalls {
    std::vector<std::string> calls;
    size_t stop_at = std::numeric_limits<size_t>::max();
};
StageCalls stage_calls;

} // namespace

extern "C" __attribute__((visibility("default"))) int host_report_stage(const char* stage,
                                                                        float fraction) {
    stage_calls.calls.push_back(stage + std::string(" ") + std::to_string(fraction).substr(0, 3));
    return stage_calls.calls.size() == stage_calls.stop_at;
}

extern "C" __attribute__((visibility("default"))) int host_layout_effort() { return 7; }

extern "C" __attribute__((visibility("default"))) void
host_parallel_for(size_t count, void (*function)(size_t i, void* user), void* user) {
    for (size_t i = 0; i < count; ++i)
        function(i, user);
}

namespace {

using fake_engine::state;
using tessora::atlas::Quality;
using tessora::atlas::Status;

std::vector<DWORD> words_of(ID3DXBuffer* buffer) {
    const auto* const data = static_cast<const DWORD*>(buffer->GetBufferPointer());
    return {data, data + buffer->GetBufferSize() / sizeof(DWORD)};
}

/// One atlas call: its arguments, which a test may change, and its outputs.
class UvAtlas : public testing::Test {
protected:
    void SetUp() override { state() = {}; }

    void TearDown() override { EXPECT_EQ(d3dx9_live_objects(), live_before_ + expected_live_); }

    /// Calls that follow each other overwrite the slots.
    void reset_outputs() {
        mesh_out_.reset();
        faces_.reset();
        remap_.reset();
        opened_.reset();
    }

    HRESULT create() {
        reset_outputs();
        return D3DXUVAtlasCreate(mesh_, max_charts_, 0.25f, 640, 480, 3.5f, texture_index_,
                                 adjacency_.data(), false_edges_, imt_array_, callback_, frequency_,
                                 this, options_, mesh_out_.slot(), faces_.slot(), remap_.slot(),
                                 &stretch_, &charts_);
    }
    HRESULT partition() {
        reset_outputs();
        return D3DXUVAtlasPartition(mesh_, max_charts_, 0.25f, texture_index_, adjacency_.data(),
                                    false_edges_, imt_array_, callback_, frequency_, this, options_,
                                    mesh_out_.slot(), faces_.slot(), remap_.slot(), opened_.slot(),
                                    &stretch_, &charts_);
    }
    /// Makes the engine fail with `status`; expects all outputs but the chart count to be empty.
    HRESULT fail_with(Status status, uint32_t element) {
        state().failure = {status, element};
        const HRESULT result = create();
        EXPECT_EQ(mesh_out_.get(), nullptr);
        EXPECT_EQ(faces_.get(), nullptr);
        EXPECT_EQ(remap_.get(), nullptr);
        EXPECT_EQ(stretch_, 0.0f);
        return result;
    }

    unsigned live_before_ = d3dx9_live_objects();
    Held<ID3DXMesh> quad_ = make_mesh(k_quad, 4);
    unsigned expected_live_ = 2; ///< the input mesh and its device
    ID3DXMesh* mesh_ = quad_.get();
    UINT max_charts_ = 0;
    DWORD texture_index_ = 0;
    std::vector<DWORD> adjacency_ = k_quad_adjacency;
    const DWORD* false_edges_ = nullptr;
    const FLOAT* imt_array_ = nullptr;
    LPD3DXUVATLASCB callback_ = nullptr;
    FLOAT frequency_ = 0.1f;
    DWORD options_ = D3DXUVATLAS_GEODESIC_QUALITY;
    Held<ID3DXMesh> mesh_out_;
    Held<ID3DXBuffer> faces_;
    Held<ID3DXBuffer> remap_;
    Held<ID3DXBuffer> opened_;
    FLOAT stretch_ = -1.0f;
    UINT charts_ = 99;
};

TEST_F(UvAtlas, PassesAllArgumentsToTheEngine) {
    const std::vector<DWORD> false_edges = {k_none, k_none, 0, 0, k_none, k_none};
    false_edges_ = false_edges.data();
    max_charts_ = 7;
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(state().creates, 1u);
    EXPECT_EQ(state().partitions, 0u);
    EXPECT_EQ(state().options.max_charts, 7u);
    EXPECT_EQ(state().options.max_stretch, 0.25f);
    EXPECT_EQ(state().options.width, 640u);
    EXPECT_EQ(state().options.height, 480u);
    EXPECT_EQ(state().options.gutter, 3.5f);
    EXPECT_EQ(state().options.quality, Quality::quality);
    EXPECT_EQ(state().options.progress, nullptr);
    EXPECT_EQ(state().positions, (std::vector<float>{0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9}));
    EXPECT_EQ(state().indices, k_quad);
    EXPECT_EQ(state().adjacency, k_quad_adjacency);
    EXPECT_EQ(state().false_edges, false_edges);
}

TEST_F(UvAtlas, WithoutFalseEdgesPassesAnEmptySpan) {
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_TRUE(state().false_edges.empty());
}

TEST_F(UvAtlas, PartitionReturnsTheAdjacencyWithChartBordersOpened) {
    max_charts_ = 3;
    ASSERT_EQ(partition(), D3D_OK);
    expected_live_ += 4;
    EXPECT_EQ(state().creates, 0u);
    EXPECT_EQ(state().partitions, 1u);
    EXPECT_EQ(state().options.max_charts, 3u);
    EXPECT_EQ(state().options.max_stretch, 0.25f);
    EXPECT_EQ(words_of(opened_.get()), std::vector<DWORD>(6, k_none));
    EXPECT_EQ(words_of(faces_.get()), (std::vector<DWORD>{0, 1}));
    EXPECT_EQ(charts_, 2u);
}

TEST_F(UvAtlas, ReturnsTheEnginesResult) {
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(charts_, 2u);
    EXPECT_EQ(stretch_, fake_engine::k_stretch);
    EXPECT_EQ(words_of(faces_.get()), (std::vector<DWORD>{0, 1}));
    EXPECT_EQ(words_of(remap_.get()), k_quad);
    EXPECT_EQ(mesh_out_->GetNumFaces(), 2u);
    EXPECT_EQ(mesh_out_->GetNumVertices(), 6u);
    void* data = nullptr;
    ASSERT_EQ(mesh_out_->LockIndexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    for (uint32_t i = 0; i < 6; ++i)
        EXPECT_EQ(static_cast<uint32_t*>(data)[i], i);
    ASSERT_EQ(mesh_out_->LockVertexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    const auto* const vertices = static_cast<const float*>(data);
    for (uint32_t i = 0; i < 6; ++i) {
        EXPECT_EQ(vertices[5 * i], static_cast<float>(k_quad[i]));
        EXPECT_EQ(vertices[5 * i + 3], fake_engine::u_of(i));
        EXPECT_EQ(vertices[5 * i + 4], fake_engine::v_of(i));
    }
}

TEST_F(UvAtlas, OnlyTheFirstOfSeveralPositionsCounts) {
    const D3DVERTEXELEMENT9 declaration[] = {
        {0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
        {0, 12, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 0},
        {0, 20, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 1},
        D3DDECL_END()};
    const Held<ID3DXMesh> mesh =
        make_mesh({0, 1, 2}, 3, D3DXMESH_32BIT | D3DXMESH_SYSTEMMEM, declaration);
    mesh_ = mesh.get();
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 4; // the new mesh holds this mesh's device
    EXPECT_EQ(state().positions, (std::vector<float>{0, 0, 0, 1, 2, 3, 2, 4, 6}));
}

TEST_F(UvAtlas, NewMeshKeepsOtherVertexElementsAndTheDevice) {
    const D3DVERTEXELEMENT9 declaration[] = {
        {0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
        {0, 12, D3DDECLTYPE_D3DCOLOR, 0, D3DDECLUSAGE_COLOR, 0},
        {0, 16, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 0},
        {0, 24, D3DDECLTYPE_FLOAT2, 0, D3DDECLUSAGE_TEXCOORD, 1},
        D3DDECL_END()};
    const Held<ID3DXMesh> mesh =
        make_mesh({0, 1, 2}, 3, D3DXMESH_32BIT | D3DXMESH_SYSTEMMEM, declaration);
    struct Record {
        float x, y, z;
        uint32_t color;
        float u0, v0, u1, v1;
    };
    void* data = nullptr;
    ASSERT_EQ(mesh->LockVertexBuffer(0, &data), D3D_OK);
    static_cast<Record*>(data)[2].color = 0xAABBCCDD;
    static_cast<Record*>(data)[2].u0 = 0.75f;
    mesh->UnlockVertexBuffer();
    mesh_ = mesh.get();
    texture_index_ = 1;
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 4; // the new mesh holds this mesh's device
    EXPECT_EQ(mesh_out_->GetOptions(), DWORD{D3DXMESH_32BIT | D3DXMESH_SYSTEMMEM});
    ASSERT_EQ(mesh_out_->LockVertexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    const Record& made = static_cast<const Record*>(data)[2];
    EXPECT_EQ(made.color, 0xAABBCCDDu);
    EXPECT_EQ(made.u0, 0.75f);
    EXPECT_EQ(made.u1, fake_engine::u_of(2));
    EXPECT_EQ(made.v1, fake_engine::v_of(2));
    Held<IDirect3DDevice9> source;
    Held<IDirect3DDevice9> device;
    mesh->GetDevice(source.slot());
    mesh_out_->GetDevice(device.slot());
    EXPECT_EQ(device.get(), source.get());
}

TEST_F(UvAtlas, Reads16BitIndicesAndWrites32BitOnes) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4, D3DXMESH_MANAGED);
    mesh_ = mesh.get();
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 4; // the new mesh holds this mesh's device
    EXPECT_EQ(state().indices, k_quad);
    EXPECT_EQ(mesh_out_->GetOptions(), DWORD{D3DXMESH_32BIT | D3DXMESH_MANAGED});
}

TEST_F(UvAtlas, OutputPointersMayBeNull) {
    EXPECT_EQ(D3DXUVAtlasCreate(mesh_, 0, 0.25f, 64, 64, 1.0f, 0, adjacency_.data(), nullptr,
                                nullptr, nullptr, 0.1f, nullptr, 0, nullptr, nullptr, nullptr,
                                nullptr, nullptr),
              D3D_OK);
    EXPECT_EQ(D3DXUVAtlasPartition(mesh_, 0, 0.25f, 0, adjacency_.data(), nullptr, nullptr, nullptr,
                                   0.1f, nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr,
                                   nullptr),
              D3D_OK);
}

TEST_F(UvAtlas, QualityFollowsTheOptions) {
    options_ = D3DXUVATLAS_GEODESIC_FAST;
    ASSERT_EQ(create(), D3D_OK);
    EXPECT_EQ(state().options.quality, Quality::fast);
    options_ = D3DXUVATLAS_DEFAULT;
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(state().options.quality, Quality::quality);
}

TEST_F(UvAtlas, DefaultQualityIsFastFrom25000FacesOn) {
    for (const uint32_t faces : {24999u, 25000u}) {
        const Held<ID3DXMesh> mesh = make_mesh(std::vector<uint32_t>(3 * faces, 0), 3);
        const std::vector<DWORD> adjacency(3 * faces, k_none);
        ASSERT_EQ(D3DXUVAtlasCreate(mesh.get(), 0, 0.25f, 64, 64, 1.0f, 0, adjacency.data(),
                                    nullptr, nullptr, nullptr, 0.1f, nullptr, D3DXUVATLAS_DEFAULT,
                                    nullptr, nullptr, nullptr, nullptr, nullptr),
                  D3D_OK);
        EXPECT_EQ(state().options.quality, faces == 25000 ? Quality::fast : Quality::quality);
    }
}

/// Records the progress callback's arguments, and its result.
struct Calls {
    std::vector<float> fractions;
    void* context = nullptr;
    size_t stop_at = std::numeric_limits<size_t>::max();
    HRESULT stop_with = E_FAIL;
};
Calls calls;

HRESULT WINAPI note_progress(FLOAT fraction, LPVOID context) {
    calls.fractions.push_back(fraction);
    calls.context = context;
    return calls.fractions.size() == calls.stop_at ? calls.stop_with : S_OK;
}

class UvAtlasProgress : public UvAtlas {
protected:
    void SetUp() override {
        UvAtlas::SetUp();
        calls = {};
        callback_ = note_progress;
        for (int tenth = 0; tenth <= 10; ++tenth)
            state().fractions.push_back(static_cast<float>(tenth) / 10.0f);
    }
};

TEST_F(UvAtlasProgress, IsReportedEveryTenthWithTheUserContext) {
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(calls.fractions, state().fractions);
    EXPECT_EQ(calls.context, this);
}

TEST_F(UvAtlasProgress, IsReducedToTheFrequencyAndEndsWithOne) {
    frequency_ = 0.3f;
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(calls.fractions, (std::vector<float>{0.0f, 0.3f, 0.6f, 0.9f, 1.0f}));
}

TEST_F(UvAtlasProgress, FailureCodeOfTheCallbackCancelsTheCallWithThatCode) {
    calls.stop_at = 3;
    calls.stop_with = E_INVALIDARG;
    EXPECT_EQ(create(), E_INVALIDARG);
    EXPECT_EQ(calls.fractions.size(), 3u);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no");
}

TEST_F(UvAtlasProgress, OtherResultThanOkCancelsTheCallWithEAbort) {
    calls.stop_at = 1;
    calls.stop_with = S_FALSE;
    EXPECT_EQ(partition(), E_ABORT);
}

TEST_F(UvAtlas, StagesGoToTheHookThatTheProcessExports) {
    stage_calls = {};
    state().stage_fractions = {0.0f, 0.5f, 1.0f};
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(stage_calls.calls,
              (std::vector<std::string>{"packing 0.0", "packing 0.5", "packing 1.0"}));
}

TEST_F(UvAtlas, TheStageHookCancelsTheCallWithEAbort) {
    stage_calls = {};
    stage_calls.stop_at = 2;
    state().stage_fractions = {0.0f, 0.5f, 1.0f};
    EXPECT_EQ(create(), E_ABORT);
    EXPECT_EQ(stage_calls.calls.size(), 2u);
    EXPECT_EQ(partition(), D3D_OK);
    expected_live_ += 4;
}

TEST_F(UvAtlas, TheEngineGetsTheExecutorThatTheProcessExports) {
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(state().options.executor, &host_parallel_for);
}

TEST_F(UvAtlas, TheEngineGetsTheEffortThatTheProcessExports) {
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(state().options.effort, 7);
}

TEST_F(UvAtlas, InvalidArgumentOfTheEngineIsAnInvalidCall) {
    EXPECT_EQ(fail_with(Status::invalid_argument, k_none), D3DERR_INVALIDCALL);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no");
}

TEST_F(UvAtlas, IndexOutOfRangeIsInvalidData) {
    EXPECT_EQ(fail_with(Status::index_out_of_range, 4), D3DXERR_INVALIDDATA);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no (corner 4)");
}

TEST_F(UvAtlas, AdjacencyOutOfRangeIsAnInvalidCall) {
    EXPECT_EQ(fail_with(Status::adjacency_out_of_range, 5), D3DERR_INVALIDCALL);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no (triangle edge 5)");
}

TEST_F(UvAtlas, NonFinitePositionIsInvalidData) {
    EXPECT_EQ(fail_with(Status::non_finite_position, 17), D3DXERR_INVALIDDATA);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no (vertex 17)");
}

TEST_F(UvAtlas, ChartsThatDoNotFitReturnMoreData) {
    EXPECT_EQ(fail_with(Status::does_not_fit, 300), D3DERR_MOREDATA);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no (300 charts)");
    EXPECT_EQ(charts_, 0u);
}

TEST_F(UvAtlas, ChartLimitFailureReturnsTheNeededNumberOfCharts) {
    max_charts_ = 2;
    EXPECT_EQ(fail_with(Status::chart_limit, 6), E_FAIL);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no (6 charts)");
    EXPECT_EQ(charts_, 6u);
}

TEST_F(UvAtlas, EngineOutOfMemoryIsEOutOfMemory) {
    EXPECT_EQ(fail_with(Status::out_of_memory, k_none), E_OUTOFMEMORY);
    EXPECT_STREQ(d3dx9_last_reason(), "the engine says no");
}

TEST_F(UvAtlas, LastResultIsKeptUntilTheNextCall) {
    EXPECT_EQ(fail_with(Status::out_of_memory, k_none), E_OUTOFMEMORY);
    EXPECT_EQ(d3dx9_last_result(), E_OUTOFMEMORY);
    state().failure = {};
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_EQ(d3dx9_last_result(), D3D_OK);
}

TEST_F(UvAtlas, FacesOverTheLimitAreKeptUntilTheNextCall) {
    state().over_limit = {0, 1};
    ASSERT_EQ(create(), D3D_OK);
    const DWORD* faces = nullptr;
    ASSERT_EQ(d3dx9_over_limit(&faces), 2u);
    EXPECT_EQ(faces[0], 0u);
    EXPECT_EQ(faces[1], 1u);
    EXPECT_EQ(fail_with(Status::does_not_fit, 3), D3DERR_MOREDATA);
    EXPECT_EQ(d3dx9_over_limit(nullptr), 0u);
}

TEST_F(UvAtlas, SuccessClearsTheReason) {
    EXPECT_EQ(fail_with(Status::out_of_memory, k_none), E_OUTOFMEMORY);
    state().failure = {};
    ASSERT_EQ(create(), D3D_OK);
    expected_live_ += 3;
    EXPECT_STREQ(d3dx9_last_reason(), "");
}

TEST_F(UvAtlas, NullMeshOrAdjacencyIsAnInvalidCall) {
    mesh_ = nullptr;
    EXPECT_EQ(create(), D3DERR_INVALIDCALL);
    EXPECT_STREQ(d3dx9_last_reason(), "there is no mesh");
    mesh_ = quad_.get();
    adjacency_ = std::vector<DWORD>();
    EXPECT_EQ(partition(), D3DERR_INVALIDCALL);
    EXPECT_STREQ(d3dx9_last_reason(), "there is no adjacency");
}

TEST_F(UvAtlas, MetricTensorsAndUnknownOptionsAreRefused) {
    const FLOAT tensors[6] = {};
    imt_array_ = tensors;
    EXPECT_EQ(create(), E_NOTIMPL);
    EXPECT_STREQ(d3dx9_last_reason(), "integrated metric tensors are not supported");
    imt_array_ = nullptr;
    options_ = 3;
    EXPECT_EQ(create(), D3DERR_INVALIDCALL);
    EXPECT_STREQ(d3dx9_last_reason(), "unknown options 0x3");
}

TEST_F(UvAtlas, MeshWithoutTheTextureCoordinateIsAnInvalidCall) {
    texture_index_ = 1;
    EXPECT_EQ(create(), D3DERR_INVALIDCALL);
    EXPECT_STREQ(d3dx9_last_reason(), "the mesh's vertices have no float3 position or no float2 "
                                      "texture coordinate 1");
}

TEST_F(UvAtlas, FaultPointsFailTheCallsBeforeTheEngineRuns) {
    const faultpoint::Scope first("D3DXUVAtlasCreate", D3DXERR_INVALIDMESH);
    const faultpoint::Scope second("D3DXUVAtlasPartition", E_FAIL);
    EXPECT_EQ(create(), D3DXERR_INVALIDMESH);
    EXPECT_STREQ(d3dx9_last_reason(), "D3DXUVAtlasCreate was told to fail");
    EXPECT_EQ(partition(), E_FAIL);
    EXPECT_EQ(state().creates + state().partitions, 0u);
}

struct InnerFault {
    const char* point;
    unsigned nth;
    const char* reason;
};

class UvAtlasInnerFault : public UvAtlas, public testing::WithParamInterface<InnerFault> {};

TEST_P(UvAtlasInnerFault, FailsTheCallWithoutALeak) {
    const faultpoint::Scope fault(GetParam().point, E_OUTOFMEMORY, GetParam().nth);
    EXPECT_EQ(partition(), E_OUTOFMEMORY);
    EXPECT_STREQ(d3dx9_last_reason(), GetParam().reason);
    EXPECT_EQ(mesh_out_.get(), nullptr);
    EXPECT_EQ(faces_.get(), nullptr);
    EXPECT_EQ(remap_.get(), nullptr);
    EXPECT_EQ(opened_.get(), nullptr);
    EXPECT_EQ(charts_, 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Points, UvAtlasInnerFault,
    testing::Values(
        InnerFault{"ID3DXMesh::LockVertexBuffer", 1, "the mesh's vertices could not be read"},
        InnerFault{"ID3DXMesh::LockIndexBuffer", 1, "the mesh's indices could not be read"},
        InnerFault{"D3DXCreateMesh", 1, "the new mesh could not be made"},
        InnerFault{"ID3DXMesh::LockVertexBuffer", 2,
                   "the new mesh's vertices could not be written"},
        InnerFault{"ID3DXMesh::LockIndexBuffer", 2, "the new mesh's indices could not be written"},
        InnerFault{"D3DXCreateBuffer", 1, "an output buffer could not be made"},
        InnerFault{"D3DXCreateBuffer", 2, "an output buffer could not be made"},
        InnerFault{"D3DXCreateBuffer", 3, "an output buffer could not be made"}));

TEST_F(UvAtlas, SurvivesTheFailureOfEachAllocation) {
    bool failed = true;
    for (unsigned nth = 1; failed; ++nth) {
        HRESULT result;
        {
            const FailingNew memory(nth);
            result = partition();
        }
        failed = FailingNew::happened();
        ASSERT_EQ(result, failed ? E_OUTOFMEMORY : D3D_OK) << "request " << nth;
        ASSERT_EQ(mesh_out_.get() == nullptr, failed);
        ASSERT_LT(nth, 1000u);
    }
    expected_live_ += 4;
}

TEST_F(UvAtlas, AdjacencyReportsOutOfMemory) {
    DWORD adjacency[6];
    bool failed = true;
    for (unsigned nth = 1; failed; ++nth) {
        HRESULT result;
        {
            const FailingNew memory(nth);
            result = mesh_->ConvertPointRepsToAdjacency(nullptr, adjacency);
        }
        failed = FailingNew::happened();
        ASSERT_EQ(result, failed ? E_OUTOFMEMORY : D3D_OK) << "request " << nth;
        ASSERT_LT(nth, 100u);
    }
    EXPECT_EQ(std::vector<DWORD>(adjacency, adjacency + 6), k_quad_adjacency);
}

} // namespace
