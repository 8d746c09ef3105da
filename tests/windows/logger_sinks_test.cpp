/// The logger with the system's own message box and debugger output. A child process logs; this
/// program acts as its debugger and as the user who dismisses the box.
#include <windows.h>

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

struct Seen {
    std::string debugger;
    std::string caption, text; ///< of the message box
    DWORD exit_code = 0;
    bool ended_by_itself = false; ///< the process ended although the box was not dismissed
};

/// The box of another process; its text is in the control with this number.
constexpr int k_text_control = 0xFFFF;

bool dismiss_box(Seen& seen) {
    const HWND box = FindWindowA("#32770", nullptr);
    if (box == nullptr)
        return false;
    char buffer[1000] = "";
    GetWindowTextA(box, buffer, sizeof buffer);
    const HWND label = GetDlgItem(box, k_text_control);
    if (label == nullptr)
        return false; // not complete yet
    seen.caption = buffer;
    DWORD_PTR length = 0;
    if (SendMessageTimeoutA(label, WM_GETTEXT, sizeof buffer, reinterpret_cast<LPARAM>(buffer),
                            SMTO_ABORTIFHUNG, 2000, &length) == 0)
        return false;
    seen.text.assign(buffer, length);
    PostMessageA(box, WM_COMMAND, IDOK, 0);
    return true;
}

std::string debugger_text(HANDLE process, const OUTPUT_DEBUG_STRING_INFO& info) {
    std::string text(info.nDebugStringLength, '\0');
    SIZE_T got = 0;
    ReadProcessMemory(process, info.lpDebugStringData, text.data(), text.size(), &got);
    text.resize(got);
    return text.substr(0, text.find('\0'));
}

/// Runs the logging program to its end; `wants_box` = wait for a message box and dismiss it.
Seen watch(const std::string& arguments, bool wants_box) {
    Seen seen;
    std::string line = std::string("\"") + TESSORA_LOG_LINES + "\" " + arguments;
    STARTUPINFOA start = {};
    start.cb = sizeof start;
    PROCESS_INFORMATION process = {};
    if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS,
                       nullptr, nullptr, &start, &process) == 0)
        return seen;
    // In a thread, because the box reacts only while the debugger lets its process run.
    std::atomic<bool> running = true, dismissed = false;
    std::thread person([&] {
        while (running && !dismissed) {
            dismissed = wants_box && dismiss_box(seen);
            Sleep(20);
        }
    });
    const DWORD begin = GetTickCount();
    while (running && GetTickCount() - begin < 60000) {
        DEBUG_EVENT event;
        if (WaitForDebugEvent(&event, 50) == 0)
            continue;
        DWORD answer = DBG_CONTINUE;
        if (event.dwDebugEventCode == OUTPUT_DEBUG_STRING_EVENT)
            seen.debugger += debugger_text(process.hProcess, event.u.DebugString);
        if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT &&
            event.u.Exception.ExceptionRecord.ExceptionCode != EXCEPTION_BREAKPOINT)
            answer = DBG_EXCEPTION_NOT_HANDLED;
        if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT) {
            seen.exit_code = event.u.ExitProcess.dwExitCode;
            seen.ended_by_itself = wants_box && !dismissed;
            running = false;
        }
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
    }
    running = false;
    person.join();
    TerminateProcess(process.hProcess, 99); // no effect if it has already ended
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return seen;
}

TEST(SystemSinks, DebuggerReceivesTheLine) {
    const Seen seen = watch("2 hello", false);
    EXPECT_EQ(seen.debugger, "[CRITICAL]: hello\r\n");
    EXPECT_EQ(seen.exit_code, 0u);
}

TEST(SystemSinks, BoxShowsCaptionAndLineAndTheCallReturnsWhenItIsDismissed) {
    const Seen seen = watch("3 \"CreateDevice failed\"", true);
    EXPECT_FALSE(seen.ended_by_itself) << "the program did not wait for the box";
    EXPECT_EQ(seen.caption, "Message");
    EXPECT_EQ(seen.text, "[CRITICAL]: CreateDevice failed\r\n");
    EXPECT_EQ(seen.debugger, "[CRITICAL]: CreateDevice failed\r\n");
    EXPECT_EQ(seen.exit_code, 0u);
}

} // namespace
