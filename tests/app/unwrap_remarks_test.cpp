#include "app/unwrap_remarks.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

TEST(UnwrapRemarks, FlagsOutOfRangeAreWarnedAboutUnderBothNames) {
    EXPECT_EQ(Words{"-padding 99 counts as 32"}, app::warnings_about_flags({"-pad", "99"}));
    EXPECT_EQ((Words{"-stretch 1.5 counts as 1.0", "-width 4 counts as 8"}),
              app::warnings_about_flags({"-width", "4", "-stretch", "1.5"}));
}

TEST(UnwrapRemarks, FlagsWithoutEffectAreWarnedAbout) {
    EXPECT_EQ(Words{"-charts is stored, but has no effect"},
              app::warnings_about_flags({"-cr", "5"}));
}

TEST(UnwrapRemarks, GoodFlagsCauseNoWarning) {
    EXPECT_TRUE(app::warnings_about_flags({}).empty());
    EXPECT_TRUE(
        app::warnings_about_flags({"-mc", "map2", "-st", "0.2", "-h", "64", "-ks", "1"}).empty());
}

TEST(UnwrapRemarks, FailureOfWhichNothingWasToldHasAReason) {
    EXPECT_EQ("the mesh could not be unwrapped", app::reason_of_failure(""));
    EXPECT_EQ("no room", app::reason_of_failure("no room"));
}

} // namespace
