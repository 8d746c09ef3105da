/// Reads lines typed at a terminal, with editing, completion and history where the system has a
/// library for them.
#pragma once

#include <string>
#include <vector>

namespace app {

class Prompt {
public:
    /// Returns all names that can be completed; called when the user presses Tab.
    using Names = std::vector<std::string> (*)();

    /// `history_file` keeps the lines between sessions; no history is kept if it is "".
    Prompt(Names names, std::string history_file);
    /// Reads a line, in UTF-8, after printing `mark`. Returns false at end of input. If Ctrl-C was
    /// noted (app/interrupt.h), the line is empty.
    bool read(const std::string& mark, std::string& line);
    /// Writes the history file.
    void save_history() const;

private:
    std::string history_file_;
};

} // namespace app
