/// Hears what the host, and the plug-in inside it, say during an unwrap, and passes it on to the
/// person at the command line.
#pragma once

#include "app/progress.h"
#include "host/view/notices.h"
#include "host/view/progress_window.h"

#include <chrono>
#include <map>
#include <streambuf>
#include <string>

namespace app {

/// Shows the host's progress window as the program's progress, and takes the time of every stage
/// that the window names.
class StageListener : public host::ProgressListener {
public:
    explicit StageListener(Progress& progress);
    ~StageListener();
    StageListener(const StageListener&) = delete;
    StageListener& operator=(const StageListener&) = delete;

    void changed(const host::ProgressState& state) override;
    bool is_cancelled() override { return false; }

    /// Ends the stage that is running. Called once, after the unwrap.
    void finish();
    /// Seconds by the stage's name as the person sees it.
    const std::map<std::string, double>& seconds() const { return seconds_; }

private:
    using Clock = std::chrono::steady_clock;

    Progress& progress_;
    std::string stage_;
    int percent_ = 0;
    Clock::time_point begin_;
    std::map<std::string, double> seconds_;
};

/// Prints message boxes and what is written to the error stream as lines of the program's own, so
/// that they neither wait for anybody nor run into the progress bar, and keeps the last of them.
class MessageListener : public host::NoticeListener, private std::streambuf {
public:
    MessageListener();
    ~MessageListener() override;
    MessageListener(const MessageListener&) = delete;
    MessageListener& operator=(const MessageListener&) = delete;

    bool show(const char* caption, const char* text) override;

    /// The last line heard, or "".
    const std::string& last() const { return last_; }

private:
    int_type overflow(int_type character) override;
    void pass_on();

    std::streambuf* error_stream_;
    std::string line_;
    std::string last_;
};

} // namespace app
