#include "tests/app/process.h"

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <tuple>
#include <unistd.h>

namespace test {
namespace {

constexpr std::chrono::milliseconds k_poll_interval{5};

void must(bool good, const char* what) {
    if (good)
        return;
    std::perror(what);
    std::abort();
}

/// Descriptor of an unlinked file that contains `bytes`, positioned at its start.
int input_file(const std::string& bytes) {
    std::FILE* file = std::tmpfile();
    must(file && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() &&
             std::fflush(file) == 0,
         "input");
    const int copy = ::dup(::fileno(file));
    std::fclose(file);
    ::lseek(copy, 0, SEEK_SET);
    return copy;
}

/// Opens a pseudo terminal of 100 columns; returns {the test's end, the program's end}.
std::pair<int, int> open_terminal() {
    const int ours = ::posix_openpt(O_RDWR | O_NOCTTY);
    must(ours >= 0 && ::grantpt(ours) == 0 && ::unlockpt(ours) == 0, "terminal");
    const int theirs = ::open(::ptsname(ours), O_RDWR | O_NOCTTY);
    must(theirs >= 0, "terminal");
    winsize size = {};
    size.ws_col = 100;
    size.ws_row = 25;
    ::ioctl(theirs, TIOCSWINSZ, &size);
    termios modes = {};
    ::tcgetattr(theirs, &modes);
    modes.c_oflag &= ~static_cast<tcflag_t>(OPOST); // no translation of line ends
    ::tcsetattr(theirs, TCSANOW, &modes);
    return {ours, theirs};
}

void set_limit(int what, unsigned long max) {
    const rlimit limits = {max, max};
    if (max)
        ::setrlimit(static_cast<__rlimit_resource_t>(what), &limits);
}

} // namespace

Process::Process(const std::vector<std::string>& words, const Setup& setup) {
    std::vector<char*> arguments = {const_cast<char*>(TESSORA_PROGRAM)};
    for (const std::string& word : words)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const int in = input_file(setup.input);
    int out[2], err[2];
    must(::pipe2(out, O_CLOEXEC) == 0, "pipe");
    if (setup.terminal)
        std::tie(err[0], err[1]) = open_terminal();
    else
        must(::pipe2(err, O_CLOEXEC) == 0, "pipe");
    if (setup.closed_output) {
        ::close(out[0]);
        out[0] = -1;
    }
    id_ = ::fork();
    must(id_ >= 0, "fork");
    if (id_ == 0) {
        ::dup2(in, STDIN_FILENO);
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        if (setup.full_output)
            ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO);
        ::setenv("TERM", "xterm", 1);
        for (const int stream : setup.closed)
            ::close(stream);
        if (!setup.directory.empty() && ::chdir(setup.directory.c_str()) != 0)
            ::_exit(127);
        set_limit(RLIMIT_AS, setup.memory_limit);
        set_limit(RLIMIT_FSIZE, setup.file_limit);
        set_limit(RLIMIT_STACK, setup.stack_limit);
        set_limit(RLIMIT_NOFILE, setup.open_files);
        set_limit(RLIMIT_CORE, 1);
        ::execv(TESSORA_PROGRAM, arguments.data());
        ::_exit(127);
    }
    ::close(in);
    ::close(out[1]);
    ::close(err[1]);
    out_ = out[0];
    err_ = err[0];
}

Process::~Process() {
    if (id_ > 0 && !is_collected_) {
        ::kill(id_, SIGKILL);
        ::waitpid(id_, nullptr, 0);
    }
    for (const int file : {out_, err_})
        if (file >= 0)
            ::close(file);
}

void Process::send(int signal) const { ::kill(id_, signal); }

Ended Process::wait() {
    Ended ended;
    pollfd files[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
    std::string* const texts[2] = {&ended.out, &ended.err};
    while (files[0].fd >= 0 || files[1].fd >= 0) {
        if (::poll(files, 2, -1) < 0)
            continue;
        for (int i = 0; i < 2; ++i) {
            if (files[i].fd < 0 || files[i].revents == 0)
                continue;
            char bytes[65536];
            const ssize_t got = ::read(files[i].fd, bytes, sizeof bytes);
            if (got > 0)
                texts[i]->append(bytes, static_cast<size_t>(got));
            else // end of file; a terminal whose other end is closed reports an error instead
                files[i].fd = -1;
        }
    }
    if (!is_collected_)
        ::waitpid(id_, &status_, 0);
    id_ = -1;
    ended.code = WIFEXITED(status_) ? WEXITSTATUS(status_) : -1;
    ended.signal = WIFSIGNALED(status_) ? WTERMSIG(status_) : 0;
    return ended;
}

bool Process::ends_within(std::chrono::milliseconds time) {
    for (std::chrono::milliseconds waited{0}; waited < time; waited += k_poll_interval) {
        if (::waitpid(id_, &status_, WNOHANG) == id_)
            return is_collected_ = true;
        std::this_thread::sleep_for(k_poll_interval);
    }
    send(SIGKILL);
    return false;
}

Ended run(const std::vector<std::string>& words, const Process::Setup& setup) {
    return Process(words, setup).wait();
}

} // namespace test
