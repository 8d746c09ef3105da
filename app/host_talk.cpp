#include "app/host_talk.h"

#include "app/command.h"

#include <iostream>

namespace app {
namespace {

/// What the plug-in puts ahead of the names of its stages.
constexpr const char* k_stage_prefix = "Tessora: ";

} // namespace

StageListener::StageListener(Progress& progress) : progress_(progress) {
    host::set_progress_listener(this);
}

StageListener::~StageListener() { host::set_progress_listener(nullptr); }

void StageListener::changed(const host::ProgressState& state) {
    const std::string status = state.status.asChar();
    const size_t prefix = std::char_traits<char>::length(k_stage_prefix);
    if (status.compare(0, prefix, k_stage_prefix) == 0 && status.substr(prefix) != stage_) {
        finish();
        stage_ = status.substr(prefix);
        begin_ = Clock::now();
        percent_ = state.value; // left over from the stage before
        progress_.begin_stage(stage_);
    }
    if (state.value != percent_ && !stage_.empty()) {
        percent_ = state.value;
        progress_.set_percent(percent_);
    }
}

void StageListener::finish() {
    if (!stage_.empty())
        seconds_[stage_] += std::chrono::duration<double>(Clock::now() - begin_).count();
    stage_.clear();
}

MessageListener::MessageListener() : error_stream_(std::cerr.rdbuf(this)) {
    host::set_notice_listener(this);
}

MessageListener::~MessageListener() {
    pass_on();
    std::cerr.rdbuf(error_stream_);
    host::set_notice_listener(nullptr);
}

bool MessageListener::show(const char*, const char* text) {
    for (; *text; ++text)
        overflow(traits_type::to_int_type(*text));
    pass_on();
    return true;
}

MessageListener::int_type MessageListener::overflow(int_type character) {
    if (traits_type::eq_int_type(character, traits_type::eof()))
        return traits_type::not_eof(character);
    if (character == '\n')
        pass_on();
    else if (character != '\r')
        line_ += traits_type::to_char_type(character);
    return character;
}

void MessageListener::pass_on() {
    if (line_.empty())
        return;
    last_ = std::move(line_);
    line_.clear();
    say(last_);
}

} // namespace app
