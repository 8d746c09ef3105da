/// Where the program finds what belongs to it: the plug-in and the scripts that ship with it.
#pragma once

namespace app {

/// Adds the plug-in's and the scripts' places to the host's search paths: beside the program (a
/// build tree), and below ../lib/tessora and ../share/tessora (an installation). Directories of
/// MAYA_SCRIPT_PATH and the current directory's `scripts` come first. Once per process.
void set_search_paths();

} // namespace app
