#include "platform/d3dx9/adjacency.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using d3dx9::AdjacencyResult;
using Words = std::vector<uint32_t>;

constexpr uint32_t none = d3dx9::k_no_face;

Words neighbours(const Words& corners) {
    const uint32_t vertices =
        corners.empty() ? 0 : *std::max_element(corners.begin(), corners.end()) + 1;
    Words adjacency(corners.size(), 77);
    EXPECT_EQ(d3dx9::face_adjacency(corners.data(), static_cast<uint32_t>(corners.size() / 3),
                                    vertices, adjacency.data()),
              AdjacencyResult::ok);
    return adjacency;
}

TEST(FaceAdjacency, TrianglesOfAQuadAreNeighboursAcrossTheDiagonal) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 2, 3}), (Words{none, none, 1, 0, none, none}));
}

TEST(FaceAdjacency, EdgeOfThreeFacesHasNoNeighbourOnAnySide) {
    EXPECT_EQ(neighbours({0, 1, 2, 1, 0, 3, 0, 1, 4}), Words(9, none));
    EXPECT_EQ(neighbours({0, 1, 2, 0, 1, 3, 1, 0, 4}), Words(9, none));
}

TEST(FaceAdjacency, EdgeOfFourFacesHasNoNeighbourOnAnySide) {
    EXPECT_EQ(neighbours({0, 1, 2, 1, 0, 3, 0, 1, 4, 1, 0, 5}), Words(12, none));
}

TEST(FaceAdjacency, WindingDoesNotMatter) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 1, 3}), (Words{1, none, none, 0, none, none}));
}

TEST(FaceAdjacency, DuplicateFacesAreNeighboursOnAllEdges) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 1, 2}), (Words{1, 1, 1, 0, 0, 0}));
    EXPECT_EQ(neighbours({0, 1, 2, 0, 2, 1}), (Words{1, 1, 1, 0, 0, 0}));
}

TEST(FaceAdjacency, DegenerateFaceIsNoNeighbourOfItself) {
    EXPECT_EQ(neighbours({0, 1, 0}), Words(3, none));
    EXPECT_EQ(neighbours({0, 0, 0}), Words(3, none));
}

TEST(FaceAdjacency, DegenerateFaceCountsAtEachOfItsEdges) {
    EXPECT_EQ(neighbours({0, 0, 1, 1, 0, 2}), Words(6, none));
}

TEST(FaceAdjacency, AcceptsAMeshWithoutFaces) { EXPECT_EQ(neighbours({}), Words()); }

TEST(FaceAdjacency, IndexOutOfRangeLeavesTheResultUnchanged) {
    const Words corners = {0, 1, 3};
    Words adjacency(3, 77);
    EXPECT_EQ(d3dx9::face_adjacency(corners.data(), 1, 3, adjacency.data()),
              AdjacencyResult::index_out_of_range);
    EXPECT_EQ(adjacency, Words(3, 77));
}

TEST(FaceAdjacency, TooManyFacesFor32BitEdgeNumbersFail) {
    EXPECT_EQ(d3dx9::face_adjacency(nullptr, 0x55555556u, 3, nullptr),
              AdjacencyResult::out_of_memory);
}

/// Reference implementation: compares all pairs of edges.
Words by_comparing_all(const Words& corners) {
    const auto same = [&](size_t e, size_t f) {
        const uint32_t a = corners[e], b = corners[e / 3 * 3 + (e % 3 + 1) % 3];
        const uint32_t c = corners[f], d = corners[f / 3 * 3 + (f % 3 + 1) % 3];
        return (a == c && b == d) || (a == d && b == c);
    };
    Words adjacency(corners.size(), none);
    for (size_t e = 0; e < corners.size(); ++e) {
        Words others;
        for (size_t f = 0; f < corners.size(); ++f)
            if (f != e && same(e, f))
                others.push_back(static_cast<uint32_t>(f / 3));
        if (others.size() == 1 && others[0] != e / 3)
            adjacency[e] = others[0];
    }
    return adjacency;
}

TEST(FaceAdjacency, EqualsAComparisonOfAllEdgesOnRandomFaces) {
    std::mt19937 random(42);
    for (int round = 0; round < 2000; ++round) {
        const uint32_t vertices = 1 + random() % 12;
        Words corners(3 * (random() % 15));
        for (uint32_t& corner : corners)
            corner = random() % vertices;
        ASSERT_EQ(neighbours(corners), by_comparing_all(corners)) << "round " << round;
    }
}

} // namespace
