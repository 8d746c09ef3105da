#include "app/exit_code.h"
#include "app/interrupt.h"

#include <windows.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstring>

namespace app {
namespace {

/// Console events arrive in a thread of their own; code that must not be interrupted holds this.
CRITICAL_SECTION& held() {
    static CRITICAL_SECTION* const section = [] {
        static CRITICAL_SECTION made;
        InitializeCriticalSection(&made);
        return &made;
    }();
    return *section;
}

/// An InterruptNoted lives. Read in the thread of console events.
std::atomic<bool> g_is_noted{false};

void write_error(const char* text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(std::strlen(text)), &written,
              nullptr);
}

[[noreturn]] void end_process(const char* text, int code) {
    remove_unfinished_files();
    if (terminal_line_open())
        write_error("\r\033[K");
    write_error(text);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    for (;;) // termination is asynchronous
        Sleep(INFINITE);
}

/// Ends the process with the exit codes of POSIX: 128 + 2 for SIGINT, 128 + 15 for SIGTERM.
BOOL WINAPI on_console_event(DWORD event) {
    const int signal = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT ? 2 : 15;
    if (note_deferred_signal(signal))
        return TRUE;
    if (event == CTRL_C_EVENT && g_is_noted) {
        note_interrupt();
        return TRUE;
    }
    EnterCriticalSection(&held());
    if (results_published())
        end_process("", exit_done);
    end_process(ends_silently() ? "" : "tessora: interrupted; unfinished files are removed\n",
                exit_signal + signal);
}

void on_abort(int) {
    end_process("tessora: internal error; unfinished files are removed. Please report this "
                "together with the input.\n",
                exit_bug);
}

} // namespace

void install_signal_handlers() {
    held();
    SetConsoleCtrlHandler(on_console_event, TRUE);
    std::signal(SIGABRT, on_abort);
}

InterruptNoted::InterruptNoted() { g_is_noted = true; }
InterruptNoted::~InterruptNoted() { g_is_noted = false; }

SignalsHeld::SignalsHeld() { EnterCriticalSection(&held()); }
SignalsHeld::~SignalsHeld() { LeaveCriticalSection(&held()); }

} // namespace app
