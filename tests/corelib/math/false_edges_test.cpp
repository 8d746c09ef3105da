#include "corelib/math/false_edges.h"
#include "faultpoint/faultpoint.h"
#include "tests/corelib/math/false_edges_literal.h"
#include "tests/corelib/math/math_fixture.h"

#include <random>

namespace {

using Words = std::vector<uint32_t>;

class FalseEdges : public WithDevice {
protected:
    /// The adjacency computed by the mesh.
    Words adjacency_of(const Words& corners) {
        ID3DXMesh* const mesh = make_mesh(vertices_for(corners), corners);
        Words adjacency(corners.size());
        EXPECT_EQ(mesh->ConvertPointRepsToAdjacency(nullptr, adjacency.data()), D3D_OK);
        mesh->Release();
        return adjacency;
    }

    Words repaired(const Words& corners, const Words& adjacency, Words false_edges) {
        ID3DXMesh* const mesh = make_mesh(vertices_for(corners), corners);
        fix_false_edges(context_, mesh, adjacency.data(), false_edges.data());
        EXPECT_EQ(mesh->UnlockIndexBuffer(), D3DERR_INVALIDCALL) << "a lock was left behind";
        mesh->Release();
        return false_edges;
    }
    Words repaired(const Words& corners, const Words& false_edges) {
        return repaired(corners, adjacency_of(corners), false_edges);
    }

    static uint32_t vertices_for(const Words& corners) {
        return *std::max_element(corners.begin(), corners.end()) + 1;
    }
};

TEST_F(FalseEdges, MeshOfTrianglesIsUnchanged) {
    const Words real(12, k_none);
    EXPECT_EQ(repaired({0, 1, 2, 0, 2, 3, 3, 2, 4, 3, 4, 0}, real), real);
}

TEST_F(FalseEdges, QuadKeepsItsDiagonal) {
    const Words diagonal = {k_none, k_none, 0, 0, k_none, k_none};
    EXPECT_EQ(repaired(k_quad, diagonal), diagonal);
}

/// Corners and false edges of the polygon 0 1 ... n-1 fanned from vertex 0.
struct Polygon {
    Words corners;
    Words false_edges;
};

Polygon fan(uint32_t n) {
    Polygon polygon;
    for (uint32_t i = 1; i + 1 < n; ++i) {
        for (const uint32_t corner : {0u, i, i + 1})
            polygon.corners.push_back(corner);
        for (const uint32_t edge : {i == 1 ? k_none : 0u, k_none, i + 2 == n ? k_none : 0u})
            polygon.false_edges.push_back(edge);
    }
    return polygon;
}

TEST_F(FalseEdges, FannedConvexPolygonIsUnchanged) {
    for (const uint32_t n : {4u, 5u, 6u, 7u, 20u}) {
        const Polygon polygon = fan(n);
        EXPECT_EQ(repaired(polygon.corners, polygon.false_edges), polygon.false_edges) << n;
    }
}

TEST_F(FalseEdges, PolygonOf100000CornersIsUnchanged) {
    const Polygon polygon = fan(100000);
    EXPECT_EQ(repaired(polygon.corners, polygon.false_edges), polygon.false_edges);
}

/// The adjacency leads to a triangle that shares only one vertex, so two of its corners are new.
TEST_F(FalseEdges, FaceWithTwoNewCornersMakesAllEdgesOfItsPolygonReal) {
    const Words corners = {0, 1, 2, 2, 3, 4, 5, 6, 7};
    const Words adjacency = {k_none, k_none, 1, k_none, 0, k_none, k_none, k_none, k_none};
    const Words false_edges = {k_none, 0, 0, k_none, 0, k_none, k_none, 0, k_none};
    Words expected(9, k_none);
    expected[7] = 0; // a separate polygon with one chain
    EXPECT_EQ(repaired(corners, adjacency, false_edges), expected);
}

TEST_F(FalseEdges, FaceWithTwoNewCornersChangesNothingWhenOneChainRemains) {
    const Words corners = {0, 1, 2, 2, 3, 4};
    const Words adjacency = {k_none, k_none, 1, 0, k_none, k_none};
    const Words false_edges = {k_none, k_none, 0, 0, k_none, k_none};
    EXPECT_EQ(repaired(corners, adjacency, false_edges), false_edges);
}

TEST_F(FalseEdges, DiagonalWithoutNeighbourIsSkipped) {
    const Words diagonal = {k_none, k_none, 0, 0, k_none, k_none};
    EXPECT_EQ(repaired(k_quad, Words(6, k_none), diagonal), diagonal);
}

/// Three chains: the two edges at the first corner become real, the third stays false.
TEST_F(FalseEdges, ChainsAreJoinedByOpeningTheFirstEdgeBetweenThem) {
    const Words corners = {0, 1, 2, 3, 4, 5};
    const Words false_edges = {k_none, k_none, k_none, 0, 0, 0};
    EXPECT_EQ(repaired(corners, false_edges), (Words{k_none, k_none, k_none, k_none, 0, k_none}));
}

/// Face 0 is unrelated; faces 1 to 6 fill the ring between an outer triangle (vertices 1 2 3) and
/// an inner one (4 5 6).
const Words k_ring = {7, 8, 9, 1, 2, 4, 4, 2, 5, 2, 3, 5, 5, 3, 6, 3, 1, 6, 6, 1, 4};
const Words k_ring_false_edges = {k_none, k_none, k_none, k_none, 0, 0, 0, 0, k_none, k_none, 0, 0,
                                  0,      0,      k_none, k_none, 0, 0, 0, 0, k_none};

TEST_F(FalseEdges, PolygonWithAHoleIsOpenedOnceAndOnOneSideOnly) {
    Words expected = k_ring_false_edges;
    expected[5] = k_none;
    EXPECT_EQ(repaired(k_ring, k_ring_false_edges), expected);
}

/// Callers may mark a false edge with the index of the face across it.
TEST_F(FalseEdges, EntryIsUsedAsTheIndexOfTheFaceAcrossTheEdge) {
    const Words adjacency = adjacency_of(k_ring);
    Words false_edges = k_ring_false_edges;
    for (size_t i = 0; i < false_edges.size(); ++i)
        if (false_edges[i] != k_none)
            false_edges[i] = adjacency[i];
    Words expected = false_edges;
    expected[5] = k_none;
    expected[20 - 1] = k_none; // the same edge in face 6
    EXPECT_EQ(repaired(k_ring, adjacency, false_edges), expected);
}

TEST_F(FalseEdges, EntryOutOfRangeOpensOnlyItsOwnEdge) {
    const Words corners = {0, 1, 2};
    EXPECT_EQ(repaired(corners, {5, 5, 5}), (Words{k_none, 5, k_none}));
}

TEST_F(FalseEdges, EdgesOfTheFirstFaceAreSearchedForMarksOfZero) {
    EXPECT_EQ(repaired({0, 1, 2}, {0, 0, 0}), Words(3, k_none));
}

TEST_F(FalseEdges, FailingLockChangesNothing) {
    ID3DXMesh* const mesh = make_mesh(3, {0, 1, 2});
    Words false_edges(3, 0);
    const Words adjacency(3, k_none);
    {
        const faultpoint::Scope fault("ID3DXMesh::LockIndexBuffer", E_FAIL);
        fix_false_edges(context_, mesh, adjacency.data(), false_edges.data());
    }
    EXPECT_EQ(false_edges, Words(3, 0));
    EXPECT_EQ(mesh->UnlockIndexBuffer(), D3DERR_INVALIDCALL);
    EXPECT_EQ(logged(), "");
    mesh->Release();
}

TEST_F(FalseEdges, IndexOutOfRangeChangesNothing) {
    ID3DXMesh* const mesh = make_mesh(3, {0, 1, 3});
    Words false_edges(3, 0);
    const Words adjacency(3, k_none);
    fix_false_edges(context_, mesh, adjacency.data(), false_edges.data());
    EXPECT_EQ(false_edges, Words(3, 0));
    mesh->Release();
}

TEST_F(FalseEdges, EveryFailedAllocationChangesNothingAndUnlocks) {
    ID3DXMesh* const mesh = make_mesh(3, {0, 1, 2});
    const Words adjacency(3, k_none);
    const uint64_t blocks = live_blocks;
    Words false_edges(3, 0);
    size_t failures = 0;
    while (false_edges == Words(3, 0) && failures < 100) {
        const AllocationWatch memory(failures++);
        fix_false_edges(context_, mesh, adjacency.data(), false_edges.data());
        EXPECT_EQ(mesh->UnlockIndexBuffer(), D3DERR_INVALIDCALL);
        EXPECT_EQ(live_blocks, blocks);
    }
    EXPECT_EQ(false_edges, Words(3, k_none));
    EXPECT_GT(failures, 3u);
    mesh->Release();
}

// ======================= comparison with the slow reference =======================

class FalseEdgesProperty : public FalseEdges {
protected:
    std::mt19937 random_{42};

    uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }

    void expect_same(const Words& corners, const Words& adjacency, const Words& false_edges,
                     int round) {
        Words expected = false_edges;
        LiteralRepair(corners, adjacency, expected).run();
        ASSERT_EQ(repaired(corners, adjacency, false_edges), expected) << "round " << round;
    }

    /// Cuts the polygon into triangles at random ears; edges of the polygon are real.
    void add_polygon(Words ring, Polygon& mesh) {
        std::vector<bool> real(ring.size(), true); // from corner i to the next
        while (ring.size() > 3) {
            const size_t n = ring.size();
            const size_t i = below(static_cast<uint32_t>(n));
            const size_t next = (i + 1) % n;
            const size_t previous = (i + n - 1) % n;
            add_triangle({ring[previous], ring[i], ring[next]}, {real[previous], real[i], false},
                         mesh);
            real[previous] = false;
            ring.erase(ring.begin() + static_cast<long>(i));
            real.erase(real.begin() + static_cast<long>(i));
        }
        add_triangle(ring, real, mesh);
    }

    /// Rotates the corners of the triangle at random.
    void add_triangle(const Words& corners, const std::vector<bool>& real, Polygon& mesh) {
        const uint32_t turn = below(3);
        for (uint32_t k = 0; k < 3; ++k) {
            mesh.corners.push_back(corners[(k + turn) % 3]);
            mesh.false_edges.push_back(real[(k + turn) % 3] ? k_none : 0);
        }
    }

    /// A ring of triangles between two borders, the triangulation of a polygon with a hole.
    void add_ring(uint32_t first_vertex, uint32_t outer, uint32_t inner, Polygon& mesh) {
        uint32_t i = 0;
        uint32_t j = 0;
        while (i + j < outer + inner) {
            const uint32_t here = first_vertex + i % outer;
            const uint32_t inside = first_vertex + outer + j % inner;
            const bool outward = j == inner || (i < outer && below(2) == 0);
            if (outward)
                add_triangle({here, first_vertex + (i + 1) % outer, inside}, {true, false, false},
                             mesh);
            else
                add_triangle({here, first_vertex + outer + (j + 1) % inner, inside},
                             {false, true, false}, mesh);
            (outward ? i : j) += 1;
        }
    }

    /// Shuffles the triangles, so that the flood fill starts anywhere.
    Polygon shuffled(const Polygon& mesh) {
        Words order(mesh.corners.size() / 3);
        for (uint32_t i = 0; i < order.size(); ++i)
            order[i] = i;
        for (uint32_t i = static_cast<uint32_t>(order.size()); i > 1; --i)
            std::swap(order[i - 1], order[below(i)]);
        Polygon result;
        for (const uint32_t face : order)
            for (uint32_t k = 0; k < 3; ++k) {
                result.corners.push_back(mesh.corners[3 * face + k]);
                result.false_edges.push_back(mesh.false_edges[3 * face + k]);
            }
        return result;
    }
};

TEST_F(FalseEdgesProperty, SimplePolygonsAreUnchanged) {
    for (int round = 0; round < 300; ++round) {
        Polygon mesh;
        for (uint32_t start = 0, count = 1 + below(4); count != 0; --count) {
            Words ring(3 + below(12));
            for (uint32_t& vertex : ring)
                vertex = start++;
            add_polygon(ring, mesh);
        }
        mesh = shuffled(mesh);
        ASSERT_EQ(repaired(mesh.corners, mesh.false_edges), mesh.false_edges) << "round " << round;
    }
}

TEST_F(FalseEdgesProperty, EqualsTheReferenceForPolygonsThatShareVertices) {
    for (int round = 0; round < 1000; ++round) {
        const uint32_t vertices = 4 + below(20);
        Polygon mesh;
        for (uint32_t count = 1 + below(6); count != 0; --count) {
            Words ring(3 + below(9));
            for (uint32_t& vertex : ring)
                vertex = below(vertices);
            add_polygon(ring, mesh);
        }
        mesh = shuffled(mesh);
        expect_same(mesh.corners, adjacency_of(mesh.corners), mesh.false_edges, round);
    }
}

TEST_F(FalseEdgesProperty, EqualsTheReferenceForPolygonsWithHoles) {
    for (int round = 0; round < 500; ++round) {
        Polygon mesh;
        for (uint32_t start = 0, count = 1 + below(3); count != 0; --count) {
            const uint32_t outer = 3 + below(6);
            const uint32_t inner = 3 + below(6);
            add_ring(start, outer, inner, mesh);
            start += outer + inner;
        }
        mesh = shuffled(mesh);
        const Words adjacency = adjacency_of(mesh.corners);
        expect_same(mesh.corners, adjacency, mesh.false_edges, round);
    }
}

/// Arbitrary input: repeated vertices, missing, one-sided and out-of-range neighbours, any entries.
TEST_F(FalseEdgesProperty, EqualsTheReferenceForArbitraryInput) {
    for (int round = 0; round < 3000; ++round) {
        const uint32_t faces = 1 + below(12);
        const uint32_t vertices = 1 + below(2 * faces);
        Words corners(3 * size_t{faces});
        Words adjacency(corners.size());
        Words false_edges(corners.size());
        const uint32_t real_share = below(5);
        for (size_t i = 0; i < corners.size(); ++i) {
            corners[i] = below(vertices);
            adjacency[i] = below(4) == 0 ? k_none : below(faces + 2);
            false_edges[i] = below(4) < real_share ? k_none : below(2) * below(faces + 2);
        }
        expect_same(corners, adjacency, false_edges, round);
    }
}

} // namespace
