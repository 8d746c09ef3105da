// Maps of overlap, and moving charts apart.
#include "atlas/pack/nest.h"
#include "tests/atlas/pack_fixture.h"

#include <gtest/gtest.h>

using namespace tessora::atlas;
using namespace tessora::atlas::test;

namespace {

/// A random shape with one or two runs per column.
NestShape random_shape(std::mt19937& random, int32_t width, int32_t height) {
    NestShape shape{width, height, {}};
    for (int32_t x = 0; x < width; ++x) {
        const int32_t middle = height / 2, low = int32_t(random() % uint32_t(middle));
        shape.runs.push_back({x, low, middle - low});
        if (random() % 2 == 0)
            shape.runs.push_back({x, middle + 1, height - middle - 1});
    }
    return shape;
}

/// The weights of a page, cell by cell.
struct PlainMap {
    int32_t width, height;
    std::vector<int64_t> weight;

    PlainMap(int32_t w, int32_t h) : width(w), height(h), weight(size_t(w) * size_t(h), 0) {}
    int64_t& at(int32_t x, int32_t y) { return weight[size_t(y) * size_t(width) + size_t(x)]; }
    void add(const NestShape& shape, int32_t x, int32_t y, int32_t w) {
        for (const ColumnRun& run : shape.runs)
            for (int32_t k = 0; k < run.length; ++k)
                if (x + run.x >= 0 && x + run.x < width && y + run.y + k >= 0 &&
                    y + run.y + k < height)
                    at(x + run.x, y + run.y + k) += w;
    }
    int64_t under(const NestShape& shape, int32_t x, int32_t y) {
        int64_t sum = 0;
        for (const ColumnRun& run : shape.runs)
            for (int32_t k = 0; k < run.length; ++k)
                sum += at(x + run.x, y + run.y + k);
        return sum;
    }
};

/// The same random weights in both maps.
void fill(std::mt19937& random, OverlapMap& map, PlainMap& plain) {
    map.open(0, 0, plain.width, plain.height);
    for (int i = 0; i < 12; ++i) {
        const NestShape shape = random_shape(random, 9, 14);
        const int32_t x = int32_t(random() % 40) - 8, y = int32_t(random() % 40) - 8;
        map.add(shape, x, y, 1 + i);
        plain.add(shape, x, y, 1 + i);
    }
    map.close();
}

TEST(OverlapMap, WeighsEveryCellUnderAShape) {
    std::mt19937 random(1);
    OverlapMap map;
    PlainMap plain(33, 29);
    fill(random, map, plain);
    const NestShape shape = random_shape(random, 7, 8);
    for (int32_t y = 0; y + shape.height <= plain.height; ++y)
        for (int32_t x = 0; x + shape.width <= plain.width; ++x)
            ASSERT_EQ(map.under(shape, x, y), plain.under(shape, x, y)) << x << " " << y;
}

/// Looks for a place at every cell and compares it with find_least().
void expect_lowest_place(OverlapMap& map, PlainMap& plain, const NestShape& shape) {
    int64_t least = INT64_MAX;
    int32_t best_x = 0, best_y = 0, x = -1, y = -1;
    for (int32_t j = 0; j + shape.height <= plain.height; ++j)
        for (int32_t i = 0; i + shape.width <= plain.width; ++i)
            if (plain.under(shape, i, j) < least) {
                least = plain.under(shape, i, j);
                best_x = i;
                best_y = j;
            }
    EXPECT_EQ(map.find_least(shape, x, y), least);
    EXPECT_EQ(x, best_x);
    EXPECT_EQ(y, best_y);
}

TEST(OverlapMap, FindsTheLowestOfThePlacesWithLeastWeight) {
    std::mt19937 random(2);
    OverlapMap map;
    PlainMap plain(33, 29);
    fill(random, map, plain);
    expect_lowest_place(map, plain, random_shape(random, 12, 10));
    expect_lowest_place(map, plain, random_shape(random, 2, 2)); // has many places without weight
}

TEST(OverlapMap, HasNoPlaceForAShapeLargerThanThePage) {
    OverlapMap map;
    map.open(0, 0, 5, 5);
    map.close();
    int32_t x = 0, y = 0;
    EXPECT_EQ(map.find_least({6, 2, {{0, 0, 1}}}, x, y), INT64_MAX);
    EXPECT_EQ(map.find_least({2, 6, {{0, 0, 1}}}, x, y), INT64_MAX);
}

TEST(OverlapMap, ShrinksToTheSumsOfBlocks) {
    std::mt19937 random(3);
    OverlapMap map, small;
    PlainMap plain(32, 28);
    fill(random, map, plain);
    map.shrink(4, small);
    for (int32_t y = 0; y < 7; ++y)
        for (int32_t x = 0; x < 8; ++x) {
            const NestShape block{4, 4, {{0, 0, 4}, {1, 0, 4}, {2, 0, 4}, {3, 0, 4}}};
            ASSERT_EQ(small.under({1, 1, {{0, 0, 1}}}, x, y), plain.under(block, 4 * x, 4 * y));
        }
}

/// Boxes on a page of 100 x 100 texels, all in its middle.
struct Boxes {
    explicit Boxes(const std::vector<double>& sides) {
        for (double side : sides)
            input.box(side, side);
        chains = chain_borders(input.face());
        PackRoom room;
        room.width = room.height = 100;
        room.gutter = 2;
        page = make_page(room, chains, 1, 128, false);
        masks.reset(page, 1);
        for (uint32_t i = 0; i < sides.size(); ++i) {
            poses.push_back({i, 0, 0, 0, 0});
            centres.push_back({51, 51});
        }
    }
    PackInput input;
    ChartChains chains;
    Page page;
    MaskSet masks{chains};
    std::vector<Pose> poses;
    std::vector<Vec2> centres;
    Nester nester{masks, page, 16, [] { return true; }};
};

TEST(Nester, MovesChartsApartWithinThePage) {
    Boxes boxes({40, 40, 40, 30, 12, 8});
    ASSERT_TRUE(boxes.nester.start(boxes.poses, boxes.centres));
    EXPECT_FALSE(boxes.nester.layout().complete);
    ASSERT_TRUE(boxes.nester.separate(0, 50, true));
    const Layout layout = boxes.nester.layout();
    EXPECT_TRUE(layout.complete);
    for (const Pose& pose : boxes.nester.poses()) {
        const Slot& slot = layout.slots[pose.chart];
        const Vec2 half = slot.centre - Vec2{double(slot.x), double(slot.y)};
        EXPECT_LE(slot.centre.x + half.x, boxes.page.width);
        EXPECT_LE(slot.centre.y + half.y, boxes.page.height);
    }
}

TEST(Nester, MovesChartsApartByAFewCells) {
    Boxes boxes({44, 44});
    boxes.centres = {{23, 23}, {66, 25}}; // 1 texel of both, and the gutter, overlap
    ASSERT_TRUE(boxes.nester.start(boxes.poses, boxes.centres));
    EXPECT_FALSE(boxes.nester.layout().complete);
    EXPECT_TRUE(boxes.nester.separate(0, 10, false));
    EXPECT_TRUE(boxes.nester.layout().complete);
}

TEST(Nester, SaysWhenChartsCannotBeMovedApart) {
    Boxes boxes({80, 80});
    ASSERT_TRUE(boxes.nester.start(boxes.poses, boxes.centres));
    EXPECT_FALSE(boxes.nester.separate(0, 10, true));
}

TEST(Nester, RefusesAChartLargerThanThePage) {
    Boxes boxes({20, 120});
    EXPECT_FALSE(boxes.nester.start(boxes.poses, boxes.centres));
}

TEST(Nester, StopsWhenAsked) {
    Boxes boxes({40, 40});
    int asked = 0;
    Nester nester(boxes.masks, boxes.page, 2, [&] { return ++asked < 3; });
    ASSERT_TRUE(nester.start(boxes.poses, boxes.centres));
    nester.separate(-1, 1000, true); // a tolerance that no layout reaches
    EXPECT_EQ(asked, 3);
}

} // namespace
