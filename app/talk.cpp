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
    std::string shown = sentence;
    for (char& c : shown) // names of files may have characters that command a terminal
        if (static_cast<unsigned char>(c) < 32 && c != '\n' && c != '\t')
            c = '?';
    std::fprintf(stderr, "%stessora: %s\n", terminal_line_open() ? "\r\033[K" : "", shown.c_str());
    set_terminal_line_open(false);
}

const char* version() { return TESSORA_VERSION; }

} // namespace app
