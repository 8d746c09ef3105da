#include "atlas/geometry/lanes.h"

#include <gtest/gtest.h>
#include <random>

namespace {

using namespace tessora::atlas;

TEST(Lanes, EachGetsTheBitsThatADoubleGets) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> number(-3, 3);
    for (int i = 0; i < 1000; ++i) {
        const double a[2] = {number(random), number(random)};
        const double b[2] = {number(random), number(random)};
        const Lanes x{a[0], a[1]}, y{b[0], b[1]};
        const Lanes quotient = x / y, mixed = 2 * x - y * y, root = sqrt(y * y + 0.5);
        for (int l = 0; l < 2; ++l) {
            EXPECT_EQ(quotient[l], a[l] / b[l]);
            EXPECT_EQ(mixed[l], 2 * a[l] - b[l] * b[l]);
            EXPECT_EQ(root[l], std::sqrt(b[l] * b[l] + 0.5));
        }
    }
}

TEST(Lanes, ChoiceIsMadeForEachByItsOwnSign) {
    const Lanes chosen = where_not_negative(Lanes{-1, 0}, Lanes{1, 2}, Lanes{3, 4});
    EXPECT_EQ(chosen[0], 3);
    EXPECT_EQ(chosen[1], 2);
}

} // namespace
