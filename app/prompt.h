/// Lines that a person types at a terminal: with editing, completion and a history where the system
/// has a library for it.
#pragma once

#include <string>
#include <vector>

namespace app {

class Prompt {
public:
    /// Names that could stand at the cursor, asked for when the person wants a completion.
    using Names = std::vector<std::string> (*)();

    /// `history_file` keeps the lines between sessions; "" for none.
    Prompt(Names names, std::string history_file);
    /// False at the end of the input.
    bool read(const std::string& mark, std::string& line);
    /// Writes the history so far.
    void save_history() const;

private:
    std::string history_file_;
};

} // namespace app
