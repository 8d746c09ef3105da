/// Statements that wait for their turn, and the promise that none starts inside another.
///
/// The window never runs anything while it draws: menus, buttons and fields put statements here,
/// and the main loop runs them between two frames. While one runs, the window may draw itself again
/// (the progress window asks for it), and whatever the user does then waits or is refused.
#pragma once

#include <deque>
#include <functional>
#include <string>

namespace window {

class Jobs {
public:
    /// Runs one text; gives its result to the user itself.
    using Run = std::function<void(const std::string& statements)>;

    explicit Jobs(Run run) : run_(std::move(run)) {}

    /// Puts statements at the end of the queue. While a job runs they are refused (false): what is
    /// evaluated must not be changed under its hands.
    bool add(const std::string& statements);
    /// Runs everything that waits, in order. Refused
    /// (false) from inside a job.
    bool run_all();

    bool is_running() const { return is_running_; }
    bool is_empty() const { return waiting_.empty(); }

private:
    Run run_;
    std::deque<std::string> waiting_;
    bool is_running_ = false;
};

} // namespace window
