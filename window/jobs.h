/// Queue of script statements; guarantees that no statement starts while another runs.
///
/// The window never runs statements while it draws: menus, buttons and fields enqueue them here,
/// and the main loop runs them between frames. A running statement may cause further frames (to
/// show its progress); statements enqueued from those are refused.
#pragma once

#include <deque>
#include <functional>
#include <string>

namespace window {

class Jobs {
public:
    /// Runs one entry and reports its result to the user.
    using Run = std::function<void(const std::string& statements)>;

    explicit Jobs(Run run) : run_(std::move(run)) {}

    /// Appends statements to the queue. Refused (returns false) while a job runs: the scene must
    /// not change during an evaluation.
    bool add(const std::string& statements);
    /// Runs all entries in order. Refused (returns false) from inside a job.
    bool run_all();

    /// Drops the entries that wait; the running one goes on.
    void clear() { waiting_.clear(); }

    bool is_empty() const { return waiting_.empty(); }

private:
    Run run_;
    std::deque<std::string> waiting_;
    bool is_running_ = false;
};

} // namespace window
