/// In a program of its own because it is not for Windows: there formatting never fails, characters
/// that cannot be converted are dropped, and there are no POSIX threads.
#include "corelib/error.h"
#include "corelib/file.h"
#include "corelib/memory.h"
#include "tests/corelib/support.h"

#include <csignal>
#include <gtest/gtest.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/resource.h>

namespace {

TEST(LogDeathTest, MessageThatCannotBeFormattedIsABug) {
    const wchar_t outside_the_locale[] = {0x2603, 0};
    EXPECT_EXIT(do_log(LOG_INFO, LOG_TO_STDERR, "%ls", outside_the_locale),
                fixtures::ended_by_abort(),
                literally("do_log() BUG at file \"error\", line ") + fixtures::k_digits + "!");
}

void* log_on_this_stack(void* text) {
    do_log(LOG_CRITICAL, LOG_TO_STDERR, "%s", static_cast<const char*>(text));
    return nullptr;
}

TEST(CoreFree, GivesMemoryBackToTheAllocator) {
    const size_t before = ::mallinfo2().uordblks;
    for (int i = 0; i < 1000; ++i)
        core_free(core_realloc(nullptr, 10000));
    EXPECT_LT(::mallinfo2().uordblks, before + 1000000);
}

TEST(FileClose, SucceedsTheSecondTimeIfTheDiskWasFullTheFirst) {
    const TemporaryFile path;
    file f;
    ASSERT_TRUE(f.open(path.path(), 2));
    ASSERT_TRUE(f.write("x", 1));
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit none = {0, limit.rlim_max};
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
    EXPECT_FALSE(f.close());
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_STREQ(f.error().c_str(), "File too large");
    EXPECT_TRUE(f.close());
    EXPECT_FALSE(f.is_open());
}

TEST(Log, NeedsLessThan64KilobytesOfStack) {
    const std::string text(250000, 'x');
    testing::internal::CaptureStderr();
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 64 * 1024), 0);
    pthread_t thread = {};
    ASSERT_EQ(
        pthread_create(&thread, &attributes, log_on_this_stack, const_cast<char*>(text.c_str())),
        0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "[CRITICAL]: " + std::string(199999, 'x') + "\r\n");
}

} // namespace
