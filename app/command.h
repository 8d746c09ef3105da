/// The program's subcommands. Each has its own source file; main.cpp holds the table of them.
#pragma once

#include "app/command_help.h"

#include <functional>
#include <string>
#include <vector>

namespace app {

/// The words of the command line after the command's name.
using Words = std::vector<std::string>;

struct Command {
    const char* name;
    const char* summary; ///< one line of `tessora --help`
    /// Runs the command, prints its messages and returns the process's exit code (exit_code.h).
    /// Errors: std::bad_alloc, which the caller reports.
    int (*run)(const Words& words);
    CommandHelp (*help)();
};

/// A text, such as the name of a file, as it can be printed within a line: characters that command
/// a terminal, the control characters of ASCII and those from U+0080 to U+009F, become question
/// marks.
std::string one_line(const std::string& text);

/// Prints "tessora: SENTENCE" and a line end to standard error, or passes it to the listener. Of
/// the characters that command a terminal it prints only the ends of lines after which the sentence
/// goes on, set in by two blanks or with "see 'tessora".
void say(const std::string& sentence);
/// Sets who receives the sentences instead of standard error; empty for nobody.
void set_talk_listener(std::function<void(const std::string& sentence)> listener);

/// The product's version, as the plug-in registers it with the host.
const char* version();

} // namespace app
