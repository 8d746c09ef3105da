// `tessora view` for builds without the window's libraries: prints an error.
#include "app/exit_code.h"
#include "app/view_command.h"

namespace app {

int view_command(const Words&) {
    say("this build has no window: it was made without GLFW and Dear ImGui "
        "(tools/setup.sh tools/packages-window.txt installs them; then build again)");
    return exit_unexpected;
}

} // namespace app
