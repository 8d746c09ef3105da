#include "window/uv_map.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using namespace window;

const measure::Texture k_texture{100.0, 100.0};

/// Two unit squares side by side in space, in the left and the right half of the texture, with a
/// gap in between: two charts of a quarter by a quarter.
host::Mesh two_squares() {
    host::Mesh mesh;
    EXPECT_TRUE(host::Mesh::make({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {2, 0, 0}, {2, 1, 0}},
                                 {4, 4}, {0, 1, 2, 3, 1, 4, 5, 2}, mesh));
    host::UvSet& set = mesh.edit_uv_set(mesh.add_uv_set("map1"));
    set.u = {0.1f, 0.35f, 0.35f, 0.1f, 0.6f, 0.85f, 0.85f, 0.6f};
    set.v = {0.1f, 0.1f, 0.35f, 0.35f, 0.5f, 0.5f, 0.75f, 0.75f};
    set.corner_uvs = {0, 1, 2, 3, 4, 5, 6, 7};
    return mesh;
}

TEST(UvMap, FindsChartsAndTheirBounds) {
    const UvMap map(two_squares(), 0, k_texture);
    ASSERT_EQ(2u, map.charts().size());
    EXPECT_EQ(4u, map.triangle_count());
    EXPECT_EQ(2u, map.charts()[1].triangles);
    EXPECT_NEAR(0.6, map.charts()[1].box.low[0], 1e-6);
    EXPECT_NEAR(0.75, map.charts()[1].box.high[1], 1e-6);
    EXPECT_NEAR(0.0625, map.charts()[0].area, 1e-6);
}

TEST(UvMap, ACutDividesAChartAndIsASeamBeforeItsSidesAreApart) {
    host::Mesh mesh = two_squares();
    host::UvSet& set = mesh.edit_uv_set(0);
    set.u = {0.0f, 0.25f, 0.25f, 0.0f, 0.5f, 0.5f, 0.25f, 0.25f};
    set.v = {0.0f, 0.0f, 0.25f, 0.25f, 0.0f, 0.25f, 0.0f, 0.25f};
    set.corner_uvs = {0, 1, 2, 3, 1, 4, 5, 2};
    EXPECT_EQ(1u, UvMap(mesh, 0, k_texture).charts().size());
    EXPECT_EQ(0u, UvMap(mesh, 0, k_texture).seams().size());
    set.corner_uvs = {0, 1, 2, 3, 6, 4, 5, 7};
    EXPECT_EQ(2u, UvMap(mesh, 0, k_texture).charts().size());
    EXPECT_EQ(6u, UvMap(mesh, 0, k_texture).seams().size());
}

TEST(UvMap, KnowsThePolygonsOfAChartAndTheMostStretchedOne) {
    host::Mesh mesh = two_squares();
    host::UvSet& set = mesh.edit_uv_set(0);
    set.u[5] = set.u[6] = 0.95f; // the second square, stretched along u
    const UvMap map(mesh, 0, k_texture);
    EXPECT_EQ(1u, map.worst_chart());
    EXPECT_EQ((std::vector<uint32_t>{1}), map.polygons_of(1));
    EXPECT_EQ(k_none, UvMap().worst_chart());
}

TEST(UvMap, DensityIsRelativeToTheMean) {
    host::Mesh mesh = two_squares();
    host::UvSet& set = mesh.edit_uv_set(0);
    set.u[5] = set.u[6] = 0.6f + 0.125f; // the second square at half the size
    set.v[6] = set.v[7] = 0.5f + 0.125f;
    const UvMap map(mesh, 0, k_texture);
    // 25 and 12.5 texels per unit, on areas of the same size.
    const double mean = std::sqrt(0.5 * (25.0 * 25.0 + 12.5 * 12.5));
    EXPECT_NEAR(mean, map.density(), 1e-4);
    EXPECT_NEAR(25.0 / mean, double(map.triangle_density()[0]), 1e-5);
    EXPECT_NEAR(12.5 / mean, double(map.triangle_density()[3]), 1e-5);
}

TEST(UvMap, PicksTheChartAtAPoint) {
    const UvMap map(two_squares(), 0, k_texture);
    EXPECT_EQ(0u, map.chart_at(0.2, 0.2));
    EXPECT_EQ(1u, map.chart_at(0.7, 0.7));
    EXPECT_EQ(k_none, map.chart_at(0.5, 0.5));
    EXPECT_EQ(k_none, map.chart_at(0.2, 0.6));
    EXPECT_EQ(k_none, map.chart_at(-1.0, 7.0));
}

TEST(UvMap, PicksEveryTriangleAtItsCentroid) {
    const UvMap map(two_squares(), 0, k_texture);
    for (uint32_t t = 0; t < map.triangle_count(); ++t) {
        const float* c = map.uvs().data() + 6 * t;
        EXPECT_EQ(t, map.triangle_at(static_cast<double>(c[0] + c[2] + c[4]) / 3.0,
                                     static_cast<double>(c[1] + c[3] + c[5]) / 3.0));
    }
}

TEST(UvMap, OutlineConsistsOfTheBordersOfAllCharts) {
    const UvMap map(two_squares(), 0, k_texture);
    EXPECT_EQ(8u, map.outline_begin().back());
    EXPECT_EQ(32u, map.outline().size());
}

TEST(UvMap, TrianglesAndOutlinesAreGroupedByChart) {
    host::Mesh mesh = two_squares();
    mesh.edit_uv_set(0).corner_uvs = {0, 1, 2, 3, -1, -1, -1, -1};
    const UvMap without(mesh, 0, k_texture);
    EXPECT_EQ((std::vector<uint32_t>{0, 2}), without.chart_begin());
    EXPECT_EQ((std::vector<uint32_t>{0, 1, 2, 3}), without.triangles_by_chart());
    // The first polygon without UVs comes last.
    mesh.edit_uv_set(0).corner_uvs = {-1, -1, -1, -1, 4, 5, 6, 7};
    EXPECT_EQ((std::vector<uint32_t>{2, 3, 0, 1}), UvMap(mesh, 0, k_texture).triangles_by_chart());
    const UvMap both(two_squares(), 0, k_texture);
    EXPECT_EQ((std::vector<uint32_t>{0, 2, 4}), both.chart_begin());
    EXPECT_EQ((std::vector<uint32_t>{0, 4, 8}), both.outline_begin());
    for (size_t i = 16; i < 32; i += 2)
        EXPECT_GE(both.outline()[i], 0.6f); // u of the second chart
}

TEST(UvMap, IsometryHasStretchOneAndNoLoss) {
    const UvMap map(two_squares(), 0, k_texture);
    EXPECT_NEAR(0.125, map.coverage(), 1e-6);
    EXPECT_NEAR(0.0, map.worst_stretch(), 1e-6);
    EXPECT_NEAR(1.0, map.l2_stretch(), 1e-6);
    for (const float stretch : map.triangle_stretch())
        EXPECT_NEAR(1.0f, stretch, 1e-5f);
}

TEST(UvMap, StretchedChartHasAHigherStretch) {
    host::Mesh mesh = two_squares();
    host::UvSet& set = mesh.edit_uv_set(0);
    set.u[5] = set.u[6] = 0.725f; // half as wide
    const UvMap map(mesh, 0, k_texture);
    EXPECT_NEAR(0.0, map.charts()[0].stretch, 1e-6);
    EXPECT_NEAR(map.charts()[1].stretch, map.worst_stretch(), 1e-12);
    EXPECT_GT(map.worst_stretch(), 0.05);
    EXPECT_NEAR(std::sqrt(0.5), double(map.triangle_density()[3] / map.triangle_density()[0]),
                1e-5);
}

TEST(UvMap, MeshWithoutUvsHasNoCharts) {
    const UvMap map(two_squares(), -1, k_texture);
    EXPECT_TRUE(map.charts().empty());
    EXPECT_EQ(4u, map.unmapped());
    EXPECT_EQ(36u, map.points().size());
    EXPECT_EQ(k_none, map.chart_at(0.2, 0.2));
    EXPECT_EQ(0.0, map.box().low[0]);
    EXPECT_EQ(1.0, map.box().high[1]);
}

TEST(UvMap, TrianglesWithUnmappedCornersBelongToNoChart) {
    host::Mesh mesh = two_squares();
    mesh.edit_uv_set(0).corner_uvs[4] = -1;
    const UvMap map(mesh, 0, k_texture);
    EXPECT_GT(map.unmapped(), 0u);
    EXPECT_EQ(0u, map.chart_at(0.2, 0.2));
}

TEST(UvMap, CollapsedTrianglesHaveStretchZero) {
    host::Mesh mesh = two_squares();
    host::UvSet& set = mesh.edit_uv_set(0);
    for (int i = 4; i < 8; ++i)
        set.u[size_t(i)] = set.v[size_t(i)] = 0.7f;
    const UvMap map(mesh, 0, k_texture);
    EXPECT_EQ(0.0f, map.triangle_stretch()[3]);
    EXPECT_EQ(k_none, map.chart_at(double(0.7f), double(0.7f)));
}

TEST(UvMap, EmptyMeshHasNoTriangles) {
    const UvMap map(host::Mesh(), -1, k_texture);
    EXPECT_EQ(0u, map.triangle_count());
    EXPECT_EQ(k_none, map.triangle_at(0.5, 0.5));
}

TEST(UvMapSeams, EdgeBetweenTwoChartsIsOneSeamAndBordersAreNone) {
    // Two squares side by side, each with UVs of its own.
    host::Mesh mesh;
    ASSERT_TRUE(host::Mesh::make({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {0, 1, 0}, {1, 1, 0}, {2, 1, 0}},
                                 {4, 4}, {0, 1, 4, 3, 1, 2, 5, 4}, mesh));
    host::UvSet& set = mesh.edit_uv_set(mesh.add_uv_set("map1"));
    set.u = {0.0f, 0.4f, 0.4f, 0.0f, 0.6f, 1.0f, 1.0f, 0.6f};
    set.v = {0.0f, 0.0f, 0.4f, 0.4f, 0.0f, 0.0f, 0.4f, 0.4f};
    set.corner_uvs = {0, 1, 2, 3, 4, 5, 6, 7};
    const UvMap map(mesh, 0, {});
    ASSERT_EQ(6u, map.seams().size());
    EXPECT_EQ(1.0f, map.seams()[0]);
    EXPECT_EQ(1.0f, map.seams()[3]);
    set.corner_uvs = {0, 1, 2, 3, 1, 5, 6, 2};
    EXPECT_TRUE(UvMap(mesh, 0, {}).seams().empty());
}

} // namespace
