// The command `tessora view`: runs the window.
#include "app/view_command.h"

#include "app/exit_code.h"
#include "app/view_options.h"
#include "window/application.h"

#include <cstdio>
#include <filesystem>

namespace app {

int view_command(const Words& words) {
    ViewRequest request;
    std::string error;
    if (!parse_view_request(words, request, error)) {
        say(error + "\nsee 'tessora view --help'");
        return exit_usage;
    }
    if (request.wants_help) {
        std::fputs(view_help().text().c_str(), stdout);
        return exit_done;
    }
    std::error_code failure;
    if (!request.file.empty() && !std::filesystem::is_regular_file(request.file, failure)) {
        say(request.file + ": there is no such file");
        return exit_input;
    }
    window::Application application(request, error);
    if (!error.empty()) {
        say(error);
        return exit_unexpected;
    }
    return application.run() ? exit_done : exit_unexpected;
}

} // namespace app
