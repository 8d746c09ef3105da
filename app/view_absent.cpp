// `tessora view` for builds without the window's libraries: explains itself, and prints an error.
#include "app/exit_code.h"
#include "app/view_command.h"
#include "app/view_options.h"

#include <cstdio>

namespace app {

int view_command(const Words& words) {
    ViewRequest request;
    std::string error;
    if (parse_view_request(words, request, error) && request.wants_help) {
        std::fputs(view_help().text().c_str(), stdout);
        return exit_done;
    }
    say("this build has no window: it was made without GLFW and Dear ImGui "
        "(tools/setup.sh tools/packages-window.txt installs them; then build again)");
    return exit_unexpected;
}

} // namespace app
