#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/system.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <io.h>
#include <psapi.h>

namespace app {

const char k_path_separator = ';';

namespace {

/// Exception raised by a platform library for a function that it exports without implementing.
constexpr DWORD k_unimplemented = 0x80000100u;

void say_directly(const char* text) {
    std::fputs(text, stderr);
    std::fflush(stderr);
}

/// Handles every unhandled exception. A process-wide filter, so that the plug-in need not decide
/// how its host ends.
LONG WINAPI end_process(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    remove_unfinished_files();
    if (record.ExceptionCode == k_unimplemented) {
        const auto text = [&](unsigned i) {
            return i < record.NumberParameters
                       ? reinterpret_cast<const char*>(record.ExceptionInformation[i])
                       : "?";
        };
        std::fprintf(stderr,
                     "tessora: this platform does not have %s of %s, so the mesh cannot be "
                     "unwrapped here; no result was written. A program built with the portable "
                     "atlas does without it.\n",
                     text(1), text(0));
        std::fflush(stderr);
        TerminateProcess(GetCurrentProcess(), exit_unwrap);
    }
    char text[120];
    std::snprintf(text, sizeof text,
                  "tessora: internal error 0x%08lX; unfinished files are removed. Please report "
                  "this together with the input.\n",
                  record.ExceptionCode);
    say_directly(text);
    TerminateProcess(GetCurrentProcess(), exit_bug);
    return EXCEPTION_EXECUTE_HANDLER;
}

} // namespace

void prepare_process() {
    for (const int stream : {0, 1, 2})
        _setmode(stream, _O_BINARY);
    _fmode = _O_BINARY;
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    SetUnhandledExceptionFilter(end_process);
}

void keep_freed_memory() {} // the heap keeps it

std::string program_file() {
    wchar_t self[32768];
    const DWORD length = GetModuleFileNameW(nullptr, self, 32768);
    return length == 0 || length == 32768 ? "" : std::filesystem::path(self).string();
}

std::string program_directory() {
    const std::string file = program_file();
    return file.empty() ? "." : std::filesystem::path(file).parent_path().string();
}

double peak_memory_mb() {
    PROCESS_MEMORY_COUNTERS counters = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters);
    return static_cast<double>(counters.PeakWorkingSetSize) / (1024.0 * 1024.0);
}

bool is_terminal_input_and_output() { return _isatty(0) != 0 && _isatty(1) != 0; }

bool is_terminal_error() {
    // Consoles interpret cursor sequences only after this mode is set.
    const HANDLE console = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 &&
           SetConsoleMode(console, mode | 0x0004 /* ENABLE_VIRTUAL_TERMINAL_PROCESSING */) != 0;
}

int terminal_columns() {
    CONSOLE_SCREEN_BUFFER_INFO info;
    return GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info) != 0
               ? info.srWindow.Right - info.srWindow.Left + 1
               : 80;
}

void* loaded_function(const std::string& library, const char* function) {
    const HMODULE module = GetModuleHandleA((library + ".dll").c_str());
    return module ? reinterpret_cast<void*>(GetProcAddress(module, function)) : nullptr;
}

} // namespace app
