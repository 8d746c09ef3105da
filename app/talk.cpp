#include "app/command.h"
#include "app/interrupt.h"

#include <cstdio>
#include <utility>

namespace app {

namespace {
std::function<void(const std::string&)> g_listener;

/// Names of files may have characters that command a terminal: the control characters of ASCII, and
/// those from U+0080 to U+009F, which are C2 80 to C2 9F in UTF-8. Each becomes a question mark.
std::string without_commands(std::string text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        if ((c < 32 && c != '\n' && c != '\t') || c == 127)
            text[i] = '?';
        else if (c == 0xC2 && next >= 0x80 && next < 0xA0)
            text.replace(i, 2, "?");
    }
    return text;
}
} // namespace

void set_talk_listener(std::function<void(const std::string&)> listener) {
    g_listener = std::move(listener);
}

void say(const std::string& sentence) {
    if (g_listener)
        return g_listener(sentence);
    std::fprintf(stderr, "%stessora: %s\n", terminal_line_open() ? "\r\033[K" : "",
                 without_commands(sentence).c_str());
    set_terminal_line_open(false);
}

const char* version() { return TESSORA_VERSION; }

} // namespace app
