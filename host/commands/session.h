/// Runs scripts on the scene: one interpreter with all commands of the host.
///
/// Each statement of a text passed to `run` is one entry of the undo queue. There is one session,
/// as there is one scene.
#pragma once

#include "host/commands/commands_ui.h"
#include "host/commands/option_variables.h"
#include "host/graph/script_host.h"
#include "host/script/interpreter.h"

#include <functional>
#include <memory>
#include <string>

namespace host::script {

class MHOST_EXPORT Session : private graph::ScriptHost {
public:
    /// Created on first use. Prints to standard output, warnings and errors to standard error.
    static Session& current();

    Interpreter& interpreter() { return interpreter_; }
    UiState& ui() { return *ui_; }
    /// Null restores the standard streams. Not owned.
    void set_output(Output* output) { output_.target = output; }
    /// Called by `quit` with the exit code; if empty, `quit` ends the process.
    std::function<void(int)> on_quit;
    /// Called after a plug-in's command succeeded, with its arguments as typed.
    std::function<void(const std::string& name, const StringArray& arguments)> on_plugin_command;

    /// Runs a text and reports its error, if any, to the output. If not `undoable`, it makes no
    /// undo entries.
    struct Outcome {
        bool ok = false;
        Value value;
        std::string error; ///< FILE:LINE:COLUMN: TEXT
    };
    Outcome run(const std::string& text, const std::string& file, bool undoable = true);

private:
    Session();
    void add_session_commands();

    Value run_plugin_command(Invocation& call);
    void show_held_error();

    // graph::ScriptHost: scripts and messages from plug-ins.
    MStatus execute(const std::string& text, bool display, bool undoable,
                    graph::CommandResult& result) override;
    MStatus source(const std::string& file) override;
    void show(graph::Severity severity, const std::string& text) override;
    void command_added(const std::string& name) override;
    void command_removed(const std::string& name) override;

    /// Output of the interpreter, forwarded to a target that can change.
    struct Forward : Output {
        void print(const std::string& text) override;
        void warning(const std::string& text) override;
        void error(const std::string& text) override;
        Output* target = nullptr;
    } output_;
    Interpreter interpreter_;
    std::shared_ptr<UiState> ui_;
    std::shared_ptr<OptionVariables> options_;
    bool undoable_ = true;
    /// The last error that a running plug-in's command showed. Held back, because it becomes the
    /// error of the statement if the command fails.
    std::string held_error_;
    int plugin_commands_ = 0; ///< running, one inside the other
};

} // namespace host::script
