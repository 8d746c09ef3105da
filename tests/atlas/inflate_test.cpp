// Layouts whose charts grow together.
#include "atlas/pack/inflate.h"
#include "tests/atlas/pack_fixture.h"

#include <gtest/gtest.h>

using namespace tessora::atlas;
using namespace tessora::atlas::test;

namespace {

constexpr uint64_t k_effort = 10000000;
constexpr double k_no_limit = 1e9;

PackOptions options_of(uint32_t size, float gutter) {
    PackOptions options;
    options.width = options.height = size;
    options.gutter = gutter;
    return options;
}

bool always() { return true; }

/// A layout by hand: the charts as they are, each moved so that its origin comes to lie at a point.
Packing laid_out(const std::vector<Point>& origins) {
    Packing packing;
    for (const Point& p : origins)
        packing.placements.push_back({1, 0, p.x, p.y, 0});
    return packing;
}

} // namespace

TEST(Inflate, FourLooseSquaresGrowUntilTheyFillTheTexture) {
    PackInput set;
    for (int i = 0; i < 4; ++i)
        set.box(40, 40);
    ChartChains chains = chain_borders(set.face());
    for (ChartShape& shape : chains.shapes)
        shape.turns_finely = false;
    const PackOptions options = options_of(128, 2);
    Packing packing = laid_out({{5, 8}, {70, 3}, {11, 80}, {61, 66}});
    inflate(chains, room_of(options), k_no_limit, k_effort, always, packing);
    // 126 texels without the margin, 2 between two squares.
    EXPECT_NEAR(packing.scale * 40, 62, 0.3);
    expect_good_layout(set, packing, options);
}

TEST(Inflate, AChartThatMayTurnComesToStandAsItFitsBest) {
    PackInput set;
    set.chart({{0, 0}, {40, 8}, {32, 48}, {-8, 40}}); // a square that leans
    const PackOptions options = options_of(128, 2);
    for (const bool turns : {false, true}) {
        ChartChains chains = chain_borders(set.face());
        chains.shapes[0].turns_finely = turns;
        Packing packing = laid_out({{20, 30}});
        inflate(chains, room_of(options), k_no_limit, k_effort, always, packing);
        expect_good_layout(set, packing, options);
        EXPECT_EQ(packing.placements[0].sine == 0, !turns);
        EXPECT_NEAR(packing.scale, turns ? 126 / std::hypot(40, 8) : 126.0 / 48, 0.02);
    }
}

TEST(Inflate, AChartInANotchStaysApartFromTheOther) {
    PackInput set;
    set.chart({{0, 0}, {90, 0}, {90, 30}, {20, 30}, {20, 60}, {90, 60}, {90, 90}, {0, 90}});
    set.chart(ring(9, 50));
    const PackOptions options = options_of(128, 2);
    Packing packing = laid_out({{4, 4}, {55, 49}});
    inflate(chain_borders(set.face()), room_of(options), k_no_limit, k_effort, always, packing);
    EXPECT_GT(packing.scale, 1.3);
    expect_good_layout(set, packing, options);
}

TEST(Inflate, StopsAtTheLargestScale) {
    PackInput set;
    set.box(40, 40);
    const PackOptions options = options_of(128, 2);
    Packing packing = laid_out({{20, 30}});
    inflate(chain_borders(set.face()), room_of(options), 1.25, k_effort, always, packing);
    EXPECT_DOUBLE_EQ(packing.scale, 1.25);
    expect_good_layout(set, packing, options);
}

TEST(Inflate, ChartsOfDifferentTilesDoNotPushEachOther) {
    PackInput set;
    for (int i = 0; i < 2; ++i)
        set.box(60, 60);
    const PackOptions options = options_of(128, 2);
    Packing packing = laid_out({{10, 10}, {10, 10}});
    packing.placements[1].tile = 1;
    inflate(chain_borders(set.face()), room_of(options), k_no_limit, k_effort, always, packing);
    EXPECT_NEAR(packing.scale * 60, 126, 0.3);
    EXPECT_EQ(packing.placements[0].tile, 0u);
    EXPECT_EQ(packing.placements[1].tile, 1u);
}

TEST(Inflate, ALayoutWithAThinGutterStaysAsItIs) {
    PackInput set;
    set.box(40, 40);
    const PackOptions options = options_of(128, 0.25f);
    Packing packing = laid_out({{20, 30}});
    inflate(chain_borders(set.face()), room_of(options), k_no_limit, k_effort, always, packing);
    EXPECT_EQ(packing.scale, 1);
    EXPECT_EQ(packing.placements[0].x, 20);
}

TEST(Inflate, TheLayoutIsValidAtEveryMomentItIsStopped) {
    std::mt19937 random(5);
    const PackInput set = random_charts(random, 30);
    PackOptions options = options_of(256, 2);
    options.quick = true;
    const Packing before = pack_charts(set.face(), options);
    double scale = 0.97 * before.scale;
    for (int most : {0, 1, 2, 4, 8, 100}) {
        Packing packing = before;
        packing.scale = 0.97 * before.scale;
        for (size_t c = 0; c < set.count(); ++c) { // charts shrink towards the corner
            packing.placements[c].x *= 0.97;
            packing.placements[c].y *= 0.97;
        }
        PackRoom room = room_of(options);
        room.gutter *= 0.97;
        int calls = 0;
        inflate(
            chain_borders(set.face()), room, k_no_limit, k_effort, [&] { return calls++ < most; },
            packing);
        EXPECT_GE(packing.scale, scale);
        if (most == 0) {
            EXPECT_EQ(packing.scale, scale);
        }
        scale = packing.scale;
        const Judgement seen = judge(set, packing, options, options.gutter + 2);
        EXPECT_GE(seen.gap, 0.97 * options.gutter);
        EXPECT_FALSE(seen.overlap);
        EXPECT_GE(seen.low, 0);
        EXPECT_LE(seen.high, 1);
    }
    EXPECT_GT(scale, 1.01 * 0.97 * before.scale);
}

TEST(Inflate, StopsWhenItsEffortIsSpent) {
    PackInput set;
    set.box(40, 40);
    const PackOptions options = options_of(128, 2);
    Packing packing = laid_out({{20, 30}});
    inflate(chain_borders(set.face()), room_of(options), k_no_limit, 1, always, packing);
    EXPECT_LT(packing.scale, 1.1);
}

TEST(Inflate, WhereTheEffortEndsAmongChartsTooCloseTheyAreMovedApart) {
    std::mt19937 random(7);
    PackInput set;
    std::uniform_real_distribution<double> side(3, 9);
    for (int i = 0; i < 400; ++i)
        set.chart({{0, 0}, {side(random), 0}, {0, side(random)}});
    const PackOptions options = options_of(128, 2);
    PackOptions quick = options;
    quick.quick = true;
    quick.effort = 0.01;
    const ChartChains chains = chain_borders(set.face());
    const Packing before = pack_charts(set.face(), quick);
    for (uint64_t effort = 800000; effort <= 3200000; effort += 400000) {
        Packing packing = before;
        inflate(chains, room_of(options), k_no_limit, effort, always, packing);
        expect_good_layout(set, packing, options);
        EXPECT_GT(packing.scale, 1.001 * before.scale) << effort;
    }
}
