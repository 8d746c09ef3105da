// Border smoothing: which atoms move to the neighbouring chart and which do not.
#include "atlas/charts/smooth.h"
#include "tests/atlas/grid_charts.h"

#include <algorithm>

namespace {

using namespace tessora::atlas;

class BorderSmoothing : public atlas_test::GridCharts {
protected:
    void smooth(double limit = 1.176) {
        FlattenOptions options;
        options.limit = limit;
        Flattener flattener(*set, options);
        ProgressMeter progress{Options()};
        ASSERT_TRUE(BorderSmoother(flattener, atoms, hardness).run(nullptr, progress));
    }
};

TEST_F(BorderSmoothing, SingleTrianglesMoveToTheNeighbour) {
    build_flat(4, 3, false,
               [](int x, int, bool upper) { return x < 2 || (x == 2 && upper) ? 0 : 1; });
    EXPECT_EQ(sides(), "000010110000101100001011");
    smooth();
    EXPECT_EQ(sides(), "000011110000111100001111");
    expect_undistorted();
}

TEST_F(BorderSmoothing, PolygonsMoveAsAWhole) {
    build_flat(4, 3, true, [](int x, int y, bool) { return x < 2 || (x == 2 && y == 1) ? 0 : 1; });
    smooth();
    EXPECT_EQ(sides(), "000011110000111100001111");
    expect_undistorted();
}

TEST_F(BorderSmoothing, AnEarUncoveredByAnotherMovesToo) {
    build_flat(5, 3, true, [](int x, int y, bool) { return x < 2 || (x < 4 && y == 1) ? 0 : 1; });
    smooth();
    EXPECT_EQ(sides(), "000011111100001111110000111111");
    expect_undistorted();
}

TEST_F(BorderSmoothing, WavesOfManyAtomsAreStraightened) {
    // No single cell of the bump would make the border shorter.
    build_flat(12, 7, true,
               [](int x, int y, bool) { return x < 6 || (x < 8 && y > 1 && y < 5) ? 0 : 1; });
    smooth();
    const std::string row = "000000000000111111111111";
    EXPECT_EQ(sides(), row + row + row + row + row + row + row);
    expect_undistorted();
}

TEST_F(BorderSmoothing, ASmallChartInsideAnotherStays) {
    build_flat(9, 9, true,
               [](int x, int y, bool) { return x > 1 && x < 7 && y > 1 && y < 7 ? 1 : 0; });
    smooth();
    ASSERT_FALSE(set->charts[1].faces.empty());
    EXPECT_GE(set->charts[1].faces.size(), 2u * 9);
    expect_undistorted();
}

TEST_F(BorderSmoothing, ChartsAreRelaxedWhereTheirBorderHasMoved) {
    build_flat(12, 7, true,
               [](int x, int y, bool) { return x < 6 || (x < 8 && y > 1 && y < 5) ? 0 : 1; });
    for (uint32_t t : set->charts[1].faces) // stretch chart 1 by a fifth in y
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            if (set->node[c] == c)
                set->uv[c].y *= 1.2;
    set->refresh(set->charts[1]);
    const double before = set->charts[1].stretch.l2();
    smooth();
    EXPECT_LT(set->charts[1].stretch.l2(), before - 4e-4);
    EXPECT_EQ(sides().substr(48, 24), "000000000000111111111111");
}

TEST_F(BorderSmoothing, WhatChartsKnowOfThemselvesIsThatOfTheirTriangles) {
    build_flat(12, 7, true,
               [](int x, int y, bool) { return x < 6 || (x < 8 && y > 1 && y < 5) ? 0 : 1; });
    const size_t before = set->charts[1].faces.size();
    smooth();
    EXPECT_EQ(set->charts[1].faces.size(), before + 12);
    for (uint32_t c = 0; c < 2; ++c) {
        const Chart& chart = set->charts[c];
        for (uint32_t t : chart.faces)
            EXPECT_EQ(set->chart[t], c);
        Chart again = chart;
        set->refresh(again);
        EXPECT_EQ(chart.border, again.border);
        EXPECT_EQ(chart.border_length, again.border_length);
        EXPECT_EQ(chart.stretch.area, again.stretch.area);
        EXPECT_EQ(chart.stretch.inverse, again.stretch.inverse);
    }
}

TEST_F(BorderSmoothing, StraightBordersDoNotChange) {
    build_flat(4, 3, true, [](int x, int, bool) { return x < 2 ? 0 : 1; });
    smooth();
    EXPECT_EQ(sides(), "000011110000111100001111");
}

TEST_F(BorderSmoothing, BordersSlideIntoCreases) {
    build(
        5, 1, true, [](int x, int, bool) { return x < 2 ? 0 : 1; },
        [](int x, int) { return x > 3 ? float(x - 3) : 0.0f; });
    smooth();
    EXPECT_EQ(sides(), "0000001111");
}

TEST_F(BorderSmoothing, EarsOfHardSurfacesMoveOnlyIfTheyFitWithoutStretch) {
    const Side side = [](int x, int y, bool) { return x < 2 || (x == 2 && y == 1) ? 0 : 1; };
    const auto build_squeezed = [&](float value) {
        build_flat(4, 3, true, side);
        hardness.assign(surface.face_count, value);
        for (uint32_t t : set->charts[1].faces) // stretch chart 1 by a tenth in y
            for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
                if (set->node[c] == c)
                    set->uv[c].y *= 1.1;
        set->refresh(set->charts[1]);
    };
    build_squeezed(1);
    const std::string before = sides();
    smooth();
    EXPECT_EQ(sides(), before);
    build_squeezed(0);
    smooth();
    EXPECT_NE(sides(), before);
}

TEST_F(BorderSmoothing, AtomsThatConnectTheirChartDoNotMove) {
    // Cell (1, 1) connects its left neighbour to the cells above, across two creases that attract
    // the border. Dots are holes. Cell (2, 3) is an ear of the same border and does move.
    const char* const rows[] = {".111", "0011", ".0.1", "0001", "..11"};
    const auto side = [&](int x, int y, bool) {
        return rows[y][x] == '.' ? 2u : uint32_t(rows[y][x] - '0');
    };
    build(4, 5, true, side, [](int x, int y) { return float(-(x < 1) - std::max(0, y - 2)); });
    EXPECT_EQ(sides(), "111111000011110011000000111111");
    smooth(2); // a high limit, because the charts are projections of slopes
    EXPECT_EQ(sides(), "111111000011110011000011111111");
}

TEST_F(BorderSmoothing, AllMovesAreUndoneIfAChartBecomesIllegal) {
    build_flat(5, 3, true, [](int x, int y, bool) { return x < 2 || (x < 4 && y == 1) ? 0 : 1; });
    for (uint32_t t :
         set->charts[1].faces) // move one corner of chart 1 so that the outline crosses itself
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c)
            if (surface.vertex[c] == 5 && set->node[c] == c)
                set->uv[c].y += 100;
    set->refresh(set->charts[1]);
    const ChartSet before = *set;
    smooth();
    EXPECT_EQ(set->chart, before.chart);
    EXPECT_EQ(set->glued, before.glued);
    EXPECT_EQ(set->node, before.node);
    EXPECT_TRUE(set->uv == before.uv);
    for (size_t i = 0; i < 2; ++i) {
        std::vector<uint32_t> now = set->charts[i].faces;
        std::sort(now.begin(), now.end());
        EXPECT_EQ(now, before.charts[i].faces);
        EXPECT_EQ(set->charts[i].border_length, before.charts[i].border_length);
    }
}

TEST_F(BorderSmoothing, ProgressCallbackStopsSmoothing) {
    build_flat(4, 3, true, [](int x, int, bool) { return x < 2 ? 0 : 1; });
    Flattener flattener(*set, FlattenOptions{});
    Options options;
    options.progress = [](float, void*) { return 1; };
    ProgressMeter progress(options);
    EXPECT_FALSE(BorderSmoother(flattener, atoms, hardness).run(nullptr, progress));
}

} // namespace
