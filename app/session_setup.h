/// Where the program finds its own parts: the plug-in and the scripts that ship with it.
#pragma once

#include <string>

namespace app {

/// Adds the folders of the plug-in and of its scripts to the host's search paths: beside the
/// program (build tree), and ../lib/tessora and ../share/tessora/scripts (installation). For
/// scripts, the current directory's `scripts` and the folders in MAYA_SCRIPT_PATH come first. Later
/// calls do nothing.
void set_search_paths();

/// Loads the plug-in from those folders, unless it is loaded already.
/// Errors: false with a sentence in `error`.
bool load_plugin(std::string& error);

} // namespace app
