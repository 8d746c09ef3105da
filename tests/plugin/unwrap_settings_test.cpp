#include "plugin/unwrap_settings.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

UnwrapSettings clamped(void (*change)(UnwrapSettings&)) {
    UnwrapSettings settings;
    settings.tex_width = 512;
    settings.tex_height = 256;
    change(settings);
    clamp_settings(settings);
    return settings;
}

TEST(ClampSettings, ChartsLieBetween0And64) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.charts = 100; }).charts, 64);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.charts = -3; }).charts, 0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.charts = 64; }).charts, 64);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.charts = 17; }).charts, 17);
}

TEST(ClampSettings, StretchLiesBetween0And1) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.stretch = 1.5; }).stretch, 1.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.stretch = -0.1; }).stretch, 0.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.stretch = 0.15; }).stretch, 0.15);
}

TEST(ClampSettings, PaddingLiesBetween0And32) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.padding = 33; }).padding, 32);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.padding = -1; }).padding, 0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.padding = 8; }).padding, 8);
}

TEST(ClampSettings, TextureSidesLieBetween8And8192) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.tex_width = 4; }).tex_width, 8);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.tex_width = 10000; }).tex_width, 8192);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.tex_width = 1000; }).tex_width, 1000);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.tex_height = 7; }).tex_height, 8);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.tex_height = 8193; }).tex_height, 8192);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.tex_height = 9; }).tex_height, 9);
}

TEST(ClampSettings, AdjacencyMethodLiesBetween0And1) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.adjacency_method = 2; }).adjacency_method, 1);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.adjacency_method = -2; }).adjacency_method, 0);
}

TEST(ClampSettings, EpsilonLiesBetweenAThousandthAndAThousand) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.epsilon = 0; }).epsilon, 0.001);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.epsilon = 2000; }).epsilon, 1000.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.epsilon = 0.5; }).epsilon, 0.5);
}

TEST(ClampSettings, AnglesLieBetween0And180Degrees) {
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.groove_angle = 270; }).groove_angle, 180.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.groove_angle = -1; }).groove_angle, 0.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.groove_angle = 90; }).groove_angle, 90.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.ridge_angle = 180.5; }).ridge_angle, 180.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.ridge_angle = -90; }).ridge_angle, 0.0);
    EXPECT_EQ(clamped([](UnwrapSettings& s) { s.ridge_angle = 45; }).ridge_angle, 45.0);
}

TEST(ClampSettings, NanBecomesTheLowerBound) {
    const UnwrapSettings settings = clamped([](UnwrapSettings& s) {
        s.stretch = s.epsilon = s.groove_angle = s.ridge_angle =
            std::numeric_limits<double>::quiet_NaN();
    });
    EXPECT_EQ(settings.stretch, 0.0);
    EXPECT_EQ(settings.epsilon, 0.001);
    EXPECT_EQ(settings.groove_angle, 0.0);
    EXPECT_EQ(settings.ridge_angle, 0.0);
}

TEST(ClampSettings, InfinityBecomesTheUpperBound) {
    const UnwrapSettings settings = clamped([](UnwrapSettings& s) {
        s.stretch = s.epsilon = s.groove_angle = s.ridge_angle =
            std::numeric_limits<double>::infinity();
    });
    EXPECT_EQ(settings.stretch, 1.0);
    EXPECT_EQ(settings.epsilon, 1000.0);
    EXPECT_EQ(settings.groove_angle, 180.0);
    EXPECT_EQ(settings.ridge_angle, 180.0);
}

TEST(ClampSettings, FieldsWithoutARangeAreUnchanged) {
    const UnwrapSettings settings = clamped([](UnwrapSettings& s) {
        s.uv_set = "light map";
        s.reserved_scale = -7.0;
        s.skip_false_edges = 1000;
        s.high_quality = s.keep_seams = s.reserved_flag = s.use_grooves = s.use_ridges = true;
        s.charts_result = 99999;
        s.stretch_result = 44.0;
    });
    EXPECT_STREQ(settings.uv_set.asChar(), "light map");
    EXPECT_EQ(settings.reserved_scale, -7.0);
    EXPECT_EQ(settings.skip_false_edges, 1000);
    EXPECT_TRUE(settings.high_quality && settings.keep_seams && settings.reserved_flag &&
                settings.use_grooves && settings.use_ridges);
    EXPECT_EQ(settings.charts_result, 99999);
    EXPECT_EQ(settings.stretch_result, 44.0);
}

} // namespace
