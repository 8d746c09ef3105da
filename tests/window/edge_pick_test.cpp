#include "host/mesh/uv_edit.h"
#include "window/edge_pick.h"
#include "window/uv_map.h"

#include <gtest/gtest.h>

namespace {

using namespace window;
using host::Float3;

/// A flat grid of side x side squares with corners at whole numbers.
host::Mesh grid(uint32_t side) {
    std::vector<Float3> points;
    std::vector<uint32_t> counts, vertices;
    for (uint32_t y = 0; y <= side; ++y)
        for (uint32_t x = 0; x <= side; ++x)
            points.push_back({float(x), float(y), 0.0f});
    for (uint32_t y = 0; y < side; ++y)
        for (uint32_t x = 0; x < side; ++x) {
            const uint32_t a = y * (side + 1) + x;
            counts.push_back(4);
            vertices.insert(vertices.end(), {a, a + 1, a + side + 2, a + side + 1});
        }
    host::Mesh mesh;
    host::Mesh::make(std::move(points), std::move(counts), std::move(vertices), mesh);
    return mesh;
}

bool flat(const Float3& point, ScreenPoint& place) {
    place = {10.0 * double(point.x), 10.0 * double(point.y)};
    return true;
}

bool always(const Float3&) { return true; }

uint32_t edge_between(const host::Mesh& mesh, uint32_t a, uint32_t b) {
    for (uint32_t edge = 0; edge < mesh.connectivity().edge_count(); ++edge) {
        const auto& ends = mesh.connectivity().edge(edge);
        if (std::minmax(ends.first, ends.second) == std::minmax(a, b))
            return edge;
    }
    return k_none;
}

TEST(EdgePick, TheNearestEdgeOfThePolygonIsMeant) {
    const host::Mesh mesh = grid(1);
    EXPECT_EQ(edge_between(mesh, 0, 1), nearest_edge(mesh, 0, flat, {5.0, 1.0}));
    EXPECT_EQ(edge_between(mesh, 1, 3), nearest_edge(mesh, 0, flat, {9.0, 5.0}));
    EXPECT_EQ(edge_between(mesh, 2, 3), nearest_edge(mesh, 0, flat, {5.0, 80.0}));
}

TEST(EdgePick, EdgesBehindTheCameraAreNotMeant) {
    const host::Mesh mesh = grid(1);
    const auto behind = [](const Float3& point, ScreenPoint& place) {
        return flat(point, place) && point.x < 0.5f;
    };
    EXPECT_EQ(edge_between(mesh, 0, 2), nearest_edge(mesh, 0, behind, {9.0, 5.0}));
    EXPECT_EQ(k_none,
              nearest_edge(mesh, 0, [](const Float3&, ScreenPoint&) { return false; }, {5.0, 5.0}));
}

TEST(EdgePick, ALassoTakesEdgesWhoseMiddleLiesInside) {
    const host::Mesh mesh = grid(2);
    const std::vector<ScreenPoint> lasso = {{-1, -1}, {11, -1}, {11, 11}, {-1, 11}};
    const std::vector<uint32_t> wanted = {edge_between(mesh, 0, 1), edge_between(mesh, 1, 4),
                                          edge_between(mesh, 3, 4), edge_between(mesh, 0, 3)};
    std::vector<uint32_t> sorted = wanted;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(sorted, edges_inside(mesh, flat, lasso, always));
}

TEST(EdgePick, ALassoThatFoldsInLeavesOutWhatItGoesAround) {
    const host::Mesh mesh = grid(2);
    // A "U" around the middle of the edge from 1 to 4, at (10, 5).
    const std::vector<ScreenPoint> lasso = {{-1, -1}, {8, -1},  {8, 8},   {12, 8},
                                            {12, -1}, {21, -1}, {21, 21}, {-1, 21}};
    const std::vector<uint32_t> inside = edges_inside(mesh, flat, lasso, always);
    EXPECT_EQ(mesh.connectivity().edge_count() - 1, inside.size());
    EXPECT_EQ(0, std::count(inside.begin(), inside.end(), edge_between(mesh, 1, 4)));
}

TEST(EdgePick, ALassoTakesOnlyWhatIsVisible) {
    const host::Mesh mesh = grid(2);
    const std::vector<ScreenPoint> lasso = {{-1, -1}, {30, -1}, {30, 30}, {-1, 30}};
    const auto left = [](const Float3& point) { return point.x < 0.1f; };
    EXPECT_EQ(2u, edges_inside(mesh, flat, lasso, left).size());
    EXPECT_TRUE(edges_inside(mesh, flat, {{0, 0}, {30, 30}}, always).empty());
}

TEST(EdgePick, APathIsTheShortestAndHasBothEnds) {
    const host::Mesh mesh = grid(4);
    const uint32_t from = edge_between(mesh, 0, 1), to = edge_between(mesh, 3, 4);
    const std::vector<uint32_t> path = path_between(mesh, from, to);
    std::vector<uint32_t> wanted = {from, edge_between(mesh, 1, 2), edge_between(mesh, 2, 3), to};
    std::sort(wanted.begin(), wanted.end());
    EXPECT_EQ(wanted, path);
    EXPECT_EQ((std::vector<uint32_t>{from}), path_between(mesh, from, from));
}

TEST(EdgePick, APathBeginsAtTheEndThatMakesItShortest) {
    host::Mesh mesh; // from the edge 0-1 to the edge 2-3: 0-2 is longer than 1-2
    host::Mesh::make({{0, 0, 0}, {1, 0, 0}, {1, 0.5f, 0}, {2, 0.5f, 0}}, {3, 3}, {0, 1, 2, 1, 3, 2},
                     mesh);
    const uint32_t from = edge_between(mesh, 0, 1), to = edge_between(mesh, 2, 3);
    std::vector<uint32_t> wanted = {from, edge_between(mesh, 1, 2), to};
    std::sort(wanted.begin(), wanted.end());
    EXPECT_EQ(wanted, path_between(mesh, from, to));
    EXPECT_EQ(wanted, path_between(mesh, to, from));
}

TEST(EdgePick, NeighboursNeedNoPath) {
    const host::Mesh mesh = grid(2);
    EXPECT_EQ(2u, path_between(mesh, edge_between(mesh, 0, 1), edge_between(mesh, 1, 2)).size());
}

TEST(EdgePick, EdgesOfSeparatePartsAreBothTaken) {
    host::Mesh mesh;
    host::Mesh::make({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {5, 0, 0}, {6, 0, 0}, {5, 1, 0}}, {3, 3},
                     {0, 1, 2, 3, 4, 5}, mesh);
    EXPECT_EQ(2u, path_between(mesh, 0, 5).size());
}

/// A grid whose UVs are cut along edges, given by their vertices.
host::Mesh grid_cut_along(uint32_t side, const std::vector<std::pair<uint32_t, uint32_t>>& ends) {
    host::Mesh mesh = grid(side);
    const uint32_t set = mesh.add_uv_set("map1");
    std::vector<uint32_t> edges;
    for (const auto& [a, b] : ends)
        edges.push_back(edge_between(mesh, a, b));
    host::cut_uvs(mesh, set, edges);
    return mesh;
}

std::vector<uint32_t> edges_of(const host::Mesh& mesh,
                               const std::vector<std::pair<uint32_t, uint32_t>>& ends) {
    std::vector<uint32_t> edges;
    for (const auto& [a, b] : ends)
        edges.push_back(edge_between(mesh, a, b));
    std::sort(edges.begin(), edges.end());
    return edges;
}

// Vertices of a grid of 4 x 4 squares: 5 in a row; the middle row is 10 to 14.
TEST(EdgePick, ASeamReachesFromBorderToBorder) {
    const std::vector<std::pair<uint32_t, uint32_t>> middle = {
        {10, 11}, {11, 12}, {12, 13}, {13, 14}};
    const host::Mesh mesh = grid_cut_along(4, middle);
    for (const uint32_t edge : edges_of(mesh, middle))
        EXPECT_EQ(edges_of(mesh, middle), seam_through(mesh, 0, edge));
}

TEST(EdgePick, ASeamEndsWhereOthersMeetIt) {
    const host::Mesh mesh =
        grid_cut_along(4, {{10, 11}, {11, 12}, {12, 13}, {13, 14}, {12, 17}, {17, 22}});
    EXPECT_EQ(edges_of(mesh, {{10, 11}, {11, 12}}),
              seam_through(mesh, 0, edge_between(mesh, 10, 11)));
    EXPECT_EQ(edges_of(mesh, {{12, 17}, {17, 22}}),
              seam_through(mesh, 0, edge_between(mesh, 17, 22)));
}

TEST(EdgePick, AClosedSeamIsTakenOnce) {
    const std::vector<std::pair<uint32_t, uint32_t>> square = {
        {6, 7}, {7, 8}, {8, 13}, {13, 18}, {18, 17}, {17, 16}, {16, 11}, {11, 6}};
    const host::Mesh mesh = grid_cut_along(4, square);
    EXPECT_EQ(edges_of(mesh, square), seam_through(mesh, 0, edge_between(mesh, 8, 13)));
}

TEST(EdgePick, AnEdgeThatIsNotCutLiesOnNoSeam) {
    const host::Mesh mesh = grid_cut_along(4, {{10, 11}, {11, 12}, {12, 13}, {13, 14}});
    EXPECT_TRUE(seam_through(mesh, 0, edge_between(mesh, 5, 6)).empty());
    EXPECT_TRUE(seam_through(mesh, 0, edge_between(mesh, 0, 1)).empty()); // of the border
    EXPECT_TRUE(seam_through(mesh, -1, edge_between(mesh, 10, 11)).empty());
}

} // namespace
