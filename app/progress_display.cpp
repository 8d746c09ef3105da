#include "app/progress_display.h"

#include "app/command.h"
#include "app/interrupt.h"
#include "app/system.h"

#include <algorithm>
#include <cstdio>

namespace app {

ProgressDisplay::Style ProgressDisplay::style_for_stderr(bool quiet) {
    if (quiet)
        return silent;
    return is_terminal_error() ? bar : lines;
}

ProgressDisplay::ProgressDisplay(Style style, std::string name)
    : style_(style), name_(std::move(name)) {}

void ProgressDisplay::begin_stage(const std::string& stage) {
    if (stage == stage_)
        return;
    stage_ = stage;
    percent_ = 0;
    last_line_ = Clock::now();
    if (style_ == lines)
        say(name_ + ": " + stage_);
    else if (style_ == bar)
        draw();
}

void ProgressDisplay::set_percent(int percent) {
    percent = std::clamp(percent, 0, 100);
    if (percent == percent_)
        return;
    percent_ = percent;
    if (style_ == bar)
        draw();
    if (style_ != lines || Clock::now() - last_line_ < std::chrono::seconds(1))
        return;
    last_line_ = Clock::now();
    say(name_ + ": " + stage_ + " " + std::to_string(percent_) + "%");
}

void ProgressDisplay::draw() const {
    // The last column stays free: some terminals wrap after a character in it.
    const std::string text =
        progress_bar(one_line(name_), stage_, percent_, terminal_columns() - 1);
    set_terminal_line_open(true);
    std::fprintf(stderr, "\r%s\033[K", text.c_str());
    std::fflush(stderr);
}

void ProgressDisplay::clear() {
    if (!terminal_line_open())
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    set_terminal_line_open(false);
}

std::string progress_bar(const std::string& name, const std::string& stage, int percent,
                         int columns) {
    constexpr int width = 24;
    const int full = width * percent / 100;
    std::string text = "[" + std::string(static_cast<size_t>(full), '#') +
                       std::string(static_cast<size_t>(width - full), '-') + "] ";
    const std::string number = std::to_string(percent);
    text += std::string(3 - std::min<size_t>(3, number.size()), ' ') + number + "%  " + name +
            ": " + stage;
    return text.substr(0, static_cast<size_t>(std::max(columns, 0)));
}

} // namespace app
