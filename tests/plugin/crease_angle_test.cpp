#include "plugin/crease_angle.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

/// Distance in units in the last place.
int64_t steps_between(double a, double b) {
    int64_t bits_a, bits_b;
    std::memcpy(&bits_a, &a, sizeof(a));
    std::memcpy(&bits_b, &b, sizeof(b));
    return std::abs(bits_a - bits_b);
}

TEST(PortableAtan2, AgreesWithTheStandardLibraryToTwoUlps) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> in(-1.0, 1.0);
    for (int i = 0; i < 300000; ++i) {
        const double scale = std::ldexp(1.0, static_cast<int>(random() % 60) - 30);
        const double y = std::fabs(in(random)), x = in(random)*scale;
        ASSERT_LE(steps_between(portable_atan2(y, x), std::atan2(y, x)), 2) << y << " " << x;
    }
}

TEST(PortableAtan2, IsExactOnTheAxes) {
    EXPECT_EQ(portable_atan2(0.0, 1.0), 0.0);
    EXPECT_EQ(portable_atan2(1.0, 0.0), std::atan2(1.0, 0.0));
    EXPECT_EQ(portable_atan2(0.0, -1.0), std::atan2(0.0, -1.0));
    EXPECT_EQ(portable_atan2(1.0, 1.0), std::atan2(1.0, 1.0));
    EXPECT_EQ(portable_atan2(1.0, -1.0), std::atan2(1.0, -1.0));
}

TEST(PortableAtan2, DistinguishesPositiveAndNegativeZero) {
    EXPECT_EQ(portable_atan2(0.0, 0.0), std::atan2(0.0, 0.0));
    EXPECT_EQ(portable_atan2(0.0, -0.0), std::atan2(0.0, -0.0));
}

TEST(PortableAtan2, KeepsSmallAngles) {
    EXPECT_EQ(portable_atan2(1e-200, 1.0), 1e-200);
    EXPECT_EQ(portable_atan2(3e-9, 1.0), std::atan2(3e-9, 1.0));
}

TEST(PortableAtan2, IsNanForNanAndForHugeArguments) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(portable_atan2(nan, 1.0)));
    EXPECT_TRUE(std::isnan(portable_atan2(1.0, nan)));
    EXPECT_TRUE(std::isnan(portable_atan2(inf, inf)));
    EXPECT_TRUE(std::isnan(portable_atan2(1.0, 1e301)));
    EXPECT_EQ(portable_atan2(0.0, 1e300), 0.0);
}

// Reference values, to be bit-identical on every compiler and system.
TEST(PortableAtan2, HasTheseExactBits) {
    EXPECT_EQ(portable_atan2(0.3, 0.7), 0x1.9e9bf3d20dc72p-2);
    EXPECT_EQ(portable_atan2(0.9, -0.2), 0x1.ca1a656770bd0p+0);
}

TEST(CreaseDegrees, RightAngleIs90Exactly) {
    EXPECT_EQ(crease_degrees(MVector(0, 0, 1), MVector(1, 0, 0)), 90.0f);
    EXPECT_EQ(crease_degrees(MVector(1, 0, 0), MVector(0, 0, 1)), 90.0f);
    EXPECT_EQ(crease_degrees(MVector(0, -1, 0), MVector(0, 0, -1)), 90.0f);
}

TEST(CreaseDegrees, FlatIs0AndFoldedIs180Exactly) {
    EXPECT_EQ(crease_degrees(MVector(0, 0, 1), MVector(0, 0, 1)), 0.0f);
    EXPECT_EQ(crease_degrees(MVector(0, 0, 1), MVector(0, 0, -1)), 180.0f);
}

TEST(CreaseDegrees, DoesNotDependOnTheOrderOfTheFaces) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> in(-1.0, 1.0);
    for (int i = 0; i < 10000; ++i) {
        const MVector a(in(random), in(random), in(random));
        const MVector b(in(random), in(random), in(random));
        ASSERT_EQ(crease_degrees(a, b), crease_degrees(b, a));
    }
}

TEST(CreaseDegrees, MatchesTheStandardLibraryInSinglePrecision) {
    std::mt19937 random(6);
    std::uniform_real_distribution<double> in(-1.0, 1.0);
    for (int i = 0; i < 100000; ++i) {
        const MVector a = MVector(in(random), in(random), in(random)).normal();
        const MVector b = MVector(in(random), in(random), in(random)).normal();
        const MVector c = a ^ b;
        const float theta = static_cast<float>(std::atan2(std::sqrt(c * c), a * b));
        const float scaled = theta * 180.0f;
        ASSERT_EQ(crease_degrees(a, b),
                  static_cast<float>(static_cast<double>(scaled) * 0.3183098861837907));
    }
}

} // namespace
