// Outlines that cross themselves, and the test that looks only where an outline has changed.
#include "atlas/geometry/border.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace tessora::atlas;

constexpr double k_pi = 3.14159265358979323846;

/// A loop of points around the origin at the given radius, counter-clockwise.
void add_loop(Outline& outline, uint32_t points, double radius) {
    for (uint32_t i = 0; i < points; ++i) {
        const double angle = 2 * k_pi * i / points;
        outline.point.push_back({radius * std::cos(angle), radius * std::sin(angle)});
    }
    outline.loop_end.push_back(uint32_t(outline.point.size()));
}

/// The box of all segments that end at one of the points begin to end - 1 of the first loop.
void box_of(const Outline& outline, uint32_t begin, uint32_t end, Vec2& low, Vec2& high) {
    low = high = outline.point[begin];
    const uint32_t count = outline.loop_end[0];
    for (uint32_t i = begin + count - 1; i <= end + count; ++i) {
        const Vec2 p = outline.point[i % count];
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
}

TEST(OutlineTesterTest, WhereOnlySomePointsHaveMovedTheirBoxTellsAsMuchAsTheWhole) {
    std::mt19937 random(1);
    const auto uniform = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    OutlineTester tester;
    int simple = 0;
    for (int run = 0; run < 2000; ++run) {
        Outline outline;
        add_loop(outline, 40, 1);
        add_loop(outline, 12, 0.5);
        std::reverse(outline.point.begin() + 40, outline.point.end()); // a hole
        ASSERT_TRUE(tester.simple(outline));
        const uint32_t begin = uint32_t(random() % 40);
        const uint32_t end = std::min(40u, begin + 1 + uint32_t(random() % 4));
        const double shift = uniform(0, 1);
        for (uint32_t i = begin; i < end; ++i)
            outline.point[i] =
                outline.point[i] + Vec2{uniform(-shift, shift), uniform(-shift, shift)};
        Vec2 low, high;
        box_of(outline, begin, end, low, high);
        const bool expected = tester.simple(outline);
        simple += expected;
        ASSERT_EQ(tester.simple_within(outline, low, high), expected) << "run " << run;
    }
    EXPECT_GT(simple, 500);
    EXPECT_LT(simple, 1500);
}

TEST(OutlineTesterTest, WithinABoxNothingElseIsLookedAt) {
    Outline outline;
    add_loop(outline, 40, 1);
    std::swap(outline.point[0], outline.point[1]);
    OutlineTester tester;
    EXPECT_FALSE(tester.simple(outline));
    EXPECT_TRUE(tester.simple_within(outline, {-1, -1}, {-0.5, 1}));
}

TEST(OutlineTesterTest, ALoopThatTurnsOverIsFoundOutsideOfTheBox) {
    Outline outline;
    add_loop(outline, 40, 1);
    std::reverse(outline.point.begin(), outline.point.end());
    EXPECT_FALSE(OutlineTester().simple_within(outline, {2, 2}, {3, 3}));
}

} // namespace
