#include "app/child_process.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace app {

struct ChildProcess::Process {
    pid_t id = -1; ///< -1 if there is no child
    int input = -1, output = -1;
    bool output_ended = false;

    ~Process() { end(); }

    void close_file(int& file) {
        if (file >= 0)
            ::close(file);
        file = -1;
    }
    void close_files() {
        close_file(input);
        close_file(output);
    }
    void end() {
        if (id >= 0) {
            ::kill(id, SIGKILL);
            while (::waitpid(id, nullptr, 0) < 0 && errno == EINTR) {
            }
        }
        id = -1;
        close_files();
    }
    /// Reads what has arrived, without waiting.
    void receive(std::string& received) {
        char block[65536];
        for (;;) {
            const ssize_t got = ::read(output, block, sizeof block);
            if (got > 0)
                received.append(block, static_cast<size_t>(got));
            else if (got < 0 && errno == EINTR)
                continue;
            else {
                output_ended |= got == 0 || errno != EAGAIN;
                return;
            }
        }
    }
};

namespace {

/// Runs in the child between fork and exec, where only system calls are safe.
[[noreturn]] void become(char* const* words, int input, int output, pid_t parent) {
    // A terminal's interrupt reaches the whole process group; only the parent answers to it.
    ::signal(SIGINT, SIG_IGN);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) // it ended before the call above
        ::_exit(127);
    if (::dup2(input, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0)
        ::execv(words[0], words);
    ::_exit(127);
}

bool make_pipe(int ends[2]) {
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return false;
    // Above the standard streams, so that dup2 in the child cannot overwrite another end.
    for (int i = 0; i < 2; ++i)
        while (ends[i] >= 0 && ends[i] <= STDERR_FILENO)
            ends[i] = ::fcntl(ends[i], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    return ends[0] >= 0 && ends[1] >= 0;
}

/// While it lives, writing to a pipe without a reader fails with EPIPE and the thread gets no
/// SIGPIPE, whose default would end this process because a child has ended.
class NoPipeSignal {
public:
    NoPipeSignal() {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
    }
    ~NoPipeSignal() {
        if (sigismember(&before_, SIGPIPE) == 0) { // take one that came meanwhile
            const timespec at_once = {0, 0};
            ::sigtimedwait(&pipe_, nullptr, &at_once);
        }
        ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    NoPipeSignal(const NoPipeSignal&) = delete;
    NoPipeSignal& operator=(const NoPipeSignal&) = delete;

private:
    sigset_t pipe_ = {}, before_ = {};
};

} // namespace

ChildProcess::ChildProcess() : process_(std::make_unique<Process>()) {}
ChildProcess::~ChildProcess() = default;
ChildProcess::ChildProcess(ChildProcess&&) noexcept = default;
ChildProcess& ChildProcess::operator=(ChildProcess&&) noexcept = default;

bool ChildProcess::start(const std::vector<std::string>& words, std::string& error) {
    process_ = std::make_unique<Process>();
    received_.clear();
    std::vector<char*> pointers;
    for (const std::string& word : words)
        pointers.push_back(const_cast<char*>(word.c_str()));
    pointers.push_back(nullptr);
    int input[2] = {-1, -1}, output[2] = {-1, -1};
    const pid_t parent = ::getpid();
    if (make_pipe(input) && make_pipe(output)) {
        process_->id = ::fork();
        if (process_->id == 0)
            become(pointers.data(), input[0], output[1], parent);
    }
    if (process_->id < 0)
        error = words[0] + " cannot be started: " + std::strerror(errno);
    process_->input = input[1];
    process_->output = output[0];
    process_->close_file(input[0]);
    process_->close_file(output[1]);
    if (process_->id < 0) {
        process_->close_files();
        return false;
    }
    ::fcntl(process_->output, F_SETFL, O_NONBLOCK);
    return true;
}

bool ChildProcess::is_running() const { return process_->id >= 0; }

bool ChildProcess::send(const std::string& line) { return send_bytes(line + "\n"); }

bool ChildProcess::send_bytes(const std::string& bytes) {
    const NoPipeSignal no_signal;
    for (size_t done = 0; done < bytes.size();) {
        const ssize_t wrote = ::write(process_->input, bytes.data() + done, bytes.size() - done);
        if (wrote > 0)
            done += static_cast<size_t>(wrote);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

void ChildProcess::close_input() { process_->close_file(process_->input); }

void ChildProcess::terminate() {
    if (process_->id >= 0)
        ::kill(process_->id, SIGTERM);
}

void ChildProcess::kill() {
    if (process_->id >= 0)
        ::kill(process_->id, SIGKILL);
}

int ChildProcess::output_file() const { return process_->output_ended ? -1 : process_->output; }

bool ChildProcess::has_ended(std::string& how) {
    int status = 0;
    if (process_->id < 0 || !process_->output_ended ||
        ::waitpid(process_->id, &status, WNOHANG) != process_->id)
        return false;
    how = WIFSIGNALED(status) ? "by signal " + std::to_string(WTERMSIG(status))
                              : "with code " + std::to_string(WEXITSTATUS(status));
    process_->id = -1;
    process_->close_files();
    return true;
}

void wait_for_children(const std::vector<ChildProcess*>& children, int milliseconds) {
    std::vector<pollfd> files;
    for (const ChildProcess* child : children)
        files.push_back({child->process_->output_ended ? -1 : child->process_->output, POLLIN, 0});
    if (::poll(files.data(), files.size(), milliseconds) <= 0)
        return;
    for (size_t i = 0; i < children.size(); ++i)
        if (files[i].revents)
            children[i]->process_->receive(children[i]->received_);
}

} // namespace app
