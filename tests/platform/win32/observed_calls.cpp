/// Replaces GetSystemTime, MessageBoxA and OutputDebugStringA in test programs on Windows. As in
/// the stand-in for other systems, boxes go to the program's notice hook and debugger lines to a
/// file.
#include "platform/win32/clock.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

extern "C" int host_show_notice(const char* caption, const char* text);

namespace {

win32::Clock current_clock = nullptr;

void WINAPI observed_time(SYSTEMTIME* time) {
    if (current_clock != nullptr)
        return current_clock(time);
    FILETIME now;
    GetSystemTimeAsFileTime(&now);
    FileTimeToSystemTime(&now, time);
}

int WINAPI observed_box(HWND, LPCSTR text, LPCSTR caption, UINT) {
    if (host_show_notice(caption, text) == 0) {
        std::fprintf(stderr, "%s: %s\n", caption, text);
        std::fflush(stderr);
    }
    return IDOK;
}

void WINAPI observed_debugger_line(LPCSTR text) {
    const char* const name = std::getenv("OUTPUT_DEBUG_STRING_FILE");
    std::FILE* const file = name == nullptr || *name == '\0' ? nullptr : std::fopen(name, "ab");
    if (file == nullptr)
        return;
    std::fputs(text, file);
    std::fclose(file);
}

} // namespace

void win32::set_clock(Clock clock) { current_clock = clock; }

/// Import table entries; the linker prefers these to the system's import library.
extern "C" {
decltype(&observed_time) __imp_GetSystemTime = observed_time;
decltype(&observed_box) __imp_MessageBoxA = observed_box;
decltype(&observed_debugger_line) __imp_OutputDebugStringA = observed_debugger_line;
}
