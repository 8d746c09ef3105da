#include "app/command.h"
#include "app/interrupt.h"

#include <cstdio>
#include <cstring>
#include <utility>

namespace app {

namespace {
std::function<void(const std::string&)> g_listener;

/// Whether a line end is one of the sentence's own: what follows is set in, or names the help. Any
/// other comes from a name, which must not look like a message of the program.
bool continues(const std::string& text, size_t line_end) {
    for (const char* start : {"  ", "see 'tessora "})
        if (text.compare(line_end + 1, std::strlen(start), start) == 0)
            return true;
    return false;
}

std::string without_commands(std::string text, bool has_lines) {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if (c == '\t' || (c == '\n' && has_lines && continues(text, i)))
            continue;
        if (c < 32 || c == 127)
            text[i] = '?';
        else if (c == 0xC2 && next >= 0x80 && next < 0xA0)
            text.replace(i, 2, "?");
    }
    return text;
}
} // namespace

std::string one_line(const std::string& text) { return without_commands(text, false); }

void set_talk_listener(std::function<void(const std::string&)> listener) {
    g_listener = std::move(listener);
}

void say(const std::string& sentence) {
    if (g_listener)
        return g_listener(sentence);
    std::fprintf(stderr, "%stessora: %s\n", terminal_line_open() ? "\r\033[K" : "",
                 without_commands(sentence, true).c_str());
    set_terminal_line_open(false);
}

const char* version() { return TESSORA_VERSION; }

} // namespace app
