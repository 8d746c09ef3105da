#include "window/uv_view.h"

#include <gtest/gtest.h>

namespace {

using namespace window;

UvView view(double width = 400.0, double height = 300.0) {
    UvView made;
    made.resize(width, height);
    return made;
}

TEST(UvView, ToPixelAndToUvAreInverse) {
    UvView v = view();
    v.zoom(3.0, 50.0, 60.0);
    v.pan(17.0, -5.0);
    double x, y, a, b;
    v.to_uv(123.0, 45.0, a, b);
    v.to_pixel(a, b, x, y);
    EXPECT_NEAR(123.0, x, 1e-9);
    EXPECT_NEAR(45.0, y, 1e-9);
}

TEST(UvView, VPointsUp) {
    const UvView v = view();
    double x, low, high;
    v.to_pixel(0.5, 0.0, x, low);
    v.to_pixel(0.5, 1.0, x, high);
    EXPECT_GT(low, high);
}

TEST(UvView, ZoomKeepsTheUvUnderTheMouse) {
    UvView v = view();
    double u0, v0, u1, v1;
    v.to_uv(30.0, 200.0, u0, v0);
    v.zoom(2.5, 30.0, 200.0);
    v.to_uv(30.0, 200.0, u1, v1);
    EXPECT_NEAR(u0, u1, 1e-12);
    EXPECT_NEAR(v0, v1, 1e-12);
}

TEST(UvView, ZoomIsClamped) {
    UvView v = view();
    v.zoom(1e30, 0.0, 0.0);
    EXPECT_EQ(1048576.0, v.pixels_per_side());
    v.zoom(1e-30, 0.0, 0.0);
    EXPECT_EQ(8.0, v.pixels_per_side());
}

TEST(UvView, PanFollowsTheMouse) {
    UvView v = view();
    double x, y;
    v.to_pixel(0.25, 0.75, x, y);
    v.pan(13.0, 8.0);
    double nx, ny;
    v.to_pixel(0.25, 0.75, nx, ny);
    EXPECT_NEAR(x + 13.0, nx, 1e-9);
    EXPECT_NEAR(y + 8.0, ny, 1e-9);
}

TEST(UvView, FrameShowsTheWholeBox) {
    UvView v = view(500.0, 200.0);
    UvBox box;
    box.low[0] = 0.2;
    box.high[0] = 0.4;
    box.low[1] = -0.5;
    box.high[1] = 0.5;
    v.frame(box);
    double x, top, bottom;
    v.to_pixel(0.3, 0.5, x, top);
    v.to_pixel(0.3, -0.5, x, bottom);
    EXPECT_NEAR(250.0, x, 1e-9);
    EXPECT_NEAR(12.0, top, 1e-9);
    EXPECT_NEAR(188.0, bottom, 1e-9);
}

TEST(UvView, FrameOfAPointStaysFinite) {
    UvView v = view();
    UvBox box;
    box.high[0] = box.low[0] = box.high[1] = box.low[1] = 0.3;
    v.frame(box);
    EXPECT_LE(v.pixels_per_side(), 1048576.0);
}

TEST(UvView, EmptyPanelIsTreatedAsOnePixel) {
    UvView v = view(0.0, -5.0);
    EXPECT_EQ(1.0, v.width());
    EXPECT_EQ(1.0, v.height());
}

TEST(UvView, GridStepIsTheSmallestPowerOfTwoWithMinimumSpacing) {
    UvView v = view();
    v.frame(UvBox()); // 264 pixels per unit
    const measure::Texture texture{512.0, 256.0};
    EXPECT_EQ(16, v.grid_step(texture, 8.0)); // 264/512 pixels per texel
    v.zoom(40.0, 0.0, 0.0);
    EXPECT_EQ(1, v.grid_step(texture, 8.0));
}

TEST(UvView, TexelsAreSquareInANonSquareTexture) {
    UvView v = view(400.0, 400.0);
    EXPECT_TRUE(v.set_texture({2048.0, 256.0}));
    double left, right, top, bottom;
    v.to_pixel(0.0, 0.0, left, bottom);
    v.to_pixel(100.0 / 2048.0, 100.0 / 256.0, right, top);
    EXPECT_NEAR(right - left, bottom - top, 1e-9);
    double u, w;
    v.to_uv(right, top, u, w);
    EXPECT_NEAR(100.0 / 2048.0, u, 1e-12);
    EXPECT_NEAR(100.0 / 256.0, w, 1e-12);
}

TEST(UvView, FrameShowsTheWholeOfAWideTexture) {
    UvView v = view(400.0, 400.0);
    v.set_texture({2048.0, 256.0});
    v.frame(UvBox());
    double left, right, top, bottom;
    v.to_pixel(0.0, 0.0, left, bottom);
    v.to_pixel(1.0, 1.0, right, top);
    EXPECT_NEAR(24.0, left, 1e-9);
    EXPECT_NEAR(376.0, right, 1e-9);
    EXPECT_NEAR(44.0, bottom - top, 1e-9);
}

TEST(UvView, TextureOfTheSameAspectRatioChangesNothing) {
    UvView v = view();
    EXPECT_FALSE(v.set_texture({512.0, 512.0}));
    EXPECT_FALSE(v.set_texture({1024.0, 1024.0}));
    EXPECT_TRUE(v.set_texture({512.0, 1024.0}));
    EXPECT_FALSE(v.set_texture({256.0, 512.0}));
}

} // namespace
