#include "faultpoint/faultpoint.h"
#include "platform/win32/clock.h"
#include "tests/fixtures/temporary.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

static_assert(sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4, "published sizes");
static_assert(sizeof(LONG) == 4 && sizeof(ULONG) == 4 && sizeof(BOOL) == 4, "published sizes");
static_assert(sizeof(UINT) == 4 && sizeof(FLOAT) == 4 && sizeof(HRESULT) == 4, "published sizes");
static_assert(sizeof(GUID) == 16 && sizeof(SYSTEMTIME) == 16, "published sizes");
static_assert(SUCCEEDED(S_OK) && SUCCEEDED(S_FALSE) && FAILED(E_FAIL), "the high bit is failure");

constexpr const char* k_debugger_file = "OUTPUT_DEBUG_STRING_FILE";

TEST(SystemTime, IsUtc) {
    const std::time_t before = std::time(nullptr);
    SYSTEMTIME now;
    GetSystemTime(&now);
    const std::time_t after = std::time(nullptr);
    std::tm utc = {};
    utc.tm_year = now.wYear - 1900;
    utc.tm_mon = now.wMonth - 1;
    utc.tm_mday = now.wDay;
    utc.tm_hour = now.wHour;
    utc.tm_min = now.wMinute;
    utc.tm_sec = now.wSecond;
    const std::time_t stamp = timegm(&utc);
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);
    EXPECT_EQ(utc.tm_wday, now.wDayOfWeek);
    EXPECT_LT(now.wMilliseconds, 1000);
}

TEST(SystemTime, FollowsAReplacedClockUntilItIsRestored) {
    win32::set_clock([](SYSTEMTIME* time) {
        *time = {};
        time->wYear = 1601;
    });
    SYSTEMTIME now;
    GetSystemTime(&now);
    EXPECT_EQ(now.wYear, 1601);
    win32::set_clock(nullptr);
    GetSystemTime(&now);
    EXPECT_GE(now.wYear, 2026);
}

std::string text_of(const std::string& path) {
    std::string text;
    if (std::FILE* const stream = std::fopen(path.c_str(), "rb")) {
        for (int c = std::getc(stream); c != EOF; c = std::getc(stream))
            text += static_cast<char>(c);
        std::fclose(stream);
    }
    return text;
}

class DebuggerLine : public testing::Test {
protected:
    void SetUp() override {
        close(mkstemp(path_.data()));
        setenv(k_debugger_file, path_.c_str(), 1);
    }
    void TearDown() override {
        unsetenv(k_debugger_file);
        std::remove(path_.c_str());
    }
    std::string path_ = fixtures::temporary_template("tessora_win32_");
};

TEST_F(DebuggerLine, IsAppendedToTheNamedFile) {
    OutputDebugStringA("one\r\n");
    OutputDebugStringA("two\r\n");
    EXPECT_EQ(text_of(path_), "one\r\ntwo\r\n");
}

TEST_F(DebuggerLine, IsDroppedWithoutAFileName) {
    unsetenv(k_debugger_file);
    OutputDebugStringA("one");
    setenv(k_debugger_file, "", 1);
    OutputDebugStringA("two");
    EXPECT_EQ(text_of(path_), "");
}

TEST_F(DebuggerLine, FailureIsSilent) {
    const faultpoint::Scope fault("OutputDebugStringA", 1);
    OutputDebugStringA("lost");
    OutputDebugStringA("kept");
    EXPECT_EQ(text_of(path_), "kept");
}

TEST_F(DebuggerLine, NullTextWritesNothing) {
    OutputDebugStringA(nullptr);
    EXPECT_EQ(text_of(path_), "");
}

TEST(MessageBoxWithoutHook, WritesToStandardErrorAndReturnsWithoutATerminal) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(nullptr, "text", "Message", MB_OK), IDOK);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Message: text\n");
}

/// A pseudo-terminal; `ours` is the controlling end, which plays the user.
struct Terminal {
    int ours = -1;
    int theirs = -1;
    Terminal() {
        ours = posix_openpt(O_RDWR | O_NOCTTY);
        if (ours >= 0 && grantpt(ours) == 0 && unlockpt(ours) == 0)
            theirs = open(ptsname(ours), O_RDWR | O_NOCTTY);
    }
    ~Terminal() {
        close(theirs);
        close(ours);
    }
};

constexpr int k_patience = 60000; // milliseconds; only a failing test waits so long

bool ended_within(pid_t child, int milliseconds, int* status) {
    for (int waited = 0; waited <= milliseconds; waited += 10) {
        if (waitpid(child, status, WNOHANG) == child)
            return true;
        usleep(10000);
    }
    return false;
}

pid_t show_box_in_child(int standard_input, int standard_error) {
    const pid_t child = fork();
    if (child == 0) {
        dup2(standard_input, STDIN_FILENO);
        dup2(standard_error, STDERR_FILENO);
        _exit(MessageBoxA(nullptr, "text", "Message", MB_OK));
    }
    return child;
}

TEST(MessageBoxWithoutHook, WaitsForEnterOnATerminal) {
    const Terminal terminal;
    ASSERT_GE(terminal.theirs, 0);
    const pid_t child = show_box_in_child(terminal.theirs, terminal.theirs);
    int status = 0;
    EXPECT_FALSE(ended_within(child, 200, &status));
    ASSERT_EQ(write(terminal.ours, "\n", 1), 1);
    ASSERT_TRUE(ended_within(child, k_patience, &status));
    EXPECT_EQ(WEXITSTATUS(status), IDOK);
}

TEST(MessageBoxWithoutHook, DoesNotWaitWhenOnlyOneOfTheTwoIsATerminal) {
    const Terminal terminal;
    ASSERT_GE(terminal.theirs, 0);
    const int nothing = open("/dev/null", O_RDWR);
    int status = 0;
    EXPECT_TRUE(ended_within(show_box_in_child(terminal.theirs, nothing), k_patience, &status));
    EXPECT_EQ(WEXITSTATUS(status), IDOK);
    EXPECT_TRUE(ended_within(show_box_in_child(nothing, terminal.theirs), k_patience, &status));
    EXPECT_EQ(WEXITSTATUS(status), IDOK);
    close(nothing);
}

} // namespace
