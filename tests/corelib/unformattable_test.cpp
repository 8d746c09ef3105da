/// In a program of its own because it does not hold on Windows: there formatting never fails, and
/// characters that cannot be converted are dropped.
#include "corelib/error.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>

namespace {

TEST(LogDeathTest, MessageThatCannotBeFormattedIsABug) {
    const wchar_t outside_the_locale[] = {0x2603, 0};
    EXPECT_EXIT(do_log(LOG_INFO, LOG_TO_STDERR, "%ls", outside_the_locale),
                fixtures::ended_by_abort(),
                literally("do_log() BUG at file \"error\", line ") + fixtures::k_digits + "!");
}

} // namespace
