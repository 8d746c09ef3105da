/// Commands that plug-ins register: the table of commands, running one, undoing and redoing it.
#pragma once

#include "host/graph/edits.h"
#include "host/graph/script_host.h"

#include <map>
#include <string>
#include <vector>

class MArgList;
class MPxCommand;
class MSyntax;

namespace host::graph {

/// A flag of a command, for its description.
struct CommandFlag {
    std::string short_name, long_name; ///< without the dash
    std::string values;                ///< words such as "int float"; empty if it takes no value
};

class MHOST_EXPORT Commands {
public:
    using Creator = void* (*)();
    using SyntaxCreator = MSyntax (*)();

    static Commands& current();

    /// Errors: kInvalidParameter if the name is empty or already in use.
    MStatus add(const std::string& name, Creator creator, SyntaxCreator syntax);
    MStatus remove(const std::string& name);
    bool knows(const std::string& name) const { return table_.count(name) != 0; }
    std::vector<std::string> names() const;

    /// Runs a command with its arguments as typed, flags included. A command that succeeds and is
    /// undoable is put on the undo queue together with the scene edits that the host recorded while
    /// it ran. Undo calls the command's undoIt and then reverts those edits; redo re-applies the
    /// edits and then calls redoIt.
    /// Errors: kUnknownParameter for an unknown name; kInsufficientMemory if the creator returns
    ///         NULL; otherwise the status of doIt.
    MStatus run(const std::string& name, const std::vector<std::string>& arguments,
                CommandResult& result);

    /// The result of the running command, or else of the last command that was run, undone or
    /// redone.
    CommandResult& result() { return result_; }
    /// The syntax that a command was registered with; empty if it has none.
    MSyntax syntax_of(const std::string& name) const;
    /// The flags of that syntax, in order of declaration.
    std::vector<CommandFlag> flags_of(const std::string& name) const;

    /// Called by the undo queue.
    MStatus undo(MPxCommand& command);
    MStatus redo(MPxCommand& command);

private:
    struct Registration {
        Creator creator;
        SyntaxCreator syntax;
    };
    MStatus do_it(MPxCommand& command, const MArgList& arguments, bool is_nested,
                  CommandResult& result);
    std::map<std::string, Registration> table_;
    CommandResult result_;
};

} // namespace host::graph
