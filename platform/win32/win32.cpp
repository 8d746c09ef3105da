#include "faultpoint/faultpoint.h"
#include "platform/win32/clock.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <unistd.h>

namespace {

win32::Clock current_clock = nullptr;

void read_system_clock(SYSTEMTIME* time) {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const auto whole = floor<seconds>(now);
    const std::time_t stamp = system_clock::to_time_t(whole);
    std::tm utc = {};
    gmtime_r(&stamp, &utc);
    time->wYear = static_cast<WORD>(utc.tm_year + 1900);
    time->wMonth = static_cast<WORD>(utc.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(utc.tm_wday);
    time->wDay = static_cast<WORD>(utc.tm_mday);
    time->wHour = static_cast<WORD>(utc.tm_hour);
    time->wMinute = static_cast<WORD>(utc.tm_min);
    time->wSecond = static_cast<WORD>(utc.tm_sec);
    time->wMilliseconds = static_cast<WORD>(duration_cast<milliseconds>(now - whole).count());
}

using NoticeHook = int (*)(const char* caption, const char* text);

NoticeHook find_notice_hook() {
    return reinterpret_cast<NoticeHook>(dlsym(RTLD_DEFAULT, "host_show_notice"));
}

void wait_for_enter() {
    std::fputs("(press Enter) ", stderr);
    std::fflush(stderr);
    int character = 0;
    do
        character = std::getchar();
    while (character != '\n' && character != EOF);
}

} // namespace

void win32::set_clock(Clock clock) { current_clock = clock; }

void WINAPI GetSystemTime(LPSYSTEMTIME time) {
    (current_clock != nullptr ? current_clock : read_system_clock)(time);
}

int WINAPI MessageBoxA(HWND, LPCSTR text, LPCSTR caption, UINT) {
    if (faultpoint::hit("MessageBoxA") != 0)
        return 0;
    const char* const shown_text = text != nullptr ? text : "";
    const char* const shown_caption = caption != nullptr ? caption : "";
    // Looked up at every call, because the library that exports the hook may be unloaded meanwhile.
    const NoticeHook hook = find_notice_hook();
    if (hook != nullptr && hook(shown_caption, shown_text) != 0)
        return IDOK;
    std::fprintf(stderr, "%s: %s\n", shown_caption, shown_text);
    std::fflush(stderr);
    if (isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0)
        wait_for_enter();
    return IDOK;
}

void WINAPI OutputDebugStringA(LPCSTR text) {
    const char* const name = std::getenv("OUTPUT_DEBUG_STRING_FILE");
    if (text == nullptr || name == nullptr || *name == '\0')
        return;
    std::FILE* const file =
        faultpoint::hit("OutputDebugStringA") != 0 ? nullptr : std::fopen(name, "ab");
    if (file == nullptr)
        return;
    std::fputs(text, file);
    std::fclose(file);
}
