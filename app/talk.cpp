#include "app/command.h"
#include "app/interrupt.h"

#include <cstdio>
#include <utility>

namespace app {

namespace {
std::function<void(const std::string&)> g_listener;
}

void set_talk_listener(std::function<void(const std::string&)> listener) {
    g_listener = std::move(listener);
}

void say(const std::string& sentence) {
    if (g_listener)
        return g_listener(sentence);
    std::fprintf(stderr, "%stessora: %s\n", terminal_line_open() ? "\r\033[K" : "",
                 sentence.c_str());
    set_terminal_line_open(false);
}

const char* version() { return TESSORA_VERSION; }

} // namespace app
