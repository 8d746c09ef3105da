#include "measure/charts.h"
#include "tests/measure/layouts.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace measure;

TEST(Charts, TrianglesOfAQuadAreConnectedAcrossTheDiagonal) {
    const ChartTable charts = find_charts(one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1)));
    EXPECT_EQ(charts.chart_count, 1u);
    EXPECT_EQ(charts.outline.size(), 4u);
}

TEST(Charts, CubeNetIsOneChartWithSevenSeams) {
    const ChartTable charts = find_charts(cube_net());
    EXPECT_EQ(charts.chart_count, 1u);
    EXPECT_EQ(charts.seam_edges, 7u);
    EXPECT_DOUBLE_EQ(charts.seam_length, 7.0);
    EXPECT_EQ(charts.outline.size(), 14u);
}

TEST(Charts, FacesWithSeparateUvsAreSeparateCharts) {
    const ChartTable charts = find_charts(strip(3, 0.125f));
    EXPECT_EQ(charts.chart_count, 3u);
    EXPECT_EQ(charts.triangle_chart, (std::vector<uint32_t>{0, 0, 1, 1, 2, 2}));
    EXPECT_EQ(charts.seam_edges, 2u);
}

TEST(Charts, UvsAreComparedByValueNotByIndex) {
    EXPECT_EQ(find_charts(strip(4, 0.0f)).chart_count, 1u); // no two faces share UV indices
}

TEST(Charts, UvsAreComparedByIndexWhereACutIsToCountBeforeItsSidesAreApart) {
    Layout layout = strip(4, 0.0f);
    EXPECT_EQ(find_charts(layout, SameUv::entry).chart_count, 4u);
    EXPECT_EQ(find_charts(layout, SameUv::entry).seam_edges, 3u);
}

TEST(Charts, VerticesAtTheSamePlaceDoNotDivideAChartEvenByIndex) {
    Layout layout;
    add_polygon(layout, rectangle(0, 0, 1, 1), rectangle(0, 0, 0.5f, 0.5f));
    add_polygon(layout, rectangle(1, 0, 2, 1), rectangle(0.5f, 0, 1, 0.5f));
    EXPECT_EQ(find_charts(layout, SameUv::entry).chart_count, 1u);
}

TEST(Charts, EdgeWithEqualUvsAtOnlyOneEndIsASeam) {
    Layout layout = strip(2, 0.0f);
    layout.uvs[2 * 4 + 1] = -0.01f; // lower left corner of the second quad
    EXPECT_EQ(find_charts(layout).chart_count, 2u);
    EXPECT_EQ(find_charts(layout).seam_edges, 1u);
}

TEST(Charts, MinusZeroEqualsZero) {
    Layout layout = strip(2, 0.0f);
    layout.uvs[2 * 4 + 1] = -0.0f;
    EXPECT_EQ(find_charts(layout).chart_count, 1u);
}

TEST(Charts, FlippedNeighbourBelongsToTheChartAndTheFoldIsOutline) {
    Layout layout;
    layout.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    add_face(layout, {0, 1, 2}, {{0, 0}, {1, 0}, {1, 1}});
    add_face(layout, {0, 2, 3}, {{0, 0}, {1, 1}, {0.5f, 0}});
    const ChartTable charts = find_charts(layout);
    EXPECT_EQ(charts.chart_count, 1u);
    EXPECT_EQ(charts.outline.size(), 6u);
}

TEST(Charts, EdgeOfThreeTrianglesIsASeamIfOneHasDifferentUvs) {
    Layout layout;
    layout.positions = {0, 0, 0, 0, 0, 2, 1, 0, 0, -1, 0, 0, 0, 1, 0};
    add_face(layout, {0, 1, 2}, {{0, 0}, {0.5f, 0}, {0.2f, 0.2f}});
    add_face(layout, {1, 0, 3}, {{0.5f, 0}, {0, 0}, {0.2f, -0.2f}});
    add_face(layout, {0, 1, 4}, {{0.6f, 0}, {0.9f, 0}, {0.6f, 0.2f}});
    const ChartTable charts = find_charts(layout);
    EXPECT_EQ(charts.chart_count, 2u);
    EXPECT_DOUBLE_EQ(charts.seam_length, 2.0);
}

TEST(Charts, PolygonThatRunsBackAlongItselfMakesNoSeam) {
    Layout layout = strip(2, 0.0f);
    // Hangs on the side between the quads; the last corner but one is a place of the first quad.
    add_face(layout, {2, 3, 1, 3},
             {{0.0625f, 0}, {0.0625f, 0.0625f}, {0.0625f, 0.03f}, {0.0625f, 0.0625f}});
    add_face(layout, {4, 5, 5}, {{0.5f, 0}, {0.5f, 0.5f}, {0.5f, 0.5f}});
    EXPECT_EQ(find_charts(layout).seam_edges, 0u);
    layout.uvs[2 * 4 + 1] = -0.01f; // lower left corner of the second quad
    EXPECT_EQ(find_charts(layout).seam_edges, 1u);
}

TEST(Charts, PolygonThatRunsBackAlongABridgeToItsHoleMakesSeamsLikeAnyOther) {
    Layout layout = strip(1, 0.0f);
    layout.positions.insert(layout.positions.end(), {0.2f, 0.5f, 0, 0.4f, 0.5f, 0});
    // From the quad's upper side around it and back along the edge from vertex 0 to vertex 4.
    layout.positions.insert(layout.positions.end(), {-1, 0, 0, -1, 1, 0});
    add_face(layout, {0, 1, 7, 6, 0, 4},
             {{0.5f, 0}, {0.5f, 1}, {0.1f, 1}, {0.1f, 0}, {0.5f, 0}, {0.3f, 0.5f}});
    EXPECT_EQ(find_charts(layout).seam_edges, 1u); // that of vertices 0 and 1
}

TEST(Charts, MeshBordersAreNotSeams) {
    const ChartTable charts = find_charts(one_quad(rectangle(0, 0, 1, 1), rectangle(0, 0, 1, 1)));
    EXPECT_EQ(charts.seam_edges, 0u);
    EXPECT_EQ(charts.seam_length, 0.0);
}

TEST(Charts, TrianglesWithoutUvsBelongToNoChart) {
    Layout layout = strip(2, 0.0f);
    layout.corner_uv[0] = k_none;
    layout.uvs[2 * 5] = NAN;
    const ChartTable charts = find_charts(layout);
    EXPECT_EQ(charts.triangle_chart, (std::vector<uint32_t>{k_none, k_none, k_none, 0}));
}

TEST(Charts, EmptyLayoutHasNoCharts) {
    const ChartTable charts = find_charts(Layout());
    EXPECT_EQ(charts.chart_count, 0u);
    EXPECT_TRUE(charts.outline.empty());
}

TEST(Charts, RepeatedVertexMakesNoEdge) {
    Layout layout;
    layout.positions = {0, 0, 0, 1, 0, 0};
    add_face(layout, {0, 1, 1}, {{0, 0}, {1, 0}, {0, 1}});
    EXPECT_EQ(find_charts(layout).chart_count, 1u);
}

TEST(Charts, EdgesAreMatchedByPositionNotByVertex) {
    Layout apart, together;
    for (const float left : {0.0f, 1.0f}) { // each end of the common edge has two vertices
        add_polygon(apart, rectangle(left, 0, left + 1, 1),
                    rectangle(left / 2, 0, left / 2 + 0.25f, 1));
        add_polygon(together, rectangle(left, 0, left + 1, 1),
                    rectangle(left / 4, 0, left / 4 + 0.25f, 1));
    }
    EXPECT_EQ(find_charts(apart).chart_count, 2u);
    EXPECT_DOUBLE_EQ(find_charts(apart).seam_length, 1.0);
    EXPECT_EQ(find_charts(together).chart_count, 1u);
    EXPECT_EQ(find_charts(together).seam_edges, 0u);
}

TEST(Charts, ZeroLengthEdgeConnectsTriangles) {
    Layout layout; // vertices 1 and 2 have the same position
    layout.positions = {0, 0, 0, 1, 0, 0, 1, 0, 0, 1, 1, 0};
    add_face(layout, {0, 1, 2}, {{0, 0}, {0.5f, 0}, {0.5f, 0.1f}});
    add_face(layout, {1, 3, 2}, {{0.5f, 0}, {1, 0.5f}, {0.5f, 0.1f}});
    EXPECT_EQ(find_charts(layout).chart_count, 1u);
}

TEST(Charts, PolygonThatVisitsAVertexTwiceIsOneChart) {
    Layout layout; // the fan of 0 1 2 0 3 4 from its first corner has the diagonal from 0 to 0
    layout.positions = {0, 0, 0, 1, 0, 0, 1, 1, 0, -1, 1, 0, -1, 0, 0};
    add_face(layout, {0, 1, 2, 0, 3, 4}, {{0.5f, 0}, {1, 0}, {1, 1}, {0.5f, 0.1f}, {0, 1}, {0, 0}});
    EXPECT_EQ(find_charts(layout).chart_count, 1u);
}
