#include "atlas/pack/pack.h"
#include "tests/atlas/pack_fixture.h"

#include <gtest/gtest.h>

using namespace tessora::atlas;
using namespace tessora::atlas::test;

namespace {

PackOptions options_of(uint32_t width, uint32_t height, float gutter,
                       Quality quality = Quality::fast) {
    PackOptions options;
    options.width = width;
    options.height = height;
    options.gutter = gutter;
    options.quality = quality;
    return options;
}

/// Packs, expects a valid layout, and returns its coverage.
double expect_valid(const PackInput& set, const PackOptions& options) {
    const Packing packing = pack_charts(set.face(), options);
    EXPECT_EQ(packing.status, Status::ok);
    if (packing.status != Status::ok)
        return 0;
    EXPECT_EQ(packing.placements.size(), set.count());
    EXPECT_GT(packing.scale, 0);
    expect_good_layout(set, packing, options);
    for (const Placement& p : packing.placements)
        EXPECT_NEAR(p.cosine * p.cosine + p.sine * p.sine, 1, 1e-12);
    return packing.coverage;
}

} // namespace

TEST(PackFormulas, InnerRectangleIsTheTextureWithoutTheMargin) {
    const InnerRectangle inner = inner_rectangle(1024, 512, 2);
    EXPECT_DOUBLE_EQ(inner.width, 1020);
    EXPECT_DOUBLE_EQ(inner.height, 510);
    EXPECT_DOUBLE_EQ(inner.unit, 1020);
}

TEST(PackFormulas, CapacityCountsPointsOneGutterApart) {
    EXPECT_EQ(gutter_capacity(512, 512, 2), 256u * 256u);
    EXPECT_EQ(gutter_capacity(1024, 256, 8), 125u * 32u);
    EXPECT_EQ(gutter_capacity(64, 64, 64), 0u);
    EXPECT_EQ(gutter_capacity(64, 64, 0), ~uint64_t(0));
}

TEST(PackFormulas, SafeGutterIsSlightlyLargerThanRequested) {
    EXPECT_GT(safe_gutter(512, 512, 2), 2.001);
    EXPECT_LT(safe_gutter(512, 512, 2), 2.003);
    EXPECT_LT(safe_gutter(8192, 8192, 2), 2.03);
}

TEST(Pack, NoChartsIsAValidLayout) {
    const PackInput set;
    const Packing packing = pack_charts(set.face(), options_of(512, 512, 2));
    EXPECT_EQ(packing.status, Status::ok);
    EXPECT_TRUE(packing.placements.empty());
}

TEST(Pack, OneSquareFillsASquareTexture) {
    PackInput set;
    set.box(3, 3);
    EXPECT_GT(expect_valid(set, options_of(512, 512, 2)), 0.97);
}

TEST(Pack, ARotatedSquareIsAlignedWithTheTexture) {
    PackInput set;
    set.chart({{0, 0}, {4, 3}, {1, 7}, {-3, 4}});
    EXPECT_GT(expect_valid(set, options_of(512, 512, 2)), 0.97);
}

TEST(Pack, ALongBoxIsAlignedWithALongTexture) {
    PackInput set;
    set.box(1, 8);
    EXPECT_GT(expect_valid(set, options_of(1024, 128, 1)), 0.9);
    EXPECT_GT(expect_valid(set, options_of(128, 1024, 1)), 0.9);
}

TEST(Pack, AFewChartsWithLittleStraightBorderTiltIfThatMakesThemLarger) {
    // A circle's segment of half its radius: along the diagonal it is longer than along an axis.
    PackInput set;
    std::vector<Point> segment;
    for (int i = -60; i <= 60; ++i) {
        const double a = i * 3.14159265358979 / 180;
        segment.push_back({std::sin(a), std::cos(a)});
    }
    set.chart(segment);
    const double straight = expect_valid(set, options_of(512, 512, 2, Quality::quality));
    EXPECT_GT(straight, 0.28) << "standing on its chord it covers 0.2";
}

TEST(Pack, OneChartIsTurnedToItsLargestScale) {
    // The largest regular triangle in a square has a side of 1.0353 times the square's.
    PackInput set;
    set.chart(
        {{0, 0}, {0.8, 0.6}, {0.4 - 0.6 * 0.8660254037844386, 0.3 + 0.8 * 0.8660254037844386}});
    const Packing packing = pack_charts(set.face(), options_of(512, 512, 2));
    ASSERT_EQ(packing.status, Status::ok);
    EXPECT_NEAR(packing.scale, 1.0353 * 510, 0.1);
    expect_valid(set, options_of(512, 512, 2));
}

TEST(Pack, OneChartLargerThanTheRoomDoesNotFit) {
    PackInput set;
    set.box(1, 1);
    PackOptions options = options_of(512, 512, 2);
    options.min_scale = 511;
    EXPECT_EQ(pack_charts(set.face(), options).status, Status::does_not_fit);
}

TEST(Pack, ALongBoxInASquareTextureStandsStraight) {
    PackInput set;
    set.chart({{0, 0}, {12, 5}, {11.5, 6.2}, {-0.5, 1.2}});
    const Packing packing = pack_charts(set.face(), options_of(512, 512, 2));
    ASSERT_EQ(packing.status, Status::ok);
    const Placement& p = packing.placements[0];
    const double x = p.cosine * 12 - p.sine * 5, y = p.sine * 12 + p.cosine * 5;
    EXPECT_NEAR(std::min(std::abs(x), std::abs(y)), 0, 1e-9);
}

TEST(Pack, FourSquaresFillASquareTexture) {
    PackInput set;
    for (int i = 0; i < 4; ++i)
        set.box(1, 1);
    EXPECT_GT(expect_valid(set, options_of(512, 512, 2)), 0.95);
}

TEST(Pack, ChartsArePackedIntoHolesOfOthers) {
    PackInput set;
    set.loop({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    set.loop({{1, 1}, {1, 9}, {9, 9}, {9, 1}});
    set.close();
    set.box(7, 7);
    EXPECT_GT(expect_valid(set, options_of(512, 512, 4)), 0.8);
}

TEST(Pack, NothingIsPackedIntoAClosedSlit) {
    PackInput set;
    set.loop({{0, 0}, {10, 0}, {10, 10}, {0, 10}});
    set.loop({{2, 5}, {8, 5}});
    set.close();
    set.box(1, 1);
    EXPECT_GT(expect_valid(set, options_of(256, 256, 2)), 0.75);
}

TEST(Pack, PointsAndSegmentsArePlaced) {
    PackInput set;
    set.chart({{5, 5}});
    set.chart({{0, 0}, {1, 2}});
    set.chart({{0, 0}, {3, 0}, {1, 0}});
    set.box(1, 0);
    expect_valid(set, options_of(64, 64, 3));
}

TEST(Pack, ChartsThatAreAllPointsArePlaced) {
    PackInput set;
    for (int i = 0; i < 50; ++i)
        set.chart({{double(i), 1}});
    expect_valid(set, options_of(64, 64, 4));
}

TEST(Pack, ChartWithoutEdgesTakesNoRoom) {
    PackInput set;
    set.close();
    set.box(1, 1);
    set.close();
    EXPECT_GT(expect_valid(set, options_of(512, 512, 2)), 0.97);
}

TEST(Pack, ANeedleIsPlacedWithinTheTexture) {
    PackInput set;
    set.box(1e6, 1);
    set.box(10, 1);
    expect_valid(set, options_of(512, 512, 2));
}

TEST(Pack, GutterZeroLetsChartsTouchButNotOverlap) {
    PackInput set;
    for (int i = 0; i < 9; ++i)
        set.box(1, 1);
    EXPECT_GT(expect_valid(set, options_of(512, 512, 0)), 0.97);
}

TEST(Pack, TexturesOfExtremeProportionsAreFilledValidly) {
    std::mt19937 random(5);
    const PackInput set = random_charts(random, 20);
    expect_valid(set, options_of(8192, 8, 1));
    expect_valid(set, options_of(8, 8192, 1));
    expect_valid(set, options_of(8192, 8192, 32));
    expect_valid(set, options_of(8, 8, 0.25f));
}

TEST(Pack, GutterAsWideAsTheTextureDoesNotFit) {
    PackInput set;
    set.box(1, 1);
    EXPECT_EQ(pack_charts(set.face(), options_of(512, 32, 32)).status, Status::does_not_fit);
    EXPECT_EQ(pack_charts(set.face(), options_of(512, 32, 31.5f)).status, Status::does_not_fit);
}

TEST(Pack, MoreChartsThanTheCapacityDoNotFit) {
    PackInput set;
    for (int i = 0; i < 100; ++i)
        set.box(1, 1);
    EXPECT_EQ(pack_charts(set.face(), options_of(64, 64, 8)).status, Status::does_not_fit);
}

TEST(Pack, AQuarterOfTheCapacityFits) {
    for (const auto& [width, height, gutter] :
         {std::tuple<uint32_t, uint32_t, float>{1024, 256, 8.0f},
          {64, 64, 4.0f},
          {256, 64, 2.0f}}) {
        std::mt19937 random(11);
        const uint64_t capacity = gutter_capacity(width, height, gutter);
        expect_valid(random_charts(random, uint32_t(capacity / 4)),
                     options_of(width, height, gutter));
    }
}

TEST(Pack, ProgressNeverDecreasesAndReturningFalseAborts) {
    std::mt19937 random(3);
    const PackInput set = random_charts(random, 30);
    PackOptions options = options_of(256, 256, 2);
    double last = 0;
    bool rising = true;
    options.proceed = [&](double done) {
        rising = rising && done >= last && done <= 1;
        last = done;
        return true;
    };
    EXPECT_EQ(pack_charts(set.face(), options).status, Status::ok);
    EXPECT_TRUE(rising);
    options.proceed = [](double) { return false; };
    EXPECT_EQ(pack_charts(set.face(), options).status, Status::aborted);
}

TEST(Pack, ThousandsOfChartsAreStoppedAtAnyReport) {
    std::mt19937 random(19);
    const PackInput set = random_charts(random, 1200);
    PackOptions options = options_of(4096, 4096, 2, Quality::fast);
    int calls = 0;
    options.proceed = [&](double) { return ++calls > 0; };
    ASSERT_EQ(pack_charts(set.face(), options).status, Status::ok);
    const int all = calls;
    EXPECT_GT(all, 1200 / 256 * 2); // several within every layout
    for (int stop = 1; stop <= all; stop += all / 3) {
        calls = 0;
        options.proceed = [&](double) { return ++calls < stop; };
        EXPECT_EQ(pack_charts(set.face(), options).status, Status::aborted) << stop;
        EXPECT_EQ(calls, stop);
    }
}

TEST(Pack, MoreThanAThousandChartsOfAllSizesAreAGoodLayout) {
    std::mt19937 random(4);
    const PackInput set = random_charts(random, 1300);
    PackOptions options;
    options.quality = Quality::fast;
    expect_good_layout(set, pack_charts(set.face(), options), options);
}

TEST(Pack, HundredsOfChartsInQualityModeUseTheRoomThatSimilarOnesLeave) {
    PackInput input;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> unit(0, 1);
    for (int i = 0; i < 200; ++i)
        input.chart(blob(random, 0.1 / (0.1 + unit(random)), 40));
    PackOptions options;
    options.quality = Quality::quality;
    EXPECT_GT(expect_valid(input, options), 0.793);
}

TEST(Pack, SameInputGivesIdenticalResults) {
    std::mt19937 random(17);
    const PackInput set = random_charts(random, 60);
    for (Quality quality : {Quality::fast, Quality::quality}) {
        const Packing a = pack_charts(set.face(), options_of(512, 256, 2, quality));
        const Packing b = pack_charts(set.face(), options_of(512, 256, 2, quality));
        ASSERT_EQ(a.placements.size(), b.placements.size());
        EXPECT_EQ(a.scale, b.scale);
        for (size_t i = 0; i < a.placements.size(); ++i) {
            EXPECT_EQ(a.placements[i].x, b.placements[i].x);
            EXPECT_EQ(a.placements[i].y, b.placements[i].y);
            EXPECT_EQ(a.placements[i].cosine, b.placements[i].cosine);
        }
    }
}

TEST(Pack, WhatIsWantedInVainEndsTheSearchEarly) {
    for (const Quality quality : {Quality::fast, Quality::quality}) {
        PackInput charts;
        std::mt19937 random(8);
        for (int i = 0; i < 20; ++i)
            charts.chart(blob(random, 1 + 0.1 * i, 40));
        PackOptions options;
        options.quality = quality;
        uint32_t reports = 0;
        options.proceed = [&](double) { return ++reports > 0; };
        const Packing whole = pack_charts(charts.face(), options, room_of(options));
        const uint32_t all = reports;
        EXPECT_GE(whole.attainable, whole.coverage);
        reports = 0;
        options.wanted = 1.5;
        ASSERT_LT(whole.attainable, options.wanted);
        const Packing given_up = pack_charts(charts.face(), options, room_of(options));
        EXPECT_LT(reports, all / 4);
        EXPECT_EQ(given_up.status, Status::ok);
        EXPECT_LT(given_up.attainable, options.wanted);
        EXPECT_LT(given_up.coverage, whole.coverage);
    }
}

TEST(Pack, WhatIsWantedAndAttainableChangesNothing) {
    PackInput charts;
    std::mt19937 random(8);
    for (int i = 0; i < 20; ++i)
        charts.chart(blob(random, 1 + 0.1 * i, 40));
    PackOptions options;
    options.quality = Quality::fast;
    const Packing whole = pack_charts(charts.face(), options, room_of(options));
    options.wanted = 0.99 * whole.attainable;
    const Packing wanted = pack_charts(charts.face(), options, room_of(options));
    EXPECT_EQ(wanted.scale, whole.scale);
    EXPECT_EQ(wanted.attainable, whole.attainable);
}

TEST(Pack, ScalingAllChartsKeepsTheCoverage) {
    std::mt19937 random(23);
    PackInput set = random_charts(random, 40);
    const double coverage = expect_valid(set, options_of(512, 512, 2));
    for (double& p : set.points)
        p *= 1024; // a power of two keeps every bit
    EXPECT_EQ(expect_valid(set, options_of(512, 512, 2)), coverage);
}

TEST(PackProperty, GutterHoldsInTheFinalTexture) {
    const uint32_t base = 20261121;
    for (uint32_t i = 0; i < 60; ++i) {
        const uint32_t seed = base + i;
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        const uint32_t sides[] = {32, 64, 128, 256, 512, 1024};
        const float gutters[] = {0, 0.5f, 1, 2, 3.75f, 8};
        const uint32_t width = sides[random() % 6], height = sides[random() % 6];
        const float gutter = std::min(gutters[random() % 6], float(std::min(width, height)) / 16);
        const uint64_t room = gutter_capacity(width, height, gutter) / 4;
        const uint32_t max_count = uint32_t(std::min<uint64_t>(room, i % 10 == 0 ? 400 : 60));
        const PackInput set = random_charts(random, 1 + random() % std::max(1u, max_count));
        const Quality quality = i % 4 == 0 ? Quality::quality : Quality::fast;
        expect_valid(set, options_of(width, height, gutter, quality));
        if (HasFailure())
            break;
    }
}
