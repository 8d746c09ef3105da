/// The command line of `tessora view`, which every build explains, with a window or without.
#pragma once

#include "app/command_help.h"

#include <string>
#include <vector>

namespace app {

struct ViewRequest {
    std::string file;                    ///< mesh, scene or script to open; empty if none
    int width = 1440, height = 900;      ///< window size in pixels
    std::vector<std::string> statements; ///< script statements to run once the file is open
    std::string screenshot;              ///< PNG to write before closing; empty: stay open
    std::string display;                 ///< plain, charts, checker, stretch, density, or empty
    std::string places;                  ///< widget positions are written here (window/places.h)
    bool is_verbose = false;             ///< print how long startup took
    bool wants_help = false;             ///< print the help text and stop
};

/// Errors: false with a sentence in `error`. Does not look whether the file exists.
bool parse_view_request(const std::vector<std::string>& words, ViewRequest& request,
                        std::string& error);
/// The text of `tessora view --help`.
CommandHelp view_help();

} // namespace app
