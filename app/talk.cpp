#include "app/command.h"
#include "app/interrupt.h"

#include <cstdio>

namespace app {

void say(const std::string& sentence) {
    std::fprintf(stderr, "%stessora: %s\n", terminal_line_open() ? "\r\033[K" : "",
                 sentence.c_str());
    set_terminal_line_open(false);
}

const char* version() { return TESSORA_VERSION; }

} // namespace app
