// Lines along which charts are worth cutting.
#include "atlas/charts/cut_lines.h"

#include <gtest/gtest.h>

using namespace tessora::atlas;

namespace {

Outline outline_of(std::initializer_list<Vec2> points) {
    Outline outline;
    outline.point = points;
    outline.loop_end = {uint32_t(points.size())};
    return outline;
}

/// Arms 2 wide and 10 and 6 long.
Outline letter_l() { return outline_of({{0, 0}, {10, 0}, {10, 2}, {2, 2}, {2, 6}, {0, 6}}); }

} // namespace

TEST(LikelyRoom, OfARectangleIsItsArea) {
    EXPECT_NEAR(likely_room(outline_of({{0, 0}, {4, 0}, {4, 3}, {0, 3}})), 12, 1e-9);
}

TEST(LikelyRoom, LiesHalfwayBetweenHullAndBox) {
    EXPECT_NEAR(likely_room(outline_of({{0, 0}, {4, 0}, {0, 3}})), 0.5 * (6 + 12), 1e-9);
}

TEST(CutLines, ARectangleHasNone) {
    EXPECT_TRUE(find_cut_lines(outline_of({{0, 0}, {9, 0}, {9, 3}, {0, 3}}), 0.1).empty());
}

TEST(CutLines, AnLIsCutWhereItsArmsMeet) {
    const std::vector<CutCandidate> lines = find_cut_lines(letter_l(), 1);
    ASSERT_FALSE(lines.empty());
    // Along the inner side of either arm, up to a stripe off.
    const CutCandidate& best = lines.front();
    EXPECT_NEAR(best.length, 2, 0.3);
    EXPECT_NEAR(std::abs(best.line.axis.x) + std::abs(best.line.axis.y), 1, 1e-9);
    EXPECT_NEAR(std::abs(best.line.offset), 2, 0.5);
    EXPECT_GT(best.saved, 0.8 * (0.5 * (60 + 44) - 28));
}

TEST(CutLines, ALineMustSaveTheLeast) {
    for (const CutCandidate& candidate : find_cut_lines(letter_l(), 15))
        EXPECT_GE(candidate.saved, 15);
    EXPECT_TRUE(find_cut_lines(letter_l(), 30).empty());
}

TEST(CutLines, OfAChartAskewStandAsItDoes) {
    Outline askew = letter_l();
    for (Vec2& p : askew.point)
        p = {0.8 * p.x - 0.6 * p.y, 0.6 * p.x + 0.8 * p.y};
    const std::vector<CutCandidate> lines = find_cut_lines(askew, 1);
    ASSERT_FALSE(lines.empty());
    const Vec2 axis = lines.front().line.axis;
    EXPECT_NEAR(std::abs(axis.x * axis.y), 0.48, 1e-6);
}

TEST(CutLines, AHoleShortensALine) {
    Outline ring = outline_of({{0, 0}, {10, 0}, {10, 2}, {2, 2}, {2, 6}, {0, 6}});
    const double whole = find_cut_lines(ring, 1).front().length;
    // A hole where the arms meet.
    for (Vec2 p : {Vec2{0.5, 1}, Vec2{0.5, 3}, Vec2{1.5, 3}, Vec2{1.5, 1}})
        ring.point.push_back(p);
    ring.loop_end.push_back(10);
    EXPECT_NEAR(find_cut_lines(ring, 1).front().length, whole - 1, 0.3);
}
