/// Tells a person how far a long piece of work is: a bar that is redrawn on a terminal, plain lines
/// (stage changes, and at most one percentage a second) for logs, nothing when told to be quiet.
#pragma once

#include <chrono>
#include <string>

namespace app {

class Progress {
public:
    enum Style { silent, bar, lines };

    /// What suits standard error: a bar on a terminal that can move its cursor, else lines.
    static Style style_for_stderr(bool quiet);

    /// `name` says in every line what is worked on.
    Progress(Style style, std::string name);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void begin_stage(const std::string& stage);
    /// 0 to 100 within the stage. Cheap when nothing changed.
    void set_percent(int percent);
    /// Takes the bar off the terminal.
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

/// The bar's text, at most `columns` wide.
std::string progress_bar(const std::string& name, const std::string& stage, int percent,
                         int columns);

} // namespace app
