// Cutting charts in two and undoing it.
#include "atlas/charts/cut.h"
#include "tests/atlas/grid_charts.h"

#include <algorithm>

namespace {

using namespace tessora::atlas;

class ChartCutterTest : public atlas_test::GridCharts {
protected:
    /// Chart 0 is `columns` wide and three high.
    void prepare(bool quads, int columns = 6) {
        build_flat(8, 3, quads, [=](int x, int, bool) { return x < columns ? 0 : 1; });
        flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
        smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
        cutter = std::make_unique<ChartCutter>(*flattener, atoms, *smoother);
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

TEST_F(ChartCutterTest, ChartsOfOnePolygonAreNotCut) {
    build_flat(2, 1, true, [](int x, int, bool) { return x; });
    flattener = std::make_unique<Flattener>(*set, FlattenOptions{});
    smoother = std::make_unique<BorderSmoother>(*flattener, atoms, hardness);
    cutter = std::make_unique<ChartCutter>(*flattener, atoms, *smoother);
    const ChartSet before = *set;
    EXPECT_FALSE(cutter->cut(0));
    EXPECT_EQ(set->chart, before.chart);
    EXPECT_EQ(set->glued, before.glued);
}

} // namespace
