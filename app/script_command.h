/// Scripts at the command line: a file, a text, a prompt.
#pragma once

#include "app/command.h"

namespace app {

/// `tessora script FILE.mel [arguments]`: runs a file; the arguments are the script's global array
/// $argv. Exit codes: 0, 1 after an error, 3 when the file cannot be read, or what `quit` says.
int script_command(const Words& words);

/// `tessora -c 'statements'`: runs a text and prints its result.
int text_command(const Words& words);

/// `tessora shell`: a prompt with history, line editing and completion on a terminal; elsewhere it
/// reads statements from standard input.
int shell_command(const Words& words);

} // namespace app
