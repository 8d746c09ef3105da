#include "measure/verify.h"
#include "tests/measure/layouts.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace measure;

namespace {

std::vector<Breach> breaches(const Layout& layout, const Promise& promise = {}) {
    return verify(layout, measure::measure(layout, Texture{512, 512}), promise);
}

/// Expects exactly one breach, with this key, and returns its polygons.
std::vector<uint32_t> only(const std::vector<Breach>& list, const std::string& name) {
    if (list.size() != 1 || list[0].name != name) {
        for (const Breach& breach : list)
            ADD_FAILURE() << breach.name << ": " << breach.sentence;
        return {};
    }
    return list[0].polygons;
}

using Ids = std::vector<uint32_t>;

TEST(Verify, ListsAConvexQuadThatIsNotConvexInTheTexture) {
    // Divided along 0-2 both triangles are positive; along 1-3 one is flipped.
    const measure::Layout layout = one_quad(
        {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {{0.1f, 0.1f}, {0.9f, 0.1f}, {0.3f, 0.3f}, {0.1f, 0.9f}});
    const measure::Measures measures = measure::measure(layout, {512, 512});
    EXPECT_TRUE(measures.flipped.empty());
    EXPECT_EQ(measures.dented, std::vector<uint32_t>{0});
    EXPECT_TRUE(measures.turned.empty());
}

TEST(Verify, ListsAnotherPolygonWithACornerThatTurnsTheOtherWay) {
    // Five corners, the one at (0.5, 0.5) concave; in the texture corner 2, where two triangles of
    // the fan meet, is concave as well.
    const measure::Layout layout =
        one_quad({{0, 0}, {1, 0}, {1, 0.9f}, {0.5f, 0.5f}, {0, 1}},
                 {{0.1f, 0.1f}, {0.9f, 0.1f}, {0.4f, 0.3f}, {0.3f, 0.5f}, {0.1f, 0.9f}});
    const measure::Measures measures = measure::measure(layout, {512, 512});
    EXPECT_TRUE(measures.flipped.empty());
    EXPECT_TRUE(measures.dented.empty());
    EXPECT_EQ(measures.turned, std::vector<uint32_t>{0});
}

TEST(Verify, JudgesTheLimitOverTheWorseDiagonalOfAQuad) {
    // A unit square whose third corner is pulled to (1.4, 1.4), at half the scale.
    const measure::Layout layout = one_quad(
        {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {{0.1f, 0.1f}, {0.6f, 0.1f}, {0.8f, 0.8f}, {0.1f, 0.6f}});
    const measure::StretchSum stretch = measure::measure(layout, {512, 512}).charts[0].stretch;
    EXPECT_NEAR(stretch.l2, std::sqrt(1.4 * 0.5 * 3.12 / 1.96), 1e-4);
    EXPECT_NEAR(stretch.worst_l2, std::sqrt(1.4 * 0.5 * (1 + 0.5 * 4.24 / 3.24)), 1e-4);
}

} // namespace

TEST(Verify, GoodLayoutHasNoBreaches) {
    EXPECT_TRUE(breaches(cube_net()).empty());
    EXPECT_TRUE(breaches(strip(3, 2.5f / 512)).empty());
}

TEST(Verify, ListsPolygonsWithoutUvs) {
    Layout layout = strip(3, 0.01f);
    layout.corner_uv[5] = k_none;
    EXPECT_EQ(only(breaches(layout), "unmapped"), Ids{1});
}

TEST(Verify, ListsCollapsedPolygons) {
    Layout layout = strip(2, 0.01f);
    for (int k = 4; k < 8; ++k)
        layout.uvs[2 * k + 1] = 0.5f;
    EXPECT_EQ(only(breaches(layout), "collapsed"), Ids{1});
}

TEST(Verify, ListsMirroredCharts) {
    Layout layout = strip(2, 0.01f);
    std::swap(layout.uvs[2 * 4], layout.uvs[2 * 5]);
    std::swap(layout.uvs[2 * 6], layout.uvs[2 * 7]);
    EXPECT_EQ(only(breaches(layout), "mirrored"), Ids{1});
}

TEST(Verify, ListsFlippedPolygons) {
    Layout layout;
    layout.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 2, 0};
    add_face(layout, {0, 1, 2}, {{0, 0}, {1, 0}, {1, 1}});
    add_face(layout, {0, 2, 3}, {{0, 0}, {1, 1}, {0.25f, 0.125f}});
    const std::vector<Breach> list = breaches(layout, Promise{2, 1});
    ASSERT_EQ(list.size(), 2u);
    EXPECT_STREQ(list[0].name, "flipped");
    EXPECT_EQ(list[0].polygons, Ids{1});
    EXPECT_STREQ(list[1].name, "overlaps");
    EXPECT_EQ(list[1].polygons, (Ids{0, 1}));
}

TEST(Verify, ListsOverlappingPolygonsAndTheGapTheyViolate) {
    Layout layout = strip(3, 0.01f);
    for (int k = 8; k < 12; ++k)
        layout.uvs[2 * k] -= 0.03f;
    const std::vector<Breach> list = breaches(layout);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_STREQ(list[0].name, "overlaps");
    EXPECT_EQ(list[0].polygons, (Ids{1, 2}));
    EXPECT_STREQ(list[1].name, "gap");
}

TEST(Verify, ListsChartsCloserThanTheGutter) {
    EXPECT_EQ(only(breaches(strip(2, 1.9f / 512)), "gap"), (Ids{0, 1}));
}

TEST(Verify, GapToleranceIsAHundredthOfATexel) {
    EXPECT_TRUE(breaches(strip(2, 1.992f / 512)).empty());
}

TEST(Verify, ListsPolygonsOutsideTheTexture) {
    Layout layout = strip(2, 0.01f);
    for (int k = 4; k < 8; ++k)
        layout.uvs[2 * k] += 1.0f;
    EXPECT_EQ(only(breaches(layout), "outside"), Ids{1});
}

TEST(Verify, ListsChartsOverTheStretchLimit) {
    Layout layout = strip(2, 0.0f);
    for (int k = 0; k < 8; ++k)
        layout.uvs[2 * k] *= 4;
    EXPECT_EQ(only(breaches(layout), "stretch"), (Ids{0, 1}));
    EXPECT_TRUE(breaches(layout, Promise{2, 0.6}).empty());
}

TEST(Verify, SinglePolygonChartMayExceedTheStretchLimit) {
    Layout layout = strip(1, 0.0f);
    for (int k = 0; k < 4; ++k)
        layout.uvs[2 * k] *= 4;
    EXPECT_TRUE(breaches(layout).empty());
    const Measures m = measure::measure(layout, Texture{});
    EXPECT_EQ(find_over_limit(layout, m, 0.15).allowed, Ids{0});
}

TEST(Verify, StretchLimitOfZeroAllowsRoundingErrors) {
    Layout layout = grid(50);
    for (size_t i = 0; i < layout.uvs.size(); ++i)
        layout.uvs[i] = layout.uvs[i] * 0.001f + 0.7f;
    EXPECT_TRUE(breaches(layout, Promise{2, 0}).empty());
}
