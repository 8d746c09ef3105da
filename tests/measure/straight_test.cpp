#include "measure/measure.h"
#include "measure/straight.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

/// A rectangle of two triangles, turned by some degrees, in a texture of 512 x 512 texels.
measure::Layout rectangle(double width, double height, double degrees) {
    measure::Layout layout;
    const double c = std::cos(degrees * 3.14159265358979323846 / 180.0),
                 s = std::sin(degrees * M_PI / 180.0);
    const double corners[4][2] = {{0, 0}, {width, 0}, {width, height}, {0, height}};
    for (const auto& p : corners) {
        const double x = 200 + c * p[0] - s * p[1], y = 200 + s * p[0] + c * p[1];
        layout.positions.insert(layout.positions.end(), {float(p[0]), float(p[1]), 0.0f});
        layout.uvs.insert(layout.uvs.end(), {float(x / 512), float(y / 512)});
    }
    layout.corner_vertex = layout.corner_uv = {0, 1, 2, 3};
    layout.triangle_corners = {0, 1, 2, 0, 2, 3};
    layout.triangle_polygon = {0, 0};
    layout.polygon_count = 1;
    return layout;
}

measure::Straightness straightness(const measure::Layout& layout) {
    const measure::Measures m = measure::measure(layout, {});
    return measure::straightness(layout, {}, m.triangle_chart, m.outline);
}

TEST(Straightness, CountsBorderParallelToTheAxes) {
    const measure::Straightness s = straightness(rectangle(100, 50, 0));
    EXPECT_NEAR(300, s.parallel, 1e-2);
    EXPECT_NEAR(300, s.best, 1e-2);
}

TEST(Straightness, AllowsOneDegree) {
    EXPECT_NEAR(300, straightness(rectangle(100, 50, 0.9)).parallel, 1e-2);
    EXPECT_EQ(0, straightness(rectangle(100, 50, 1.1)).parallel);
}

TEST(Straightness, TellsWhatTurningCouldReach) {
    const measure::Straightness s = straightness(rectangle(100, 50, 30));
    EXPECT_EQ(0, s.parallel);
    EXPECT_NEAR(300, s.best, 1e-2);
}

TEST(Straightness, LeavesOutShortRuns) {
    EXPECT_NEAR(200, straightness(rectangle(100, 11.5, 0)).parallel, 1e-2);
    EXPECT_EQ(0, straightness(rectangle(11, 11, 0)).best);
}

} // namespace
