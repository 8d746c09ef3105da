/// What the program adds to the host's session: its own parts, and where they are.
#pragma once

#include <string>

namespace app {

/// Adds the program's own script command, polyLayoutUV, and the folders of the plug-in and of its
/// scripts to the host's search paths: beside the program (build tree), and ../lib/tessora and
/// ../share/tessora/scripts (installation). The folders in MAYA_SCRIPT_PATH and MAYA_PLUG_IN_PATH
/// come first; the current directory is not searched. Later calls do nothing.
void set_up_session();

/// Loads the plug-in from those folders, unless it is loaded already.
/// Errors: false with a sentence in `error`.
bool load_plugin(std::string& error);

} // namespace app
