#include "host/graph/command_registry.h"

#include "host/graph/undo.h"

#include <maya/MPxCommand.h>

namespace host::graph {

namespace {

/// A command on the undo queue, with the scene edits that were recorded while it ran.
class CommandEdit : public Edit {
public:
    CommandEdit(std::unique_ptr<MPxCommand> command, std::vector<EditPtr> edits)
        : command_(std::move(command)), edits_(std::move(edits)) {}

    MStatus undo() override {
        const MStatus status = Commands::current().undo(*command_);
        MStatus rest;
        for (auto edit = edits_.rbegin(); edit != edits_.rend(); ++edit) {
            const MStatus one = (*edit)->undo();
            rest = rest ? one : rest;
        }
        return status ? rest : status;
    }
    MStatus redo() override {
        MStatus status;
        for (const EditPtr& edit : edits_) {
            const MStatus one = edit->redo();
            status = status ? one : status;
        }
        const MStatus again = Commands::current().redo(*command_);
        return status ? again : status;
    }

private:
    std::unique_ptr<MPxCommand> command_;
    std::vector<EditPtr> edits_;
};

} // namespace

Commands& Commands::current() {
    static Commands* const commands = new Commands;
    return *commands;
}

MStatus Commands::add(const std::string& name, Creator creator, SyntaxCreator syntax) {
    if (name.empty() || creator == nullptr || knows(name))
        return MS::kInvalidParameter;
    table_[name] = {creator, syntax};
    if (script_host() != nullptr)
        script_host()->command_added(name);
    return MS::kSuccess;
}

MStatus Commands::remove(const std::string& name) {
    if (table_.erase(name) == 0)
        return MS::kInvalidParameter;
    if (script_host() != nullptr)
        script_host()->command_removed(name);
    return MS::kSuccess;
}

std::vector<std::string> Commands::names() const {
    std::vector<std::string> names;
    for (const auto& entry : table_)
        names.push_back(entry.first);
    return names;
}

MSyntax Commands::syntax_of(const std::string& name) const {
    const auto found = table_.find(name);
    if (found == table_.end() || found->second.syntax == nullptr)
        return MSyntax();
    return found->second.syntax();
}

MStatus Commands::run(const std::string& name, const std::vector<std::string>& arguments,
                      CommandResult& result) {
    const auto found = table_.find(name);
    if (found == table_.end())
        return MS::kUnknownParameter;
    std::unique_ptr<MPxCommand> command(static_cast<MPxCommand*>(found->second.creator()));
    if (!command)
        return MS::kInsufficientMemory;
    command->name_ = name.c_str();
    command->text_ = name.c_str();
    MArgList list;
    for (const std::string& argument : arguments) {
        list.addArg(MString(argument.c_str()));
        command->text_ += " ";
        command->text_ += argument.c_str();
    }

    UndoQueue& queue = UndoQueue::current();
    const bool is_nested = queue.has_frames();
    if (!is_nested)
        queue.open(name);
    const bool records = queue.is_recording();
    queue.open(name);
    const MStatus status = do_it(*command, list, is_nested, result);
    std::vector<EditPtr> edits = queue.take();
    if (status && command->isUndoable() && records) {
        queue.record(std::make_unique<CommandEdit>(std::move(command), std::move(edits)));
    } else if (status) {
        // A command that is not undoable still leaves the scene edits it caused on the undo queue.
        for (EditPtr& edit : edits)
            queue.record(std::move(edit));
    }
    if (!is_nested)
        queue.close();
    return status;
}

/// Calls doIt; afterwards an outer command that called this one has its own result again.
MStatus Commands::do_it(MPxCommand& command, const MArgList& arguments, bool is_nested,
                        CommandResult& result) {
    const CommandResult outer = result_;
    result_.clear();
    const MStatus status = command.doIt(arguments);
    result = result_;
    if (is_nested)
        result_ = outer;
    return status;
}

MStatus Commands::undo(MPxCommand& command) {
    result_.clear();
    return command.undoIt();
}

MStatus Commands::redo(MPxCommand& command) {
    result_.clear();
    return command.redoIt();
}

namespace {

const char* word_of(MSyntax::MArgType type) {
    switch (type) {
    case MSyntax::kBoolean:
        return "boolean";
    case MSyntax::kLong:
    case MSyntax::kUnsigned:
        return "int";
    case MSyntax::kDouble:
    case MSyntax::kDistance:
    case MSyntax::kAngle:
    case MSyntax::kTime:
        return "float";
    default:
        return "string";
    }
}

} // namespace

std::vector<CommandFlag> Commands::flags_of(const std::string& name) const {
    std::vector<CommandFlag> flags;
    const MSyntax syntax = syntax_of(name);
    for (const MSyntax::Flag& flag : syntax.host_flags()) {
        std::string values;
        for (const MSyntax::MArgType type : flag.arguments)
            values += std::string(values.empty() ? "" : " ") + word_of(type);
        flags.push_back({flag.short_name.asChar(), flag.long_name.asChar(), values});
    }
    return flags;
}

} // namespace host::graph
