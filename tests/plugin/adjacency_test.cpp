#include "faultpoint/faultpoint.h"
#include "plugin/adjacency.h"
#include "plugin/unwrapper.h"
#include "tests/corelib/math/math_fixture.h"
#include "tests/plugin/malloc_watch.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using Words = std::vector<uint32_t>;

class BuildAdjacency : public WithDevice {
protected:
    BuildAdjacency() : unwrapper_(&settings_) {}

    Words adjacency_of(uint32_t vertices, const Words& indices, const Words& cut_edges) {
        ID3DXMesh* const mesh = make_mesh(vertices, indices);
        uint32_t* const buffer = build_adjacency(unwrapper_, mesh, list_of(cut_edges));
        EXPECT_NE(buffer, nullptr);
        const Words result(buffer, buffer + indices.size());
        std::free(buffer);
        mesh->Release();
        return result;
    }

    UnwrapSettings settings_;
    Unwrapper unwrapper_;
};

TEST_F(BuildAdjacency, NeighboursShareAnEdgeByVertexIndex) {
    EXPECT_EQ(adjacency_of(4, k_quad, Words(6, 0)), (Words{k_none, k_none, 1, 0, k_none, k_none}));
}

TEST_F(BuildAdjacency, CutEdgesHaveNoNeighbour) {
    EXPECT_EQ(adjacency_of(4, k_quad, {0, 0, k_none, 0, 0, 0}),
              (Words{k_none, k_none, k_none, 0, k_none, k_none}));
}

TEST_F(BuildAdjacency, OnlyTheValue0xFFFFFFFFCuts) {
    EXPECT_EQ(adjacency_of(4, k_quad, {7, 7, 7, 7, 7, 7}),
              (Words{k_none, k_none, 1, 0, k_none, k_none}));
}

TEST_F(BuildAdjacency, BoundaryEdgesHaveNoNeighbour) {
    EXPECT_EQ(adjacency_of(3, {0, 1, 2}, Words(3, 0)), Words(3, k_none));
}

TEST_F(BuildAdjacency, TrianglesThatShareOnlyPositionsAreNotNeighbours) {
    ID3DXMesh* mesh = create_mesh(context_,
                                  list_of<Vertex>({{0, 0, 0, 0, 0},
                                                   {1, 0, 0, 0, 0},
                                                   {0, 1, 0, 0, 0},
                                                   {1, 0, 0, 0, 0},
                                                   {1, 1, 0, 0, 0},
                                                   {0, 1, 0, 0, 0}}),
                                  list_of<uint32_t>({0, 1, 2, 3, 4, 5}));
    uint32_t* const buffer = build_adjacency(unwrapper_, mesh, list_of(Words(6, 0)));
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(Words(buffer, buffer + 6), Words(6, k_none));
    std::free(buffer);
    mesh->Release();
}

TEST_F(BuildAdjacency, AdjacencyMethodAndEpsilonChangeNothing) {
    settings_.adjacency_method = 1;
    settings_.epsilon = 1000;
    EXPECT_EQ(adjacency_of(4, k_quad, Words(6, 0)), (Words{k_none, k_none, 1, 0, k_none, k_none}));
}

TEST_F(BuildAdjacency, AllocatesSixteenBytesPerEntry) {
    ID3DXMesh* const mesh = make_mesh(4, k_quad);
    {
        MallocWatch watch;
        std::free(build_adjacency(unwrapper_, mesh, list_of(Words(6, 0))));
        EXPECT_EQ(MallocWatch::requests(), (std::vector<size_t>{6 * 16}));
        EXPECT_TRUE(MallocWatch::live().empty());
    }
    mesh->Release();
}

TEST_F(BuildAdjacency, AllocatesForTheWholeMeshWhenTheListOfCutsIsShort) {
    EXPECT_EQ(adjacency_of(4, k_quad, {}), (Words{k_none, k_none, 1, 0, k_none, k_none}));
}

TEST_F(BuildAdjacency, ReportsWhenMemoryRunsOut) {
    ID3DXMesh* const mesh = make_mesh(4, k_quad);
    const array<uint32_t> cuts = list_of(Words(6, 0));
    {
        MallocWatch watch(0);
        EXPECT_EQ(build_adjacency(unwrapper_, mesh, cuts), nullptr);
    }
    EXPECT_EQ(logged(), "Out of memory, can not generate adjacency list");
    mesh->Release();
}

TEST_F(BuildAdjacency, LogsTheResultsNameAndLeaksTheBufferWhenTheLibraryFails) {
    ID3DXMesh* const mesh = make_mesh(4, k_quad);
    const array<uint32_t> cuts = list_of(Words(6, 0));
    {
        const faultpoint::Scope fault("ID3DXMesh::ConvertPointRepsToAdjacency",
                                      static_cast<int>(D3DXERR_INVALIDDATA));
        MallocWatch watch;
        EXPECT_EQ(build_adjacency(unwrapper_, mesh, cuts), nullptr);
        EXPECT_EQ(MallocWatch::live(), (std::vector<size_t>{6 * 16})); // deliberately not freed
        MallocWatch::free_live();
    }
    EXPECT_EQ(logged(), "ConvertPointRepsToAdjacency() failed: D3DXERR_INVALIDDATA\n");
    mesh->Release();
}

} // namespace
