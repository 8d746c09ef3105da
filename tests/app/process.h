/// Runs the built program as a child process and collects its output and exit code.
#pragma once

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace test {

struct Ended {
    int code = -1;  ///< exit code, or -1 when a signal ended it
    int signal = 0; ///< the signal that ended the program, or 0
    std::string out, err;
};

class Process {
public:
    /// How to start the program; the defaults are an ordinary start with pipes.
    struct Setup {
        std::string input;              ///< content of standard input
        std::string directory;          ///< working directory; "" for that of the test
        bool terminal = false;          ///< standard error is a terminal
        bool closed_output = false;     ///< standard output is a pipe without a reader
        bool full_output = false;       ///< standard output is a device without space
        std::vector<int> closed;        ///< standard streams, 0 to 2, that are closed at the start
        unsigned long memory_limit = 0; ///< bytes of address space; 0 for no limit
        unsigned long file_limit = 0;   ///< size of written files in bytes; 0 for no limit
        unsigned long stack_limit = 0;  ///< bytes of stack; 0 for that of the test
        unsigned long open_files = 0;   ///< at the same time; 0 for no limit
    };

    explicit Process(const std::vector<std::string>& words) : Process(words, Setup()) {}
    Process(const std::vector<std::string>& words, const Setup& setup);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void send(int signal) const;
    /// Process id; it is part of the names of temporary files.
    pid_t id() const { return id_; }
    /// Reads the program's output until it ends.
    Ended wait();
    /// Waits for the end of the program without reading its output. If the program is still running
    /// after `time`, kills it and returns false.
    bool ends_within(std::chrono::milliseconds time);

private:
    pid_t id_ = -1;
    bool is_collected_ = false; ///< by ends_within; status_ holds the result
    int status_ = 0;
    int out_ = -1, err_ = -1;
};

/// Starts the program and waits until it ends.
Ended run(const std::vector<std::string>& words, const Process::Setup& setup = {});

} // namespace test
