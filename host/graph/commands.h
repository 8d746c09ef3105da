/// Commands of plug-ins: their table, how one runs, how it comes back from the undo queue.
#pragma once

#include "host/graph/edits.h"
#include "host/graph/script_host.h"

#include <map>
#include <string>
#include <vector>

class MPxCommand;
class MSyntax;

namespace host::graph {

class MHOST_EXPORT Commands {
public:
    using Creator = void* (*)();
    using SyntaxCreator = MSyntax (*)();

    static Commands& current();

    /// kInvalidParameter when the name is empty or taken.
    MStatus add(const std::string& name, Creator creator, SyntaxCreator syntax,
                const std::string& plugin);
    MStatus remove(const std::string& name);
    bool knows(const std::string& name) const { return table_.count(name) != 0; }
    std::vector<std::string> names() const;
    std::vector<std::string> of_plugin(const std::string& plugin) const;

    /// Runs a command with its arguments as they were typed, flags included. When it succeeds and
    /// is undoable it goes to the undo queue together with what the host changed on its behalf
    /// (copies, deletions): undo first asks the command, then takes those back; redo the other way
    /// round. kUnknownParameter for a name that is not known; kInsufficientMemory when its creator
    /// gave none.
    MStatus run(const std::string& name, const std::vector<std::string>& arguments,
                CommandResult& result);

    /// Result of the command that runs now, or that ran, was undone or redone last.
    CommandResult& result() { return result_; }
    /// The syntax a command was registered with; an empty one without.
    MSyntax syntax_of(const std::string& name) const;

    /// Undo and redo of an instance, for the undo queue.
    MStatus undo(MPxCommand& command);
    MStatus redo(MPxCommand& command);

private:
    struct Entry {
        Creator creator;
        SyntaxCreator syntax;
        std::string plugin;
    };
    std::map<std::string, Entry> table_;
    CommandResult result_;
};

} // namespace host::graph
