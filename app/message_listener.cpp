#include "app/message_listener.h"

#include "app/command.h"

#include <iostream>

namespace app {

MessageListener::MessageListener(bool is_silent)
    : lines_([this](const std::string& line) { print(line); }),
      error_stream_(std::cerr.rdbuf(&lines_)), is_silent_(is_silent) {
    host::set_notice_listener(this);
}

MessageListener::~MessageListener() {
    lines_.end_line();
    std::cerr.rdbuf(error_stream_);
    host::set_notice_listener(nullptr);
}

bool MessageListener::show(const char*, const char* text) {
    for (; *text; ++text)
        lines_.sputc(*text);
    lines_.end_line();
    return true;
}

void MessageListener::print(const std::string& line) {
    if (line.empty())
        return;
    last_ = line;
    for (const char* words : k_memory_words)
        ran_out_of_memory_ |= line.find(words) != line.npos;
    if (!is_silent_)
        say(last_);
}

} // namespace app
