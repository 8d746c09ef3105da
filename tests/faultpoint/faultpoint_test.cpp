#include "faultpoint/faultpoint.h"

#include <gtest/gtest.h>

namespace {

TEST(FaultPoint, UnarmedPassContinues) {
    EXPECT_EQ(faultpoint::hit("nothing armed"), 0);
    EXPECT_FALSE(faultpoint::is_any_armed());
}

TEST(FaultPoint, FailsTheNthPassOnly) {
    faultpoint::Scope fault("point", 7, 3);
    EXPECT_EQ(faultpoint::hit("point"), 0);
    EXPECT_EQ(faultpoint::hit("point"), 0);
    EXPECT_EQ(faultpoint::hit("point"), 7);
    EXPECT_EQ(faultpoint::hit("point"), 0);
    EXPECT_EQ(faultpoint::passes("point"), 4u);
}

TEST(FaultPoint, ZeroTimesFailsEveryPass) {
    faultpoint::Scope fault("point", 2, 2, 0);
    EXPECT_EQ(faultpoint::hit("point"), 0);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(faultpoint::hit("point"), 2);
}

TEST(FaultPoint, OtherNamesAreUntouched) {
    faultpoint::Scope fault("point", 1);
    EXPECT_EQ(faultpoint::hit("other"), 0);
    EXPECT_EQ(faultpoint::hit("point"), 1);
}

TEST(FaultPoint, ScopeDisarmsWhenItEnds) {
    { faultpoint::Scope fault("point", 1, 1, 0); }
    EXPECT_EQ(faultpoint::hit("point"), 0);
    EXPECT_FALSE(faultpoint::is_any_armed());
}

} // namespace
