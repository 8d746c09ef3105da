/// Runs the built program as a stranger would: words, streams, signals, exit code.
#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace test {

struct Ended {
    int code = -1;  ///< exit code, or -1 when a signal ended it
    int signal = 0; ///< that signal
    std::string out, err;
};

class Process {
public:
    /// Ways to start the program that differ from the plain one.
    struct Setup {
        std::string input;              ///< what standard input holds
        std::string directory;          ///< working directory, "" for the test's own
        bool terminal = false;          ///< standard error is a terminal
        bool closed_output = false;     ///< nobody reads standard output
        unsigned long memory_limit = 0; ///< bytes of address space, 0 for any
        unsigned long file_limit = 0;   ///< bytes of a written file, 0 for any
    };

    explicit Process(const std::vector<std::string>& words) : Process(words, Setup()) {}
    Process(const std::vector<std::string>& words, const Setup& setup);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void send(int signal) const;
    /// Process id, as temporary files carry it.
    pid_t id() const { return id_; }
    /// Collects the streams until the program has ended.
    Ended wait();

private:
    pid_t id_ = -1;
    int out_ = -1, err_ = -1;
};

/// Starts the program and waits for its end.
Ended run(const std::vector<std::string>& words, const Process::Setup& setup = {});

} // namespace test
