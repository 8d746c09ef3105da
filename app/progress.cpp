#include "app/progress.h"

#include "app/command.h"
#include "app/interrupt.h"
#include "app/system.h"

#include <algorithm>
#include <cstdio>

namespace app {

Progress::Style Progress::style_for_stderr(bool quiet) {
    if (quiet)
        return silent;
    return is_terminal_error() ? bar : lines;
}

Progress::Progress(Style style, std::string name) : style_(style), name_(std::move(name)) {}

void Progress::begin_stage(const std::string& stage) {
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

void Progress::set_percent(int percent) {
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

void Progress::draw() const {
    // The last column stays free: writing into it makes some terminals move on.
    const std::string text = progress_bar(name_, stage_, percent_, terminal_columns() - 1);
    set_terminal_line_open(true);
    std::fprintf(stderr, "\r%s\033[K", text.c_str());
    std::fflush(stderr);
}

void Progress::clear() {
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
