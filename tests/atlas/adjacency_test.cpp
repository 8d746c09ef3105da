#include "atlas/geometry/adjacency.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <vector>

namespace {

using tessora::atlas::AdjacencyResult;
using Words = std::vector<uint32_t>;

constexpr uint32_t none = tessora::atlas::k_none;

Words neighbours(const Words& corners, const std::vector<float>& positions = {}) {
    const uint32_t vertices =
        corners.empty() ? 0 : *std::max_element(corners.begin(), corners.end()) + 1;
    Words adjacency(corners.size(), 77);
    tessora::atlas::VertexPositions places;
    if (!positions.empty())
        places = {reinterpret_cast<const unsigned char*>(positions.data()), 3 * sizeof(float)};
    EXPECT_EQ(tessora::atlas::face_adjacency(corners.data(),
                                             static_cast<uint32_t>(corners.size() / 3), vertices,
                                             places, adjacency.data()),
              AdjacencyResult::ok);
    return adjacency;
}

TEST(FaceAdjacency, TrianglesOfAQuadAreNeighboursAcrossTheDiagonal) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 2, 3}), (Words{none, none, 1, 0, none, none}));
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

TEST(FaceAdjacency, AFaceThatRepeatsAVertexOpensNoEdge) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 0, 1, 1, 0, 3}),
              (Words{2, none, none, none, none, none, 0, none, none}));
}

/// Four wings along the edge 0-1, at 0, 90, 180 and 270 degrees; the fourth corner turns.
const std::vector<float> k_wings = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0, -1, 0, 0, 0, -1};

TEST(FaceAdjacency, OfThreeFacesTheTwoThatBendLeastAreNeighbours) {
    EXPECT_EQ(neighbours({0, 1, 2, 1, 0, 3, 1, 0, 4}, k_wings),
              (Words{2, none, none, none, none, none, 0, none, none}));
}

TEST(FaceAdjacency, FacesOfOneDirectionAreNotPairedAtACrowdedEdge) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 1, 3, 0, 1, 4}, k_wings), Words(9, none));
}

TEST(FaceAdjacency, SheetsThatCrossGoStraightOn) {
    EXPECT_EQ(neighbours({0, 1, 2, 0, 1, 3, 1, 0, 4, 1, 0, 5}, k_wings),
              (Words{2, none, none, 3, none, none, 0, none, none, 1, none, none}));
}

TEST(FaceAdjacency, FacesThatHangTogetherElsewhereArePairedBeforeFlatterOnes) {
    // 0-1-2 and 1-0-3 are sides of a tetrahedron; 1-0-4 lies flat against 0-1-2.
    const Words adjacency = neighbours({0, 1, 2, 1, 0, 3, 1, 3, 2, 0, 2, 3, 1, 0, 4}, k_wings);
    EXPECT_EQ(adjacency[0], 1u);
    EXPECT_EQ(adjacency[3], 0u);
    EXPECT_EQ(adjacency[12], none);
}

TEST(FaceAdjacency, OnATieTheNearestInNumberAreNeighbours) {
    // Both copies of a quad have the same diagonal: each meets its own half.
    const std::vector<float> square = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    const Words adjacency = neighbours({0, 1, 2, 0, 2, 3, 0, 1, 2, 0, 2, 3}, square);
    EXPECT_EQ(adjacency[2], 1u);
    EXPECT_EQ(adjacency[3], 0u);
    EXPECT_EQ(adjacency[8], 3u);
    EXPECT_EQ(adjacency[9], 2u);
}

TEST(FaceAdjacency, AFaceWithoutAreaOpensNoEdge) {
    const std::vector<float> places = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, -1, 0, 0.5f, 0, 0};
    EXPECT_EQ(neighbours({0, 1, 4, 0, 1, 2, 1, 0, 3}, places),
              (Words{none, none, none, 2, none, none, 1, none, none}));
}

TEST(FaceAdjacency, AFaceWithoutAreaThatConnectsNothingGivesWayToOneThatDoes) {
    // 1-0-3 lies on the edge 0-1 and joins the faces beyond; 1-0-4, where 4 is at 1's place, joins
    // nothing, though it is nearer in number to the face on the other side.
    const std::vector<float> places = {0, 0,    0, 1, 0,     0,  0, 1, 0,  0.5f, 0,
                                       0, 1.0f, 0, 0, 0.25f, -1, 0, 1, -1, 0};
    EXPECT_EQ(neighbours({0, 1, 2, 1, 0, 4, 1, 0, 3, 3, 0, 5, 1, 3, 6}, places),
              (Words{2, none, none, none, none, none, 0, 3, 4, 2, none, none, 2, none, none}));
}

/// A sphere of quads, every quad twice, `reversed` or not, the second copy divided otherwise.
struct DoubledSphere {
    Words corners;
    std::vector<float> positions;
    Words polygon; ///< per face: the quad, the same for both copies
};

DoubledSphere doubled_sphere(uint32_t around, uint32_t rings, bool reversed) {
    DoubledSphere sphere;
    for (uint32_t j = 0; j <= rings; ++j)
        for (uint32_t i = 0; i < around; ++i) {
            const double a = 6.283185307179586 * i / around;
            const double b = 0.2 + 2.7 * j / rings;
            for (const double x :
                 {std::sin(b) * std::cos(a), std::sin(b) * std::sin(a), std::cos(b)})
                sphere.positions.push_back(static_cast<float>(x));
        }
    for (uint32_t j = 0; j < rings; ++j)
        for (uint32_t i = 0; i < around; ++i) {
            const uint32_t i1 = (i + 1) % around;
            const uint32_t a = j * around + i, b = j * around + i1;
            const uint32_t d = (j + 1) * around + i, c = (j + 1) * around + i1;
            const Words first = {a, c, b, a, d, c};
            const Words second = reversed ? Words{b, d, a, b, c, d} : Words{b, a, d, b, d, c};
            sphere.corners.insert(sphere.corners.end(), first.begin(), first.end());
            sphere.corners.insert(sphere.corners.end(), second.begin(), second.end());
            sphere.polygon.insert(sphere.polygon.end(), 4, j * around + i);
        }
    return sphere;
}

/// Sizes of what hangs together, ascending.
Words component_sizes(const Words& adjacency) {
    Words parent(adjacency.size() / 3);
    for (uint32_t f = 0; f < parent.size(); ++f)
        parent[f] = f;
    const auto find = [&](uint32_t f) {
        while (parent[f] != f)
            f = parent[f];
        return f;
    };
    for (uint32_t e = 0; e < adjacency.size(); ++e)
        if (adjacency[e] != none)
            parent[std::max(find(e / 3), find(adjacency[e]))] =
                std::min(find(e / 3), find(adjacency[e]));
    std::map<uint32_t, uint32_t> count;
    for (uint32_t f = 0; f < parent.size(); ++f)
        ++count[find(f)];
    Words sizes;
    for (const auto& [root, size] : count)
        sizes.push_back(size);
    std::sort(sizes.begin(), sizes.end());
    return sizes;
}

TEST(FaceAdjacency, ADoubledSurfaceIsTwoSheetsWhateverTheOrderOfItsFaces) {
    std::mt19937 random(5);
    for (const bool reversed : {false, true})
        for (int round = 0; round < 20; ++round) {
            const DoubledSphere sphere = doubled_sphere(12, 8, reversed);
            Words order(sphere.polygon.size());
            for (uint32_t f = 0; f < order.size(); ++f)
                order[f] = f;
            if (round > 0)
                std::shuffle(order.begin(), order.end(), random);
            Words corners;
            for (const uint32_t f : order)
                corners.insert(corners.end(), sphere.corners.begin() + 3 * f,
                               sphere.corners.begin() + 3 * f + 3);
            Words adjacency = neighbours(corners, sphere.positions);
            // The rim has two users of an edge: copies wound against each other meet there.
            for (uint32_t e = 0; e < adjacency.size(); ++e)
                if (adjacency[e] != none &&
                    sphere.polygon[order[e / 3]] == sphere.polygon[order[adjacency[e]]] &&
                    corners[e] / 12 == corners[e % 3 == 2 ? e - 2 : e + 1] / 12)
                    adjacency[e] = none;
            EXPECT_EQ(component_sizes(adjacency), (Words{192, 192})) << "round " << round;
        }
}

TEST(FaceAdjacency, AThousandSheetsOnOneEdgeStayOpenAndCostLittle) {
    Words corners;
    for (uint32_t i = 0; i < 2000; ++i)
        corners.insert(corners.end(), {i % 2, 1 - i % 2, 2 + i});
    EXPECT_EQ(neighbours(corners).size(), corners.size());
}

TEST(FaceAdjacency, AcceptsAMeshWithoutFaces) { EXPECT_EQ(neighbours({}), Words()); }

TEST(FaceAdjacency, IndexOutOfRangeLeavesTheResultUnchanged) {
    const Words corners = {0, 1, 3};
    Words adjacency(3, 77);
    EXPECT_EQ(tessora::atlas::face_adjacency(corners.data(), 1, 3, {}, adjacency.data()),
              AdjacencyResult::index_out_of_range);
    EXPECT_EQ(adjacency, Words(3, 77));
}

TEST(FaceAdjacency, MoreFacesThanEdgesCanBeNumberedAreRefused) {
    EXPECT_EQ(tessora::atlas::face_adjacency(nullptr, 0x55555556u, 3, {}, nullptr),
              AdjacencyResult::out_of_memory);
}

/// What holds whatever the faces are: neighbours name each other, share the edge, and at an edge of
/// more than two faces run opposite ways; an edge of exactly two faces makes them neighbours.
void check_rules(const Words& corners, const Words& adjacency) {
    const auto from = [&](size_t e) { return corners[e]; };
    const auto to = [&](size_t e) { return corners[e % 3 == 2 ? e - 2 : e + 1]; };
    const auto repeats = [&](size_t e) {
        const size_t f = e / 3 * 3;
        return corners[f] == corners[f + 1] || corners[f + 1] == corners[f + 2] ||
               corners[f + 2] == corners[f];
    };
    for (size_t e = 0; e < corners.size(); ++e) {
        Words users;
        uint32_t mutual = 0;
        for (uint32_t g = 0; g < corners.size(); ++g)
            if (g != e && !repeats(g) &&
                std::minmax({from(e), to(e)}) == std::minmax({from(g), to(g)}))
                users.push_back(g);
        for (const uint32_t g : users)
            mutual += adjacency[e] == g / 3 && adjacency[g] == e / 3 &&
                      (users.size() == 1 || from(e) != from(g));
        ASSERT_EQ(mutual, adjacency[e] == none ? 0u : 1u) << "edge " << e;
        if (repeats(e) || users.empty()) {
            ASSERT_EQ(adjacency[e], none);
        } else if (users.size() == 1) {
            ASSERT_EQ(adjacency[e], users[0] / 3);
        }
    }
}

TEST(FaceAdjacency, KeepsItsRulesOnRandomFaces) {
    std::mt19937 random(42);
    for (int round = 0; round < 2000; ++round) {
        const uint32_t vertices = 1 + random() % 12;
        Words corners(3 * (random() % 15));
        for (uint32_t& corner : corners)
            corner = random() % vertices;
        check_rules(corners, neighbours(corners));
        std::vector<float> positions;
        for (uint32_t i = 0; i < 36; ++i)
            positions.push_back(static_cast<float>(random() % 1000));
        check_rules(corners, neighbours(corners, positions));
        ASSERT_FALSE(::testing::Test::HasFatalFailure()) << "round " << round;
    }
}

} // namespace
