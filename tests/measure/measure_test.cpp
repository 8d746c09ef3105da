#include "measure/measure.h"
#include "tests/measure/layouts.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace measure;

namespace {

const Texture k_square{512, 512};

Measures of(const Layout& layout, const Texture& texture = k_square) {
    return measure::measure(layout, texture);
}

} // namespace

TEST(Stretch, IdentityHasStretchOne) {
    const Measures m = of(one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1)));
    EXPECT_NEAR(m.whole.l2, 1.0, 1e-12);
    EXPECT_NEAR(m.whole.linf, 1.0, 1e-12);
    EXPECT_NEAR(m.distortion.angle_max, 0.0, 1e-9);
    EXPECT_NEAR(m.distortion.area_max, 1.0, 1e-12);
    EXPECT_NEAR(m.worst_chart_stretch(), 0.0, 1e-12);
    EXPECT_DOUBLE_EQ(m.coverage, 1.0);
}

TEST(Stretch, DoesNotDependOnTheUnitOfLength) {
    const Measures m = of(one_quad(rectangle(0, 0, 1000, 1000), rectangle(0, 0, 0.5f, 0.5f)));
    EXPECT_NEAR(m.whole.l2, 1.0, 1e-12);
    EXPECT_NEAR(m.density.mean, 0.256, 1e-12);
}

TEST(Stretch, OfAShearMatchesTheAnalyticValue) {
    // (x, y) -> (x + y / 2, y): F^2 = 2.25, det = 1, so L2^2 = 2.25 / 2.
    const UvCorners sheared = {{0, 0}, {0.5f, 0}, {0.75f, 0.5f}, {0.25f, 0.5f}};
    const Measures m = of(one_quad(rectangle(0, 0, 1, 1), sheared));
    EXPECT_NEAR(m.whole.l2, std::sqrt(1.125), 1e-12);
    const double smaller = (std::sqrt(4.25) - std::sqrt(0.25)) / 2;
    EXPECT_NEAR(m.whole.linf, 1 / smaller, 1e-12);
    EXPECT_NEAR(m.distortion.conformal_mean, 1 / (smaller * smaller), 1e-12);
    EXPECT_NEAR(m.distortion.area_mean, 1.0, 1e-12);
}

TEST(Stretch, OfASqueezeAndItsAnglesMatchAnalyticValues) {
    // Half the height: singular values of the map from texture to surface are 1 and 2; both are
    // scaled by the square root of the ratio of areas, 1/2.
    const Measures m = of(one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 0.5f)));
    EXPECT_NEAR(m.whole.l2, std::sqrt(0.5 * (1 + 0.25) * 2), 1e-12);
    EXPECT_NEAR(m.whole.linf, std::sqrt(2.0), 1e-12);
    // Angles of 45, 90, 45 degrees become 26.57, 90, 63.43 in both triangles of the square.
    const double change = 45 - std::atan(0.5) * 180 / std::acos(-1.0);
    EXPECT_NEAR(m.distortion.angle_max, change, 1e-9);
    EXPECT_NEAR(m.distortion.angle_mean, 2 * change / 3, 1e-9);
}

TEST(Stretch, IsMeasuredInTexelsNotInUvs) {
    const Measures m =
        of(one_quad(rectangle(0, 0, 2, 1), rectangle(0, 0, 0.5f, 0.5f)), Texture{1024, 512});
    EXPECT_NEAR(m.whole.l2, 1.0, 1e-12);
}

TEST(Stretch, OfChartsWithUnequalDensityIsOneEachButHigherTogether) {
    Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 0.5f, 0.5f));
    add_polygon(layout, rectangle(2, 0, 3, 1), rectangle(0.75f, 0, 1, 0.25f));
    const Measures m = of(layout);
    ASSERT_EQ(m.charts.size(), 2u);
    EXPECT_NEAR(m.charts[0].stretch.l2, 1.0, 1e-12);
    EXPECT_NEAR(m.charts[1].stretch.l2, 1.0, 1e-12);
    // Both charts have area 1: (1/256^2 + 1/128^2) / 2 * (256^2 + 128^2) / 2.
    EXPECT_NEAR(m.whole.l2, std::sqrt((1 + 4) * (1 + 0.25) / 4), 1e-12);
    EXPECT_DOUBLE_EQ(m.density.min, 128);
    EXPECT_DOUBLE_EQ(m.density.max, 256);
    EXPECT_NEAR(m.density.mean, std::sqrt((256.0 * 256 + 128 * 128) / 2), 1e-9);
    EXPECT_NEAR(m.density.variation, 64.0 / 192, 1e-12);
    EXPECT_NEAR(m.distortion.area_max, 2.5, 1e-12); // 1/5 of the texels on half of the surface
}

TEST(Stretch, CubeNetIsIsometric) {
    const Measures m = of(cube_net());
    EXPECT_EQ(m.charts.size(), 1u);
    EXPECT_NEAR(m.whole.l2, 1.0, 1e-12);
    EXPECT_NEAR(m.seam_relative, 7 / std::sqrt(6.0), 1e-12);
    EXPECT_NEAR(m.coverage, 6 / 16.0, 1e-12);
    EXPECT_TRUE(m.overlaps.triangles.empty());
    EXPECT_TRUE(m.flipped.empty());
    EXPECT_TRUE(m.mirrored.empty());
}

TEST(Orientation, MirroredChartIsReportedAsMirroredNotFlipped) {
    const Measures m = of(one_quad(rectangle(0, 0, 1, 1), {{1, 0}, {0, 0}, {0, 1}, {1, 1}}));
    EXPECT_EQ(m.mirrored, std::vector<uint32_t>{0});
    EXPECT_TRUE(m.flipped.empty());
    EXPECT_NEAR(m.whole.l2, 1.0, 1e-12);
}

TEST(Orientation, FoldedTriangleIsReportedAsFlipped) {
    Layout layout = grid(3);
    layout.uvs[2 * 5] = 0.9f; // moves an inner vertex across its right-hand neighbours
    const Measures m = of(layout);
    EXPECT_FALSE(m.flipped.empty());
    EXPECT_TRUE(m.mirrored.empty());
    EXPECT_FALSE(m.overlaps.triangles.empty());
    EXPECT_GT(m.overlaps.pairs_within, 0u);
    EXPECT_EQ(m.overlaps.pairs_between, 0u);
}

TEST(Orientation, CollapsedTriangleIsReported) {
    const Measures m = of(one_quad(rectangle(0, 0, 1, 1), {{0, 0}, {0.5f, 0}, {1, 0}, {0, 1}}));
    EXPECT_EQ(m.collapsed, std::vector<uint32_t>{0});
}

TEST(Orientation, TriangleWithoutSurfaceAreaIsUnresolvedWhateverItsUvs) {
    Layout layout = one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 0.5f, 0.5f));
    add_polygon(layout, {{2, 0}, {3, 0}, {4, 0}}, {{0.6f, 0}, {0.6f, 0.1f}, {0.7f, 0}});
    const Measures m = of(layout);
    EXPECT_EQ(m.unresolved, 1u);
    EXPECT_TRUE(m.flipped.empty());
    EXPECT_TRUE(m.collapsed.empty());
    EXPECT_TRUE(m.mirrored.empty());
}

TEST(Orientation, ThinButResolvableTriangleIsNotUnresolved) {
    Layout layout = one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 0.5f, 0.5f));
    add_face(layout, {0, 1, 2}, {{0.6f, 0}, {0.7f, 0.1f}, {0.7f, 0}});
    layout.positions.insert(layout.positions.end(), {0.5f, -1e-4f, 0});
    layout.corner_vertex.back() = 4;
    layout.corner_vertex[layout.corner_vertex.size() - 2] = 1;
    const Measures m = of(layout);
    EXPECT_EQ(m.unresolved, 0u);
    EXPECT_EQ(m.mirrored.size(), 1u);
}

TEST(Range, ReportsTheUvBounds) {
    const Measures m = of(one_quad(rectangle(0, 0, 1, 1), rectangle(-0.25f, 0.5f, 0.75f, 1.5f)));
    EXPECT_DOUBLE_EQ(m.uv_low[0], -0.25);
    EXPECT_DOUBLE_EQ(m.uv_high[1], 1.5);
    EXPECT_EQ(m.outside.size(), 2u);
    ASSERT_TRUE(m.border);
    EXPECT_DOUBLE_EQ(*m.border, -256.0);
}

TEST(Unmapped, CornersAreCountedAndTheirPolygonsListed) {
    Layout layout = strip(3, 0.0f);
    layout.corner_uv[4] = k_none;
    layout.corner_uv[5] = k_none;
    layout.uvs[2 * 8] = INFINITY;
    const Measures m = of(layout);
    EXPECT_EQ(m.unmapped_corners, 3u);
    EXPECT_EQ(m.unmapped_polygons, (std::vector<uint32_t>{1, 2}));
    EXPECT_TRUE(std::isfinite(m.whole.l2));
}

TEST(Unmapped, LayoutWithoutUvsHasNoChartsOrGap) {
    Layout layout = strip(1, 0.0f);
    layout.corner_uv.assign(4, k_none);
    const Measures m = of(layout);
    EXPECT_TRUE(m.charts.empty());
    EXPECT_FALSE(m.border);
    EXPECT_FALSE(m.gap);
    EXPECT_EQ(m.coverage, 0.0);
}

TEST(Unmapped, EmptyMeshHasNoTriangles) { EXPECT_EQ(of(Layout()).triangles, 0u); }

TEST(Extremes, AllUvsAtOnePointAreCollapsed) {
    Layout layout = grid(4);
    layout.uvs.assign(layout.uvs.size(), 0.5f);
    const Measures m = of(layout);
    EXPECT_EQ(m.collapsed.size(), 32u);
    EXPECT_TRUE(std::isfinite(m.whole.l2));
}

TEST(Extremes, HugeAndTinyMeshesHaveTheSameStretch) {
    for (const float scale : {1e-15f, 1e15f}) {
        Layout layout = grid(8);
        for (float& x : layout.positions)
            x *= scale;
        EXPECT_NEAR(of(layout).whole.l2, 1.0, 1e-6);
    }
}
