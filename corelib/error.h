/// Log lines and failure reports.
///
/// `do_log` formats one line and sends it to any combination of five sinks; the engine uses it to
/// report failed platform calls and exhausted memory. `report_bug` is for broken contracts inside
/// the program: it logs and ends the process with abort(), without clean-up; a host can intercept
/// only that signal. No locks: all callers run on the host's main thread.
#pragma once

#include "corelib/string.h"

#include <cstdint>

#if defined(__GNUC__)
#define CORELIB_PRINTF(format_index, first_argument)                                               \
    __attribute__((format(printf, format_index, first_argument)))
#else
#define CORELIB_PRINTF(format_index, first_argument)
#endif

enum LogLevel : uint32_t {
    LOG_PROFILING = 0,
    LOG_DEBUG = 1,
    LOG_INFO = 2,
    LOG_WARNING = 3,
    LOG_CRITICAL = 4, ///< deliberately without a time stamp
};

/// Bits. A line is sent in the order debugger, message box, file, standard error, standard output.
enum LogSink : uint32_t {
    LOG_TO_MESSAGE_BOX = 1, ///< modal, caption "Message", OK only; skipped while `log_quiet` is set
    LOG_TO_DEBUGGER = 2,
    LOG_TO_STDERR = 4,
    LOG_TO_STDOUT = 8,
    LOG_TO_FILE = 16, ///< appended to `log_file_name`, if set; failures are ignored
};

/// Switches for programs that embed the library. `tessora` sets neither, so message boxes are shown
/// and the file sink writes nothing.
extern bool log_quiet;
extern string log_file_name;

/// Number of lines of level LOG_WARNING so far.
extern uint32_t warning_count;

/// Writes one line "[H:M:S.MS, LEVEL]: message\r\n" (UTC, without zero padding; "[CRITICAL]: ..."
/// for level 4) to the sinks. Messages are cut to 200000 bytes, lines to 200100, including the
/// terminating zero. A level above 4 and a message that cannot be formatted are BUGs. Needs little
/// stack, and memory only for lines over 1 KB.
void do_log(uint32_t level, uint32_t sinks, const char* format, ...) CORELIB_PRINTF(3, 4);

/// Reports a broken contract at level LOG_CRITICAL to the message box, the debugger and the file,
/// then ends the process. `assertion` is the condition that did not hold, or null.
[[noreturn]] void report_bug(const char* function, const char* source, int line,
                             const char* assertion = nullptr);

/// Like report_bug, with a free-text reason in place of an assertion.
[[noreturn]] void report_bug_reason(const char* function, const char* source, int line,
                                    const char* reason);
