#include "app/layout_picture.h"
#include "app/picture_parts.h"
#include "app/thumbnails.h"
#include "tests/measure/layouts.h"

#include <cstring>
#include <gtest/gtest.h>
#include <png.h>
#include <set>
#include <tuple>

using namespace app;

namespace {

struct Picture {
    int width = 0, height = 0;
    std::vector<uint8_t> rgb;
    Colour at(int x, int y) const {
        const size_t i = 3 * (size_t(y) * size_t(width) + size_t(x));
        return {rgb[i], rgb[i + 1], rgb[i + 2]};
    }
    size_t count(Colour colour) const {
        size_t n = 0;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                n += at(x, y) == colour;
        return n;
    }
};

Picture decode(const std::string& bytes) {
    png_image image;
    std::memset(&image, 0, sizeof image);
    image.version = PNG_IMAGE_VERSION;
    EXPECT_TRUE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()));
    image.format = PNG_FORMAT_RGB;
    Picture picture{int(image.width), int(image.height), {}};
    picture.rgb.resize(PNG_IMAGE_SIZE(image));
    EXPECT_TRUE(png_image_finish_read(&image, nullptr, picture.rgb.data(), 0, nullptr));
    return picture;
}

Picture draw(PictureKind kind, const measure::Layout& layout,
             const measure::Texture& texture = {64, 64}, double gutter = 2.0) {
    const measure::Measures measures = measure::measure(layout, texture);
    std::string png, error;
    EXPECT_TRUE(draw_picture(kind, {layout, measures, texture, gutter}, png, error)) << error;
    return decode(png);
}

constexpr Colour k_red = {235, 25, 25};

/// Two charts, each a square 1/4 of a 64-texel texture wide, `gap` texels apart in u.
measure::Layout two_charts(float gap) {
    measure::Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0.25f, 0.25f, 0.5f, 0.5f));
    const float left = 0.5f + gap / 64;
    add_polygon(layout, rectangle(2, 0, 3, 1), rectangle(left, 0.25f, left + 0.25f, 0.5f));
    return layout;
}

} // namespace

TEST(PictureKindTest, AcceptsLayoutCheckerAndStretch) {
    PictureKind kind = PictureKind::layout;
    EXPECT_TRUE(picture_kind("stretch", kind));
    EXPECT_EQ(kind, PictureKind::stretch);
    EXPECT_TRUE(picture_kind("checker", kind));
    EXPECT_TRUE(picture_kind("layout", kind));
    EXPECT_FALSE(picture_kind("Layout", kind));
    EXPECT_FALSE(picture_kind("", kind));
}

TEST(LayoutPicture, HasTheAspectRatioOfTheTextureAndAtLeastItsSize) {
    const Picture small = draw(PictureKind::layout, cube_net(), {100, 50});
    EXPECT_EQ(small.width, 2000);
    EXPECT_EQ(small.height, 1000);
    const Picture large = draw(PictureKind::layout, cube_net(), {3000, 16});
    EXPECT_EQ(large.width, 3000);
    EXPECT_EQ(large.height, 16);
}

TEST(LayoutPicture, DrawsVUpwardsAndUToTheRight) {
    measure::Layout layout = one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 0.25f, 0.25f));
    const Picture picture = draw(PictureKind::layout, layout);
    const Colour inside = picture.at(120, 2048 - 120), outside = picture.at(120, 120);
    EXPECT_GT(inside.r + inside.g + inside.b, 250);
    EXPECT_LT(outside.r + outside.g + outside.b, 200);
}

TEST(LayoutPicture, DrawsChartsInDifferentColours) {
    const Picture picture = draw(PictureKind::layout, two_charts(8));
    const Colour first = picture.at(16 * 32 + 112, 2048 - 24 * 32 + 16);
    const Colour second = picture.at(40 * 32 + 112, 2048 - 24 * 32 + 16);
    EXPECT_FALSE(first == second);
    std::set<std::tuple<int, int, int>> colours;
    for (uint32_t chart = 0; chart < 200; ++chart) {
        const Colour c = chart_colour(chart);
        colours.insert({c.r, c.g, c.b});
    }
    EXPECT_GT(colours.size(), 190u);
}

TEST(LayoutPicture, ContainsNoRedIfTheGutterIsKept) {
    EXPECT_EQ(draw(PictureKind::layout, two_charts(2)).count(k_red), 0u);
}

TEST(LayoutPicture, DrawsHalfTheGutterAroundEachChart) {
    const Picture with = draw(PictureKind::layout, two_charts(8), {64, 64}, 4);
    const Picture without = draw(PictureKind::layout, two_charts(8), {64, 64}, 0);
    const int x = 33 * 32 + 16, y = 2048 - 24 * 32 + 16; // 1.5 texels right of the first chart
    EXPECT_GT(with.at(x, y).g, without.at(x, y).g + 20);
    const int far = 36 * 32 + 16; // at least 3.5 texels from both charts, outside both gutters
    EXPECT_EQ(with.at(far, y).g, without.at(far, y).g);
}

TEST(LayoutPicture, DrawsChartsTooCloseTogetherInRed) {
    EXPECT_GT(draw(PictureKind::layout, two_charts(1)).count(k_red), 100u);
}

TEST(LayoutPicture, DrawsOverlapsInRed) {
    EXPECT_GT(draw(PictureKind::layout, two_charts(-8)).count(k_red), 10000u);
}

TEST(LayoutPicture, DrawsTheTexelGrid) {
    const Picture picture = draw(PictureKind::layout, measure::Layout(), {64, 64});
    EXPECT_FALSE(picture.at(32, 5) == picture.at(33, 5)); // a grid line and the texel beside it
    EXPECT_TRUE(picture.at(33, 5) == picture.at(50, 5));
    EXPECT_FALSE(picture.at(512, 5) == picture.at(32, 5)); // every 16th line is stronger
}

TEST(LayoutPicture, ClipsUvsOutsideTheTexture) {
    measure::Layout layout = one_quad(rectangle(0, 0, 1, 1), rectangle(-1e6f, 0.4f, 1e6f, 0.6f));
    const Picture picture = draw(PictureKind::layout, layout);
    const Colour inside = picture.at(1024 + 8, 1024 + 8);
    EXPECT_GT(inside.r + inside.g + inside.b, 250);
}

TEST(StretchPicture, DrawsIsometricTrianglesInTheMiddleColourWithALegend) {
    const Picture picture = draw(PictureKind::stretch, cube_net());
    EXPECT_EQ(picture.height, 2048 + 72);
    EXPECT_GT(picture.count(stretch_colour(1.0)), 100000u);
    EXPECT_GT(picture.count(stretch_colour(2.0)), 1u); // in the legend
    EXPECT_GT(picture.count(stretch_colour(0.5)), 1u);
}

TEST(StretchPicture, DrawsTooFewTexelsInRedAndTooManyInBlue) {
    measure::Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 0.25f, 0.25f));
    add_polygon(layout, rectangle(0, 2, 1, 3), rectangle(0.5f, 0, 1, 0.5f));
    const Picture picture = draw(PictureKind::stretch, layout);
    const Colour starved = picture.at(200, 2048 - 200), wasted = picture.at(1500, 2048 - 500);
    EXPECT_GT(starved.r, starved.b);
    EXPECT_GT(wasted.b, wasted.r);
}

TEST(CheckerPicture, ShowsTheMeshFromTwoSides) {
    const Picture picture = draw(PictureKind::checker, cube_net(), {64, 64});
    EXPECT_EQ(picture.width, 2048);
    EXPECT_EQ(picture.height, 1024);
    const Colour background = picture.at(3, 3);
    EXPECT_FALSE(picture.at(512, 512) == background);
    EXPECT_FALSE(picture.at(1536, 512) == background);
}

TEST(CheckerPicture, HasLightAndDarkSquares) {
    const Picture picture = draw(PictureKind::checker, cube_net(), {64, 64});
    int low = 255, high = 0;
    for (int x = 400; x < 624; ++x)
        for (int y = 400; y < 624; ++y) {
            low = std::min<int>(low, picture.at(x, y).g);
            high = std::max<int>(high, picture.at(x, y).g);
        }
    EXPECT_GT(high - low, 60);
}

TEST(CheckerPicture, DrawsAMeshWithoutUvsInRed) {
    measure::Layout layout = cube_net();
    layout.corner_uv.assign(layout.corner_uv.size(), measure::k_none);
    const Colour c = draw(PictureKind::checker, layout).at(512, 512);
    EXPECT_GT(c.r, 3 * c.g);
}

TEST(AllPictures, AcceptAnEmptyMesh) {
    for (const PictureKind kind : {PictureKind::layout, PictureKind::checker, PictureKind::stretch})
        EXPECT_GT(draw(kind, measure::Layout()).width, 0);
}

TEST(CanvasTriangles, AdjacentTrianglesCoverEveryPixelExactlyOnce) {
    const Canvas canvas(64, 64, {});
    std::vector<int> hits(64 * 64, 0);
    const PixelPoint middle = {31.3, 29.7};
    const PixelPoint rim[] = {{0, 0}, {20.5, 0}, {64, 0}, {64, 64}, {7.5, 64}, {0, 64}};
    for (int i = 0; i < 6; ++i) {
        const PixelPoint corners[3] = {middle, rim[i], rim[(i + 1) % 6]};
        canvas.visit_triangle(corners, [&](int x, int y) { ++hits[size_t(y * 64 + x)]; });
    }
    for (int hit : hits)
        ASSERT_EQ(hit, 1);
}

TEST(Thumbnails, AreFourSquaresInARow) {
    const measure::Layout layout = cube_net();
    const measure::Texture texture = {512, 256};
    const measure::Measures measures = measure::measure(layout, texture);
    std::string png, error;
    ASSERT_TRUE(draw_thumbnails({layout, measures, texture, 2.0}, png, error)) << error;
    const Picture picture = decode(png);
    EXPECT_EQ(picture.width, 4 * k_thumbnail_side);
    EXPECT_EQ(picture.height, k_thumbnail_side);
    const Colour surround = picture.at(1, 1); // above the texture, which is half as high as wide
    for (int part = 0; part < 4; ++part) {
        size_t drawn = 0;
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < k_thumbnail_side; ++x)
                drawn += !(picture.at(part * k_thumbnail_side + x, y) == surround);
        EXPECT_GT(drawn, size_t(k_thumbnail_side * k_thumbnail_side / 8)) << part;
    }
}

TEST(Thumbnails, ShowSeamsOnTheMesh) {
    const measure::Layout layout = cube_net();
    const measure::Texture texture = {64, 64};
    const measure::Measures measures = measure::measure(layout, texture);
    const Canvas seams = draw_small_seams({layout, measures, texture, 2.0}, 128);
    size_t blue = 0;
    for (int y = 0; y < 128; ++y)
        for (int x = 0; x < 128; ++x)
            blue += seams.at(x, y) == Colour{30, 80, 235};
    EXPECT_GT(blue, 50u);
}

TEST(Thumbnails, StayBelowTheLimitWhereEveryPixelIsAnother) {
    measure::Layout layout;
    uint32_t random = 1;
    for (int i = 0; i < 4096; ++i) { // small charts of random size all over the texture
        random = random * 1664525u + 1013904223u;
        const float x = float(i % 64) / 64, y = float(i / 64) / 64;
        const float size = float(random >> 24) / 256 / 64;
        add_polygon(layout, rectangle(64 * x, 64 * y, 64 * x + 1, 64 * y + 1),
                    rectangle(x, y, x + size, y + size));
    }
    const measure::Texture texture = {512, 512};
    const measure::Measures measures = measure::measure(layout, texture);
    std::string png, error;
    ASSERT_TRUE(draw_thumbnails({layout, measures, texture, 2.0}, png, error)) << error;
    EXPECT_LE(png.size(), k_thumbnails_limit);
}
