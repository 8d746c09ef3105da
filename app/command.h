/// The program's commands. Each has a file of its own; main.cpp holds the table.
#pragma once

#include <string>
#include <vector>

namespace app {

/// The words of the command line after the command's name.
using Words = std::vector<std::string>;

struct Command {
    const char* name;
    const char* summary; ///< one line of `tessora --help`
    /// Runs the command and gives the process's exit code (exit_code.h). Messages have been
    /// written; memory that runs out may come up as std::bad_alloc, which the caller reports.
    int (*run)(const Words& words);
};

/// Text for a person on standard error: "tessora: " and the sentence, with a line end.
void say(const std::string& sentence);

/// The product's version, as the plug-in registers it with the host.
const char* version();

} // namespace app
