/// Progress on standard error: a bar redrawn in place on a terminal; plain lines for logs (each
/// stage, and at most one percentage per second); or nothing.
#pragma once

#include <chrono>
#include <string>

namespace app {

class ProgressDisplay {
public:
    enum Style { silent, bar, lines };

    /// `silent` if quiet; `bar` if standard error is a terminal that can move its cursor; else
    /// `lines`.
    static Style style_for_stderr(bool quiet);

    /// `name` is the file being processed; every line shows it.
    ProgressDisplay(Style style, std::string name);
    ~ProgressDisplay() { clear(); }
    ProgressDisplay(const ProgressDisplay&) = delete;
    ProgressDisplay& operator=(const ProgressDisplay&) = delete;

    void begin_stage(const std::string& stage);
    /// Percentage of the current stage, 0 to 100. Cheap if it has not changed.
    void set_percent(int percent);
    /// Clears the bar from the terminal.
    void clear();

private:
    using Clock = std::chrono::steady_clock;
    void draw() const;

    Style style_;
    std::string name_;
    std::string stage_;
    int percent_ = 0;
    Clock::time_point last_line_;
};

/// The bar's text, cut to `columns` characters.
std::string progress_bar(const std::string& name, const std::string& stage, int percent,
                         int columns);

} // namespace app
