#include "app/child_process.h"

#include <windows.h>

#include <algorithm>

namespace app {

struct ChildProcess::Process {
    HANDLE process = nullptr; ///< null if there is no child
    HANDLE job = nullptr;     ///< ends the child when this process ends
    HANDLE input = nullptr, output = nullptr;
    bool output_ended = false;

    ~Process() {
        if (process) {
            TerminateProcess(process, 1);
            WaitForSingleObject(process, INFINITE);
        }
        close();
    }
    static void close_handle(HANDLE& handle) {
        if (handle)
            CloseHandle(handle);
        handle = nullptr;
    }
    void close() {
        close_handle(process);
        close_handle(job);
        close_handle(input);
        close_handle(output);
    }
    /// Reads what has arrived, without waiting. Returns true if something has changed.
    bool receive(std::string& received) {
        DWORD ready = 0;
        if (output_ended)
            return false;
        if (!PeekNamedPipe(output, nullptr, 0, nullptr, &ready, nullptr))
            return output_ended = true;
        while (ready > 0) {
            char block[65536];
            DWORD got = 0;
            if (!ReadFile(output, block, std::min<DWORD>(ready, sizeof block), &got, nullptr))
                return output_ended = true;
            received.append(block, got);
            ready -= got;
            if (ready == 0)
                return true;
        }
        return false;
    }
};

namespace {

/// A word as the C run-time library of the child reads it back.
std::string quoted(const std::string& word) {
    std::string out = "\"";
    size_t backslashes = 0;
    for (const char c : word) {
        if (c == '"')
            out.append(backslashes + 1, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        out += c;
    }
    return out.append(backslashes, '\\') + '"';
}

/// A pipe of which the child inherits one end.
bool make_pipe(HANDLE& ours, HANDLE& theirs, bool child_reads) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE read = nullptr, write = nullptr;
    if (!CreatePipe(&read, &write, &inherited, 1 << 16))
        return false;
    ours = child_reads ? write : read;
    theirs = child_reads ? read : write;
    return SetHandleInformation(ours, HANDLE_FLAG_INHERIT, 0) != 0;
}

HANDLE make_job() {
    const HANDLE job = CreateJobObjectA(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    return job;
}

} // namespace

ChildProcess::ChildProcess() : process_(std::make_unique<Process>()) {}
ChildProcess::~ChildProcess() = default;
ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;
ChildProcess& ChildProcess::operator=(ChildProcess&&) noexcept = default;

bool ChildProcess::start(const std::vector<std::string>& words, std::string& error) {
    process_ = std::make_unique<Process>();
    received_.clear();
    std::string line;
    for (const std::string& word : words)
        line += (line.empty() ? "" : " ") + quoted(word);
    STARTUPINFOA startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made = {};
    const bool good = make_pipe(process_->input, startup.hStdInput, true) &&
                      make_pipe(process_->output, startup.hStdOutput, false) &&
                      CreateProcessA(words[0].c_str(), line.data(), nullptr, nullptr, TRUE,
                                     CREATE_NEW_PROCESS_GROUP, nullptr, nullptr, &startup, &made);
    if (!good)
        error = words[0] + " cannot be started: error " + std::to_string(GetLastError());
    Process::close_handle(startup.hStdInput);
    Process::close_handle(startup.hStdOutput);
    if (!good) {
        process_->close();
        return false;
    }
    CloseHandle(made.hThread);
    process_->process = made.hProcess;
    process_->job = make_job();
    AssignProcessToJobObject(process_->job, made.hProcess);
    return true;
}

bool ChildProcess::is_running() const { return process_->process != nullptr; }

bool ChildProcess::send(const std::string& line) { return send_bytes(line + "\n"); }

bool ChildProcess::send_bytes(const std::string& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        DWORD wrote = 0;
        if (!WriteFile(process_->input, bytes.data() + done,
                       static_cast<DWORD>(std::min<size_t>(bytes.size() - done, 1 << 20)), &wrote,
                       nullptr))
            return false;
        done += wrote;
    }
    return true;
}

void ChildProcess::close_input() { Process::close_handle(process_->input); }

void ChildProcess::terminate() { kill(); }

void ChildProcess::kill() {
    if (process_->process)
        TerminateProcess(process_->process, 1);
}

int ChildProcess::output_file() const { return -1; }

bool ChildProcess::has_ended(std::string& how) {
    DWORD code = 0;
    if (!process_->process || !process_->output_ended ||
        WaitForSingleObject(process_->process, 0) != WAIT_OBJECT_0 ||
        !GetExitCodeProcess(process_->process, &code))
        return false;
    how = "with code " + std::to_string(code);
    process_->close();
    return true;
}

void wait_for_children(const std::vector<ChildProcess*>& children, int milliseconds) {
    // Anonymous pipes cannot be waited for.
    for (int waited = 0;; waited += 5) {
        bool changed = false;
        for (ChildProcess* child : children)
            changed |= child->is_running() && child->process_->receive(child->received_);
        if (changed || waited >= milliseconds)
            return;
        Sleep(5);
    }
}

} // namespace app
