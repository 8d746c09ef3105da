/// The commands `script`, `-c` and `shell`: run script statements from a file, a word or a prompt.
#pragma once

#include "app/command.h"

namespace app {

/// `tessora script FILE.mel [arguments]`: runs a file; the arguments are the script's global array
/// $argv. Exit codes: 0, 1 after an error, 3 if the file cannot be read, or the code given to
/// `quit`.
int script_command(const Words& words);

/// `tessora -c 'statements'`: runs the statements and prints the result of the last one.
int text_command(const Words& words);

/// `tessora shell`: on a terminal, a prompt with history, line editing and completion; otherwise
/// reads statements from standard input.
int shell_command(const Words& words);

CommandHelp script_help();
CommandHelp shell_help();

} // namespace app
