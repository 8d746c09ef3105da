/// Child processes that read requests on standard input and write answers, a line each, on standard
/// output. Standard error is shared. One source per system.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace app {

class ChildProcess {
public:
    ChildProcess();
    /// Ends the child at once if it still runs.
    ~ChildProcess();
    ChildProcess(ChildProcess&&) noexcept;
    ChildProcess& operator=(ChildProcess&&) noexcept;

    /// Starts a program; words[0] is its file. Ends a previous child at once. The child ends when
    /// this process does, also by a crash.
    /// Errors: false with a sentence in `error`.
    bool start(const std::vector<std::string>& words, std::string& error);
    bool is_running() const;

    /// Writes a line and its end; waits if the child does not read. Returns false if it has ended,
    /// also where SIGPIPE is not ignored.
    bool send(const std::string& line);
    /// Writes bytes as they are, like `send`.
    bool send_bytes(const std::string& bytes);
    /// Closes the child's standard input, on which it ends of its own accord.
    void close_input();
    /// Asks the child to end, so that it can remove its unfinished files.
    void terminate();
    /// Ends the child at once.
    void kill();

    /// The file that the child writes to, for poll(); -1 without a child, once it has closed it,
    /// and on Windows.
    int output_file() const;

    /// Takes the next complete line that the child has written; false if there is none yet.
    bool take_line(std::string& line);
    /// Takes all that the child has written so far and that no line took.
    std::string take_bytes() { return std::exchange(received_, std::string()); }
    /// Collects the child if it has ended and all it wrote has been received. `how` tells how:
    /// "with code 3" or "by signal 11". Returns false while it runs.
    bool has_ended(std::string& how);

    struct Process;

private:
    friend void wait_for_children(const std::vector<ChildProcess*>& children, int milliseconds);
    std::unique_ptr<Process> process_;
    std::string received_; ///< not yet taken
};

/// Receives what the children write. Returns when one of them has written or ended, when a signal
/// came, or after the time.
void wait_for_children(const std::vector<ChildProcess*>& children, int milliseconds);

} // namespace app
