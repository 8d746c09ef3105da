// Cutting charts in two and undoing it.
#include "atlas/charts/cut.h"
#include "tests/atlas/grid_charts.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using namespace tessora::atlas;

class ChartCutterTest : public atlas_test::GridCharts {
protected:
    /// Chart 0 is `columns` wide and three high, chart 1 is the rest of `all` columns.
    void prepare(bool quads, int columns = 6, int all = 8) {
        build_flat(all, 3, quads, [=](int x, int, bool) { return x < columns ? 0 : 1; });
        flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
        smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
        cutter = std::make_unique<ChartCutter>(*flattener, atoms, planes, *smoother);
    }
    /// Makes planes of columns; grids are numbered row by row, eight columns each.
    void join_planes(const std::function<uint32_t(int column)>& plane) {
        planes.count = 8;
        for (uint32_t t = 0; t < surface.face_count; ++t)
            planes.of_face[t] = plane(int(t / 2 % 8));
    }
    std::unique_ptr<Flattener> flattener;
    std::unique_ptr<BorderSmoother> smoother;
    std::unique_ptr<ChartCutter> cutter;
};

TEST_F(ChartCutterTest, CutsAcrossTheLongAxis) {
    prepare(true);
    ASSERT_TRUE(cutter->cut(0));
    EXPECT_EQ(set->charts.size(), 3u);
    const std::string now = sides();
    EXPECT_TRUE(now == "000000222222111100000022222211110000002222221111" ||
                now == "222222000000111122222200000011112222220000001111")
        << now;
    expect_undistorted();
    EXPECT_EQ(set->charts[0].border.size() + set->charts[2].border.size(), 24u);
}

TEST_F(ChartCutterTest, CutThroughTrianglesIsSmoothedToAStraightLine) {
    prepare(false, 5); // the middle of five columns runs through cells
    ASSERT_TRUE(cutter->cut(0));
    const double borders = set->charts[0].border_length + set->charts[2].border_length;
    EXPECT_NEAR(borders / set->surface.edge_length(0), 10 + 12, 1e-9);
    expect_undistorted();
}

TEST_F(ChartCutterTest, CutsBetweenPlanes) {
    prepare(true);
    join_planes([](int column) { return column < 2 ? 0u : 1u; });
    ASSERT_TRUE(cutter->cut(0)); // the line lies behind the third column
    const std::string now = sides();
    EXPECT_TRUE(now == "000022222222111100002222222211110000222222221111" ||
                now == "222200000000111122220000000011112222000000001111")
        << now;
    EXPECT_EQ(cutter->cut_length(4), cutter->cut_length(1));
}

TEST_F(ChartCutterTest, CutsThroughAPlaneThatIsAChartAndCountsThatManifold) {
    prepare(true);
    join_planes([](int) { return 0u; });
    EXPECT_FALSE(cutter->cut(0, cutter->middle_line(0), ChartCutter::Between::planes));
    ASSERT_TRUE(cutter->cut(0));
    EXPECT_NEAR(cutter->cut_length(1) / set->surface.edge_length(0), 3, 1e-9);
    EXPECT_NEAR(cutter->cut_length(4), 4 * cutter->cut_length(1), 1e-9);
}

TEST_F(ChartCutterTest, UndoRestoresEverythingInReverseOrder) {
    prepare(false);
    const ChartSet before = *set;
    ASSERT_TRUE(cutter->cut(0));
    ASSERT_TRUE(cutter->cut(2));
    ASSERT_TRUE(cutter->cut(0));
    EXPECT_EQ(set->charts.size(), 5u);
    for (int i = 0; i < 3; ++i)
        cutter->undo();
    EXPECT_EQ(set->chart, before.chart);
    EXPECT_EQ(set->glued, before.glued);
    EXPECT_EQ(set->node, before.node);
    for (uint32_t n : before.node)
        EXPECT_TRUE(set->uv[n] == before.uv[n]);
    ASSERT_EQ(set->charts.size(), before.charts.size());
    for (size_t i = 0; i < before.charts.size(); ++i) {
        EXPECT_EQ(set->charts[i].faces, before.charts[i].faces);
        EXPECT_EQ(set->charts[i].border, before.charts[i].border);
    }
}

/// Cuts for layouts of these coverages, the last one for all that follow. Returns how many were
/// asked for.
size_t cut_for(ChartCutter& cutter, const std::vector<double>& coverages, uint32_t max_charts = 0,
               int effort = k_usual_effort) {
    size_t asked = 0;
    CutOptions options;
    options.max_charts = max_charts;
    options.always = true;
    options.effort = effort;
    cut_for_packing(cutter, options,
                    [&] { return coverages[std::min(asked++, coverages.size() - 1)]; });
    return asked;
}

TEST_F(ChartCutterTest, ACutIsKeptIfItRaisesCoverageByFivePercent) {
    prepare(true);
    cut_for(*cutter, {1, 1.0501});
    EXPECT_EQ(set->charts.size(), 3u);
}

TEST_F(ChartCutterTest, ACutThroughAPlaneMustRaiseCoverageByFourTimesAsMuch) {
    prepare(true);
    join_planes([](int) { return 0u; });
    cut_for(*cutter, {1, 1.1999});
    EXPECT_EQ(set->charts.size(), 2u);
    cut_for(*cutter, {1, 1.2001});
    EXPECT_EQ(set->charts.size(), 3u);
}

TEST_F(ChartCutterTest, HalvesOfAPlaneMustGainMoreThanHalvesBetweenPlanes) {
    const auto halved = [&](const std::function<uint32_t(int)>& plane) {
        prepare(true);
        join_planes(plane);
        size_t asked = 0;
        // The first three layouts are of the charts as they are and of cuts through the middle.
        cut_for_packing(*cutter, {}, [&] { return asked++ < 3 ? 0.6 : 0.66; });
        return set->charts.size() > 2;
    };
    EXPECT_TRUE(halved([](int column) { return uint32_t(column); }));
    EXPECT_FALSE(halved([](int) { return 0u; }));
}

TEST_F(ChartCutterTest, CutsThatRaiseCoverageByLessThanFivePercentEachAreUndone) {
    prepare(true);
    cut_for(*cutter, {1, 1.0499, 1.1024, 1.1575, 1.0499});
    EXPECT_EQ(set->charts.size(), 2u);
}

TEST_F(ChartCutterTest, TheMoreReluctantlyCutsAreMadeTheMoreTheyMustBeWorth) {
    prepare(true);
    const auto cut = [&](double reluctance) {
        std::vector<double> coverages = {0.5, 0.58, 0.5};
        size_t asked = 0;
        CutOptions options;
        options.reluctance = reluctance;
        cut_for_packing(*cutter, options,
                        [&] { return coverages[std::min(asked++, coverages.size() - 1)]; });
    };
    cut(1);
    EXPECT_EQ(set->charts.size(), 2u);
    cut(0);
    EXPECT_EQ(set->charts.size(), 3u);
}

TEST_F(ChartCutterTest, TheMoreReluctantlyCutsAreMadeTheSoonerTheTextureCountsAsFilled) {
    prepare(true);
    const auto layouts = [&](double reluctance) {
        size_t asked = 0;
        CutOptions options;
        options.reluctance = reluctance;
        cut_for_packing(*cutter, options, [&] { return ++asked, 0.6; });
        return asked;
    };
    EXPECT_EQ(layouts(1), 1u);
    EXPECT_GT(layouts(0), 1u);
}

TEST_F(ChartCutterTest, OfAllHalvesThoseThatGainMostAreKept) {
    const size_t before = 3; // layouts of the charts as they are, and of cuts through the middle
    const double borders[] = {12 + 12, 16 + 16, 6 + 8, 8 + 8};
    for (size_t best = 0; best < 4; ++best) {
        prepare(true);
        size_t asked = 0;
        cut_for_packing(*cutter, {}, [&] {
            const size_t i = asked++;
            const bool halved = i >= before && i < before + 4;
            return i == before + best ? 0.583 : halved ? 0.55 : 0.5;
        });
        ASSERT_EQ(set->charts.size(), 3u);
        const Chart &first = set->charts[best / 2], &second = set->charts[2];
        EXPECT_NEAR((first.border_length + second.border_length) / set->surface.edge_length(0),
                    borders[best], 1e-6)
            << best;
    }
}

TEST_F(ChartCutterTest, CuttingNamesTheLayoutOfTheChartsThatAreLeft) {
    const std::vector<std::vector<double>> sequences = {
        {1},                                 // nothing pays
        {1, 1.0501},                         // one cut
        {1, 1, 1.1026},                      // two that pay together
        {0.5, 0.6, 0.5},                     // then a group that does not pay
        {0.5, 0.5, 0.51, 0.51, 0.54, 0.51}}; // halves
    for (const std::vector<double>& coverages : sequences)
        for (const int effort : {k_usual_effort, k_max_effort}) {
            prepare(true);
            std::vector<std::vector<uint32_t>> seen;
            CutOptions options;
            options.always = true;
            options.effort = effort;
            const uint32_t left = cut_for_packing(*cutter, options, [&] {
                seen.push_back(set->chart);
                return coverages[std::min(seen.size(), coverages.size()) - 1];
            });
            ASSERT_LT(left, seen.size());
            EXPECT_EQ(seen[left], set->chart) << coverages.size() << " " << effort;
        }
}

TEST_F(ChartCutterTest, CuttingNamesNoLayoutIfNoneWasMade) {
    build_flat(4, 4, true, [](int, int, bool) { return 0; });
    flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
    smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
    cutter = std::make_unique<ChartCutter>(*flattener, atoms, planes, *smoother);
    EXPECT_EQ(cut_for_packing(*cutter, {0, false}, [] { return 0.5; }), k_none);
}

TEST_F(ChartCutterTest, CutsThatOnlyPayTogetherAreKept) {
    prepare(true);
    cut_for(*cutter, {1, 1, 1.1026});
    EXPECT_EQ(set->charts.size(), 4u);
}

TEST_F(ChartCutterTest, NoMoreThanThreeCutsAreTriedTogether) {
    prepare(true, 24, 40);
    cut_for(*cutter, {1, 1, 1, 1, 1.22});
    EXPECT_EQ(set->charts.size(), 2u);
}

TEST_F(ChartCutterTest, CuttingStopsAtTheChartLimit) {
    prepare(true, 24, 40);
    cut_for(*cutter, {1, 2, 4, 8, 16}, 4);
    EXPECT_EQ(set->charts.size(), 4u);
}

TEST_F(ChartCutterTest, CuttingEndsAfterAGroupOfCutsThatDoesNotPay) {
    prepare(true, 64, 128);
    for (const uint32_t chart : {0, 1, 0, 1, 2, 3})
        ASSERT_TRUE(cutter->cut(chart));
    cutter->accept();
    EXPECT_EQ(cut_for(*cutter, {1}), 1u + 3);
    EXPECT_EQ(set->charts.size(), 8u);
}

TEST_F(ChartCutterTest, WithMoreEffortCuttingEndsAfterASecondGroupThatDoesNotPay) {
    prepare(true, 64, 128);
    for (const uint32_t chart : {0, 1, 0, 1, 2, 3})
        ASSERT_TRUE(cutter->cut(chart));
    cutter->accept();
    EXPECT_EQ(cut_for(*cutter, {1}, 0, k_usual_effort + 1), 1u + 3 + 3);
    EXPECT_EQ(set->charts.size(), 8u);
}

TEST_F(ChartCutterTest, HalvesOfFewChartsMustGainMoreThanThoseOfMany) {
    for (const uint32_t charts : {2, 8}) {
        prepare(true, 64, 128);
        for (const uint32_t chart : {1, 2, 2, 3, 2, 3})
            EXPECT_TRUE(set->charts.size() == charts || cutter->cut(chart));
        cutter->accept();
        const double gained = 0.024; // less than five percent
        cut_for_packing(*cutter, {},
                        [&] { return set->charts.size() == charts ? 0.5 : 0.5 + gained; });
        EXPECT_EQ(set->charts.size() > charts, charts == 8) << charts;
    }
}

TEST_F(ChartCutterTest, UpToTwelveChartsAreHalved) {
    const auto layouts_with = [&](uint32_t charts) {
        prepare(true, 64, 128);
        for (const uint32_t chart : {1, 2, 2, 3, 2, 3, 4, 5, 2, 3, 4})
            EXPECT_TRUE(set->charts.size() == charts || cutter->cut(chart));
        cutter->accept();
        return cut_for(*cutter, {0.6});
    };
    const size_t not_halved = layouts_with(13);
    EXPECT_EQ(not_halved, 1u + 3) << "of the charts as they are, and of cuts through the middle";
    EXPECT_EQ(layouts_with(12), not_halved + 4) << "two charts, each along and across";
}

TEST_F(ChartCutterTest, NoMoreThanTwentyFourCutsAreMade) {
    prepare(true, 64, 128); // room for 30
    std::vector<double> coverages = {1};
    while (coverages.size() < 40)
        coverages.push_back(2 * coverages.back());
    cut_for(*cutter, coverages);
    EXPECT_EQ(set->charts.size(), 2u + 24);
}

/// A chart of columns x rows squares, and one square apart from it.
class ChartWasteTest : public ChartCutterTest {
protected:
    size_t layouts_of(int columns, int rows) {
        build_flat(columns + 2, rows, true, [=](int x, int y, bool) {
            return x < columns ? 0u : x > columns && y == 0 ? 1u : 2u;
        });
        flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
        smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
        cutter = std::make_unique<ChartCutter>(*flattener, atoms, planes, *smoother);
        return cut_for(*cutter, {1});
    }
};

TEST_F(ChartWasteTest, AChartThatWastesFivePercentIsCut) {
    EXPECT_GT(layouts_of(20, 19), 0u); // 20 of 381 squares
}

TEST_F(ChartWasteTest, AChartThatWastesLessThanFivePercentIsNotCut) {
    EXPECT_EQ(layouts_of(21, 20), 0u); // 21 of 421 squares
}

/// An L with arms of 2 x 12 and 2 x 6 squares, and one square apart from it.
class ChartLineTest : public ChartCutterTest {
protected:
    void SetUp() override {
        prepare([](int x, int y) { return y < 2 || x < 2 ? 0u : x == 11 && y == 7 ? 1u : 2u; });
    }
    void prepare(uint32_t (*chart)(int x, int y)) {
        build_flat(12, 8, true, [=](int x, int y, bool) { return chart(x, y); });
        flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
        smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
        cutter = std::make_unique<ChartCutter>(*flattener, atoms, planes, *smoother);
    }
    /// The charts and the layouts asked for, for layouts of these coverages.
    std::pair<size_t, size_t> cut_unasked(const std::vector<double>& coverages,
                                          uint32_t max_charts = 0) {
        size_t asked = 0;
        cut_for_packing(*cutter, {max_charts, false},
                        [&] { return coverages[std::min(asked++, coverages.size() - 1)]; });
        return {set->charts.size(), asked};
    }
    using Seen = std::pair<size_t, size_t>;
};

TEST_F(ChartLineTest, AnLIsCutIntoItsArms) {
    EXPECT_EQ(cut_unasked({0.76, 0.79}), Seen(3, 2));
    const double areas[] = {set->charts[0].stretch.area, set->charts[2].stretch.area};
    const double less = std::min(areas[0], areas[1]) / (areas[0] + areas[1]) * 36;
    EXPECT_TRUE(std::abs(less - 12) < 1e-6 || std::abs(less - 16) < 1e-6) << less;
    expect_undistorted();
}

TEST_F(ChartLineTest, ACutAlongALineThatLowersCoverageIsUndone) {
    EXPECT_EQ(cut_unasked({0.79, 0.789}), Seen(2, 2));
}

TEST_F(ChartLineTest, ACutAlongALineMustGainThePriceOfAChart) {
    const double price = price_of_charts(2, 1, k_usual_effort, 0);
    EXPECT_EQ(cut_unasked({0.781, 0.78 + price}), Seen(2, 2));
}

TEST_F(ChartLineTest, ThePriceOfAChartIsAShareOfThatOfTwiceAsMany) {
    const double of_doubling = price_of_charts(8, 8, k_usual_effort, 0);
    EXPECT_DOUBLE_EQ(price_of_charts(8, 1, k_usual_effort, 0), of_doubling / 8);
    EXPECT_GT(price_of_charts(8, 8, k_usual_effort, 0.5), of_doubling);
    EXPECT_LT(price_of_charts(8, 8, k_max_effort, 0), of_doubling);
    EXPECT_DOUBLE_EQ(price_of_charts(8, 8, 0, 0), of_doubling);
}

TEST_F(ChartLineTest, TheFirstHalfOfTheCutsIsKeptIfItIsWorthMore) {
    prepare([](int x, int y) { // a U
        return y < 2 || x < 2 || x > 9 ? 0u : x == 6 && y == 7 ? 1u : 2u;
    });
    cut_unasked({0.4, 0.8, 0.79}); // three cuts, the first one
    EXPECT_EQ(set->charts.size(), 3u);
}

TEST_F(ChartLineTest, CutsAlongLinesStopAtTheChartLimit) {
    for (const uint32_t limit : {0, 3, 2}) {
        prepare([](int x, int y) { // a U
            return y < 2 || x < 2 || x > 9 ? 0u : x == 6 && y == 7 ? 1u : 2u;
        });
        cut_unasked({0.4, 0.79, 0.5}, limit); // the third: of the first half of the cuts
        EXPECT_EQ(set->charts.size(), limit == 0 ? 5u : limit);
    }
}

TEST_F(ChartLineTest, ALineMustSaveMoreOfFewChartsThanOfMany) {
    for (const uint32_t charts : {2, 5}) {
        prepare([](int x, int y) { // a rectangle with a nose, and a strip
            return (x < 10 && y < 6) || (x == 10 && y < 3) ? 0u : y == 7 ? 1u : 2u;
        });
        for (const uint32_t chart : {1, 1, 2})
            EXPECT_TRUE(set->charts.size() == charts || cutter->cut(chart));
        cutter->accept();
        EXPECT_EQ(cut_unasked({0.781, 0.795}).first, charts == 2 ? 2u : 6u);
    }
}

TEST_F(ChartLineTest, ChartsThatFillTheTextureWellAreLeftWhole) {
    EXPECT_EQ(cut_unasked({0.801, 0.9}), Seen(2, 1));
}

TEST_F(ChartLineTest, ChartsThatFillTheTextureLessWellAreCut) {
    EXPECT_EQ(cut_unasked({0.799, 0.9}), Seen(3, 2));
}

TEST_F(ChartLineTest, NoCutIsKeptWhenTheCallerStops) {
    EXPECT_EQ(cut_unasked({0.6, 0}), Seen(2, 2));
}

TEST_F(ChartCutterTest, UnaskedOnlyChartsThatFillLessThan78PercentAreCutThroughTheMiddle) {
    for (const double coverage : {0.781, 0.779}) {
        prepare(true); // rectangles: no line pays
        size_t asked = 0;
        cut_for_packing(*cutter, {0, false}, [&] { return asked++ == 0 ? coverage : 0.9; });
        EXPECT_EQ(set->charts.size(), coverage > 0.78 ? 2u : 3u);
    }
}

TEST_F(ChartCutterTest, ChartsOfOnePolygonAreNotCut) {
    build_flat(2, 1, true, [](int x, int, bool) { return x; });
    flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
    smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
    cutter = std::make_unique<ChartCutter>(*flattener, atoms, planes, *smoother);
    const ChartSet before = *set;
    EXPECT_FALSE(cutter->cut(0));
    EXPECT_EQ(set->chart, before.chart);
    EXPECT_EQ(set->glued, before.glued);
}

} // namespace
