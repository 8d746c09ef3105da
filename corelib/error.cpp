#include "corelib/error.h"

#include "corelib/file.h"

#include <windows.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

bool log_quiet = false;
string log_file_name;
uint32_t warning_count = 0;

namespace {

constexpr size_t k_message_bytes = 200000;
constexpr size_t k_line_bytes = 200100;
constexpr size_t k_stamp_bytes = 64;
constexpr uint32_t k_bug_sinks = LOG_TO_MESSAGE_BOX | LOG_TO_DEBUGGER | LOG_TO_FILE;
constexpr int k_append_mode = 4;

[[noreturn]] void own_bug(int line) { report_bug("do_log", "error", line); }

void print_time_stamp(char (&stamp)[k_stamp_bytes]) {
    SYSTEMTIME time;
    GetSystemTime(&time);
    std::snprintf(stamp, sizeof stamp, "%i:%i:%i.%i", time.wHour, time.wMinute, time.wSecond,
                  time.wMilliseconds);
}

/// Returns the result of snprintf: negative if the line cannot be formatted.
int print_line(char* line, uint32_t level, const char* stamp, const char* message) {
    switch (level) {
    case LOG_PROFILING:
        return std::snprintf(line, k_line_bytes, "[%s, PROFILING]: %s\r\n", stamp, message);
    case LOG_DEBUG:
        return std::snprintf(line, k_line_bytes, "[%s, DEBUG]: %s\r\n", stamp, message);
    case LOG_INFO:
        return std::snprintf(line, k_line_bytes, "[%s, INFO]: %s\r\n", stamp, message);
    case LOG_WARNING:
        return std::snprintf(line, k_line_bytes, "[%s, WARNING]: %s\r\n", stamp, message);
    case LOG_CRITICAL:
        return std::snprintf(line, k_line_bytes, "[CRITICAL]: %s\r\n", message);
    default:
        own_bug(__LINE__);
    }
}

void append_to_log_file(const char* line) {
    if (log_file_name.length() == 0)
        return;
    file log;
    if (!log.open(log_file_name.c_str(), k_append_mode))
        return;
    log.write(line, std::strlen(line));
    log.close();
}

void write_to_stream(std::FILE* stream, const char* line) {
    std::fputs(line, stream);
    std::fflush(stream);
}

void serve_sinks(uint32_t sinks, const char* line) {
    if ((sinks & LOG_TO_DEBUGGER) != 0)
        OutputDebugStringA(line);
    if ((sinks & LOG_TO_MESSAGE_BOX) != 0 && !log_quiet)
        MessageBoxA(nullptr, line, "Message", MB_OK);
    if ((sinks & LOG_TO_FILE) != 0)
        append_to_log_file(line);
    if ((sinks & LOG_TO_STDERR) != 0)
        write_to_stream(stderr, line);
    if ((sinks & LOG_TO_STDOUT) != 0)
        write_to_stream(stdout, line);
}

} // namespace

void do_log(uint32_t level, uint32_t sinks, const char* format, ...) {
    // On the stack, because the line may be about exhausted memory.
    char stamp[k_stamp_bytes];
    char message[k_message_bytes];
    char line[k_line_bytes];

    print_time_stamp(stamp);
    va_list arguments;
    va_start(arguments, format);
    const int message_length = std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    if (message_length < 0)
        own_bug(__LINE__);
    if (print_line(line, level, stamp, message) < 0)
        own_bug(__LINE__);
    if (level == LOG_WARNING)
        warning_count += 1;
    serve_sinks(sinks, line);
}

void report_bug(const char* function, const char* source, int line, const char* assertion) {
    if (assertion != nullptr)
        do_log(LOG_CRITICAL, k_bug_sinks, "%s() BUG at file \"%s\", line %i: assertion %s failed!",
               function, source, line, assertion);
    else
        do_log(LOG_CRITICAL, k_bug_sinks, "%s() BUG at file \"%s\", line %i!", function, source,
               line);
    std::abort();
}

void report_bug_reason(const char* function, const char* source, int line, const char* reason) {
    do_log(LOG_CRITICAL, k_bug_sinks, "%s() BUG at file \"%s\", line %i: %s!", function, source,
           line, reason);
    std::abort();
}
