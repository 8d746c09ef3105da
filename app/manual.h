/// Manual pages and completion scripts, made from the commands' options.
#pragma once

#include "app/command.h"

#include <string>
#include <vector>

namespace app {

/// The manual page of a command in roff, or of the program if `command` is null.
std::string manual_page(const std::vector<Command>& commands, const Command* command);

/// A script that completes the program's words in bash, zsh or fish; "" for another shell.
std::string completion_script(const std::vector<Command>& commands, const std::string& shell);

/// `tessora manual [COMMAND]` and `tessora completion SHELL` print these.
int manual_command(const std::vector<Command>& commands, const Words& words);
int completion_command(const std::vector<Command>& commands, const Words& words);

} // namespace app
