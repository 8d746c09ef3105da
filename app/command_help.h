/// What a command says of itself: for --help, the manual and completion.
#pragma once

#include "app/options.h"

#include <string>
#include <vector>

namespace app {

struct CommandHelp {
    /// Paragraphs, the first "usage: ...", then what the command is for, then "examples:".
    std::string usage;
    OptionTable options;
    std::string notes;                   ///< more paragraphs, "exit codes: ..." last; may be empty
    std::vector<std::string> verbs = {}; ///< what the first operand can be, if not a file

    /// The text of --help.
    std::string text() const { return usage + "\n" + options.help() + notes; }
};

} // namespace app
