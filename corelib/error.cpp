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
constexpr size_t k_frame_bytes = 100; ///< at least what a line adds to its message
constexpr size_t k_short_bytes = 1024;
constexpr uint32_t k_bug_sinks = LOG_TO_MESSAGE_BOX | LOG_TO_DEBUGGER | LOG_TO_FILE;
constexpr int k_append_mode = 4;

/// Storage for texts that do not fit on the stack when memory runs out, and whether it is in use.
struct Reserve {
    char bytes[k_line_bytes];
    bool is_taken;
};
Reserve message_reserve;
Reserve line_reserve;

/// Storage for one text: short ones on the stack, long ones allocated. A log line may be about
/// exhausted memory, so if the allocation fails a static reserve takes its place; the reserve is
/// taken only when a message box lets another line be logged meanwhile: that line is then cut.
class TextBuffer {
public:
    TextBuffer(size_t needed, size_t limit, Reserve& reserve)
        : bytes_(needed < limit ? needed : limit), reserve_(reserve) {
        if (bytes_ <= k_short_bytes)
            return;
        allocated_ = static_cast<char*>(std::malloc(bytes_));
        if (allocated_ != nullptr) {
            text_ = allocated_;
        } else if (!reserve.is_taken) {
            uses_reserve_ = reserve.is_taken = true;
            text_ = reserve.bytes;
        } else {
            bytes_ = k_short_bytes;
        }
    }
    ~TextBuffer() {
        std::free(allocated_);
        if (uses_reserve_)
            reserve_.is_taken = false;
    }
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    char* text() { return text_; }
    size_t bytes() const { return bytes_; }

private:
    size_t bytes_;
    Reserve& reserve_;
    char* allocated_ = nullptr;
    bool uses_reserve_ = false;
    char* text_ = short_;
    char short_[k_short_bytes];
};

[[noreturn]] void own_bug(int line) { report_bug("do_log", "error", line); }

void print_time_stamp(char (&stamp)[k_stamp_bytes]) {
    SYSTEMTIME time;
    GetSystemTime(&time);
    std::snprintf(stamp, sizeof stamp, "%i:%i:%i.%i", time.wHour, time.wMinute, time.wSecond,
                  time.wMilliseconds);
}

/// Returns the result of snprintf: negative if the line cannot be formatted.
int print_line(TextBuffer& line, uint32_t level, const char* stamp, const char* message) {
    switch (level) {
    case LOG_PROFILING:
        return std::snprintf(line.text(), line.bytes(), "[%s, PROFILING]: %s\r\n", stamp, message);
    case LOG_DEBUG:
        return std::snprintf(line.text(), line.bytes(), "[%s, DEBUG]: %s\r\n", stamp, message);
    case LOG_INFO:
        return std::snprintf(line.text(), line.bytes(), "[%s, INFO]: %s\r\n", stamp, message);
    case LOG_WARNING:
        return std::snprintf(line.text(), line.bytes(), "[%s, WARNING]: %s\r\n", stamp, message);
    case LOG_CRITICAL:
        return std::snprintf(line.text(), line.bytes(), "[CRITICAL]: %s\r\n", message);
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
    char stamp[k_stamp_bytes];
    print_time_stamp(stamp);

    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    if (length < 0)
        own_bug(__LINE__);
    TextBuffer message(static_cast<size_t>(length) + 1, k_message_bytes, message_reserve);
    std::vsnprintf(message.text(), message.bytes(), format, again);
    va_end(again);

    TextBuffer line(message.bytes() + k_frame_bytes, k_line_bytes, line_reserve);
    if (print_line(line, level, stamp, message.text()) < 0)
        own_bug(__LINE__);
    if (level == LOG_WARNING)
        warning_count += 1;
    serve_sinks(sinks, line.text());
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
