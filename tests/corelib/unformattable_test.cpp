/// Apart from the other tests of the logger, which hold on every system: the formatter of the
/// Windows library writes nothing for what it cannot convert, and never fails.
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
