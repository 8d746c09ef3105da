#include "polygon/orientation.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

TEST(Orientation, IsTheSignOfTheTurn) {
    EXPECT_EQ(tessora::polygon::orientation({0, 0}, {1, 0}, {0, 1}), 1);
    EXPECT_EQ(tessora::polygon::orientation({0, 0}, {0, 1}, {1, 0}), -1);
    EXPECT_EQ(tessora::polygon::orientation({0, 0}, {1, 1}, {2, 2}), 0);
}

TEST(Orientation, IsExactWhereRoundingGivesWrongSigns) {
    // Points on or near a line, at distances of one unit in the last place.
    const double step = std::ldexp(1.0, -53);
    for (int i = 0; i < 64; ++i)
        for (int j = 0; j < 64; ++j) {
            // Turns left if the point is below the line through the other two, that is, if x is
            // larger.
            const tessora::polygon::Point2 p{0.5 + i * step, 0.5 + j * step};
            const int expected = i == j ? 0 : (i > j ? 1 : -1);
            EXPECT_EQ(tessora::polygon::orientation(p, {24, 24}, {12, 12}), expected)
                << i << ' ' << j;
        }
}

TEST(Orientation, ChangesSignWhenPointsAreSwapped) {
    const tessora::polygon::Point2 a{0.1, 0.3};
    const tessora::polygon::Point2 b{0.2, 0.6000000000000001};
    const tessora::polygon::Point2 c{0.30000000000000004, 0.8999999999999999};
    const int sign = tessora::polygon::orientation(a, b, c);
    EXPECT_EQ(tessora::polygon::orientation(b, c, a), sign);
    EXPECT_EQ(tessora::polygon::orientation(c, a, b), sign);
    EXPECT_EQ(tessora::polygon::orientation(b, a, c), -sign);
}

} // namespace
