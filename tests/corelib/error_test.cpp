#include "corelib/error.h"
#include "platform/win32/clock.h"
#include "tests/corelib/streams.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>

namespace {

constexpr const char* k_debugger_file = "OUTPUT_DEBUG_STRING_FILE";

/// Stops the clock at 09:05:07.042 and restores all global switches afterwards.
class Log : public testing::Test {
protected:
    void SetUp() override {
        win32::set_clock([](SYSTEMTIME* time) {
            *time = {};
            time->wHour = 9;
            time->wMinute = 5;
            time->wSecond = 7;
            time->wMilliseconds = 42;
        });
        notices() = Notices();
        notices().answer = 1;
        fixtures::unset_environment(k_debugger_file);
    }
    void TearDown() override {
        win32::set_clock(nullptr);
        notices() = Notices();
        log_quiet = false;
        log_file_name = "";
        fixtures::unset_environment(k_debugger_file);
    }

    template <class Action>
    static std::string standard_error_of(Action action) {
        testing::internal::CaptureStderr();
        action();
        return testing::internal::GetCapturedStderr();
    }
};
using LogDeathTest = Log;

TEST_F(Log, WarningHasAnUnpaddedTimeStampAndIsCounted) {
    const uint32_t before = warning_count;
    const std::string line =
        standard_error_of([] { do_log(LOG_WARNING, LOG_TO_STDERR, "%s", "x"); });
    EXPECT_EQ(line, "[9:5:7.42, WARNING]: x\r\n");
    EXPECT_EQ(warning_count, before + 1);
}

TEST_F(Log, EveryLevelHasItsOwnFormatAndOnlyWarningsAreCounted) {
    const uint32_t before = warning_count;
    const std::string lines = standard_error_of([] {
        do_log(LOG_PROFILING, LOG_TO_STDERR, "%d", 1);
        do_log(LOG_DEBUG, LOG_TO_STDERR, "%d", 2);
        do_log(LOG_INFO, LOG_TO_STDERR, "%d", 3);
        do_log(LOG_CRITICAL, LOG_TO_STDERR, "%d", 4);
    });
    EXPECT_EQ(lines, "[9:5:7.42, PROFILING]: 1\r\n"
                     "[9:5:7.42, DEBUG]: 2\r\n"
                     "[9:5:7.42, INFO]: 3\r\n"
                     "[CRITICAL]: 4\r\n");
    EXPECT_EQ(warning_count, before);
}

TEST_F(Log, StandardOutputIsASeparateSink) {
    testing::internal::CaptureStdout();
    const std::string error = standard_error_of([] { do_log(LOG_INFO, LOG_TO_STDOUT, "%s", "x"); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[9:5:7.42, INFO]: x\r\n");
    EXPECT_EQ(error, "");
}

TEST_F(Log, CriticalLineShowsABoxWithTheCaptionMessage) {
    do_log(LOG_CRITICAL, LOG_TO_MESSAGE_BOX | LOG_TO_DEBUGGER, "CreateDevice failed");
    EXPECT_EQ(notices().captions, std::vector<std::string>{"Message"});
    EXPECT_EQ(notices().texts, std::vector<std::string>{"[CRITICAL]: CreateDevice failed\r\n"});
}

TEST_F(Log, QuietSkipsOnlyTheMessageBox) {
    log_quiet = true;
    const std::string error = standard_error_of(
        [] { do_log(LOG_CRITICAL, LOG_TO_MESSAGE_BOX | LOG_TO_STDERR, "%s", "x"); });
    EXPECT_TRUE(notices().texts.empty());
    EXPECT_EQ(error, "[CRITICAL]: x\r\n");
}

TEST_F(Log, WithoutSinksNothingIsWritten) {
    const std::string error = standard_error_of([] { do_log(LOG_CRITICAL, 0, "%s", "x"); });
    EXPECT_TRUE(notices().texts.empty());
    EXPECT_EQ(error, "");
}

TEST_F(Log, FileSinkAppendsTheLineWithoutItsTerminatingZero) {
    const TemporaryFile path;
    log_file_name = path.path();
    do_log(LOG_CRITICAL, LOG_TO_FILE, "%s", "x");
    do_log(LOG_CRITICAL, LOG_TO_FILE, "%s", "y");
    EXPECT_EQ(path.text(), "[CRITICAL]: x\r\n[CRITICAL]: y\r\n");
}

TEST_F(Log, FileSinkDoesNothingWithoutAFileName) {
    EXPECT_EQ(standard_error_of([] { do_log(LOG_CRITICAL, LOG_TO_FILE, "%s", "x"); }), "");
}

TEST_F(Log, FileSinkFailureIsIgnored) {
    log_file_name = "/tmp/no_such_folder_of_tessora/x";
    const std::string error =
        standard_error_of([] { do_log(LOG_CRITICAL, LOG_TO_FILE | LOG_TO_STDERR, "%s", "x"); });
    EXPECT_EQ(error, "[CRITICAL]: x\r\n");
}

TEST_F(Log, LongMessagesAreCutAtTheTwoLimits) {
    const std::string text(300000, 'x');
    const std::string line =
        standard_error_of([&] { do_log(LOG_CRITICAL, LOG_TO_STDERR, "%s", text.c_str()); });
    // 200000 bytes with the terminating zero, plus prefix and line end.
    EXPECT_EQ(line, "[CRITICAL]: " + std::string(199999, 'x') + "\r\n");
}

TEST_F(Log, SinksAreServedInOrder) {
    const TemporaryFile debugger;
    const TemporaryFile log;
    fixtures::set_environment(k_debugger_file, debugger.path());
    log_file_name = log.path();
    std::vector<std::string> seen;
    const auto note = [&](const char* sink) {
        seen.push_back(std::string(sink) + (debugger.exists() ? " after debugger" : "") +
                       (log.exists() ? " after file" : ""));
    };
    notices().while_showing = [&] { note("box"); };
    note_streams(
        [] {
            do_log(LOG_CRITICAL,
                   LOG_TO_STDOUT | LOG_TO_STDERR | LOG_TO_FILE | LOG_TO_MESSAGE_BOX |
                       LOG_TO_DEBUGGER,
                   "%s", "x");
        },
        note);
    EXPECT_EQ(seen,
              (std::vector<std::string>{"box after debugger", "stderr after debugger after file",
                                        "stdout after debugger after file"}));
    EXPECT_EQ(debugger.text(), "[CRITICAL]: x\r\n");
}

TEST_F(LogDeathTest, LevelAboveFourIsABug) {
    notices().answer = 0;
    EXPECT_EXIT(do_log(5, LOG_TO_STDERR, "%s", "x"), fixtures::ended_by_abort(),
                literally("do_log() BUG at file \"error\", line ") + fixtures::k_digits + "!");
}

TEST_F(LogDeathTest, BugEndsTheProcessOnlyAfterTheBoxIsDismissed) {
    notices().while_showing = [] { std::fputs("dismissed", stderr); };
    EXPECT_EXIT(report_bug("f", "s", 1), fixtures::ended_by_abort(), "^dismissed$");
}

TEST_F(LogDeathTest, BugGoesToTheDebuggerTheBoxAndTheFile) {
    const TemporaryFile debugger;
    const TemporaryFile log;
    fixtures::set_environment(k_debugger_file, debugger.path());
    log_file_name = log.path();
    notices().answer = 0;
    const std::string line =
        "[CRITICAL]: f() BUG at file \"s\", line 12: assertion a < b failed!\r\n";
    EXPECT_EXIT(report_bug("f", "s", 12, "a < b"), fixtures::ended_by_abort(),
                literally("Message: " + line));
    EXPECT_EQ(debugger.text(), line);
    EXPECT_EQ(log.text(), line);
}

TEST_F(LogDeathTest, BugWithoutAnAssertionHasAShortForm) {
    notices().answer = 0;
    EXPECT_EXIT(report_bug("f", "s", 12), fixtures::ended_by_abort(),
                literally("[CRITICAL]: f() BUG at file \"s\", line 12!\r\n"));
}

TEST_F(LogDeathTest, BugWithAReasonNamesIt) {
    notices().answer = 0;
    EXPECT_EXIT(report_bug_reason("f", "s", 12, "why"), fixtures::ended_by_abort(),
                literally("[CRITICAL]: f() BUG at file \"s\", line 12: why!\r\n"));
}

} // namespace
