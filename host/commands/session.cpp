#include "host/commands/session.h"

#include "host/base/restore.h"
#include "host/commands/commands.h"
#include "host/commands/help.h"
#include "host/graph/command_registry.h"
#include "host/graph/plugins.h"
#include "host/graph/undo.h"
#include "host/script/functions.h"
#include "host/ui/panels.h"

#include <cstdlib>
#include <iostream>
#include <utility>

namespace host::script {

void Session::Forward::print(const std::string& text) {
    if (target)
        target->print(text);
    else
        std::cout << text << std::flush;
}

void Session::Forward::warning(const std::string& text) {
    if (target)
        target->warning(text);
    else
        std::cerr << "// Warning: " << text << std::endl;
}

void Session::Forward::error(const std::string& text) {
    if (target)
        target->error(text);
    else
        std::cerr << "// Error: " << text << std::endl;
}

namespace {

Value value_of(const graph::CommandResult& result) {
    using Kind = graph::CommandResult::Kind;
    switch (result.kind) {
    case Kind::integer:
        if (result.is_array)
            return IntArray(result.integers.begin(), result.integers.end());
        return int32_t(result.integers[0]);
    case Kind::real:
        if (result.is_array)
            return result.reals;
        return result.reals[0];
    case Kind::text:
        if (result.is_array)
            return result.texts;
        return result.texts[0];
    case Kind::none:
        break;
    }
    return Value();
}

graph::CommandResult result_of(const Value& value) {
    graph::CommandResult result;
    const Type type = value.type();
    result.is_array = type.array || type.basic == Basic::vector;
    switch (type.basic) {
    case Basic::integer:
        result.kind = graph::CommandResult::Kind::integer;
        for (size_t i = 0; i < value.size(); ++i)
            result.integers.push_back(type.array ? value.element(int32_t(i)).to_int()
                                                 : value.to_int());
        break;
    case Basic::real:
        result.kind = graph::CommandResult::Kind::real;
        for (size_t i = 0; i < value.size(); ++i)
            result.reals.push_back(type.array ? value.element(int32_t(i)).to_real()
                                              : value.to_real());
        break;
    case Basic::vector: {
        if (type.array)
            break;
        const Vector v = value.to_vector();
        result.kind = graph::CommandResult::Kind::real;
        result.reals = {v.x, v.y, v.z};
        break;
    }
    case Basic::string:
        result.kind = graph::CommandResult::Kind::text;
        result.texts = value.flattened();
        break;
    default:
        break;
    }
    return result;
}

} // namespace

Session& Session::current() {
    // Never destroyed, because plug-ins still loaded at exit may use it.
    static Session* const session = new Session;
    return *session;
}

Session::Session()
    : interpreter_(output_), ui_(std::make_shared<UiState>()),
      options_(std::make_shared<OptionVariables>(option_variable_file())) {
    add_option_variables(interpreter_, options_);
    add_ui_commands(interpreter_, ui_);
    add_attribute_commands(interpreter_);
    add_history_commands(interpreter_);
    add_list_commands(interpreter_);
    add_mesh_commands(interpreter_);
    add_node_commands(interpreter_);
    add_menu_commands(interpreter_);
    add_plugin_commands(interpreter_);
    add_transform_commands(interpreter_);
    add_uv_commands(interpreter_);
    add_uv_edit_commands(interpreter_);
    add_file_commands(interpreter_);
    add_help_command(interpreter_);
    add_session_commands();
    for (const std::string& name : graph::Commands::current().names())
        command_added(name);
    graph::set_script_host(this);
    interpreter_.set_wrapper([this](const std::string& name, const std::function<void()>& run) {
        // undo and redo must not make undo entries themselves.
        if (name == "undo" || name == "redo")
            return run();
        const graph::UndoFrame frame(name, undoable_);
        run();
    });
}

void Session::show_held_error() {
    if (!held_error_.empty())
        output_.error(std::exchange(held_error_, std::string()));
}

/// Runs a plug-in's command, which takes its arguments as text.
Value Session::run_plugin_command(Invocation& call) {
    if (call.describes) {
        CommandSyntax syntax;
        for (const graph::CommandFlag& flag : graph::Commands::current().flags_of(call.name))
            syntax.flags.push_back({flag.short_name, flag.long_name, flag.values, "c"});
        throw syntax;
    }
    StringArray arguments;
    for (const Value& value : call.expanded())
        arguments.push_back(value.to_string());
    graph::CommandResult result;
    ++plugin_commands_;
    const MStatus status = graph::Commands::current().run(call.name, arguments, result);
    --plugin_commands_;
    if (!status && !held_error_.empty())
        throw ScriptFault(call.name + ": " + std::exchange(held_error_, std::string()));
    if (!status)
        throw ScriptFault("The command \"" + call.name +
                          "\" failed: " + status.errorString().asChar() + ".");
    show_held_error();
    if (on_plugin_command)
        on_plugin_command(call.name, arguments);
    return value_of(result);
}

void Session::add_session_commands() {
    interpreter_.add_command("quit", [this](Invocation& call) -> Value {
        static const FlagTable table = {{"ec", "exitCode", "i"}, {"f", "force"}};
        const Flags flags(call, table);
        const int code = flags.integer("exitCode", 0);
        if (on_quit)
            on_quit(code);
        else
            std::exit(code);
        return Value();
    });
    interpreter_.add_command("refresh", [](Invocation& call) -> Value {
        static const FlagTable table = {{"f", "force"}, {"cv", "currentView"}};
        const Flags flags(call, table);
        flags.require_operands(0, 0);
        const int panel = flags.has("currentView") ? active_panel() : -1;
        if (panel_renderer())
            panel_renderer()->refresh(panel, flags.has("force"));
        return Value();
    });
    interpreter_.add_command("about", [](Invocation& call) -> Value {
        static const FlagTable table = {
            {"v", "version"}, {"b", "batch"}, {"api", "apiVersion"}, {"p", "product"}};
        const Flags flags(call, table);
        if (flags.has("batch"))
            return graph::Plugins::current().mode == graph::AppMode::batch;
        if (flags.has("apiVersion"))
            return int32_t(200800);
        return flags.has("product") ? "Tessora embedded host" : "2008";
    });
}

MStatus Session::execute(const std::string& text, bool display, bool undoable,
                         graph::CommandResult& result) {
    if (display)
        output_.print(text + "\n");
    // Nested: the statements belong to the undo entry of the statement that is running.
    const graph::UndoFrame frame("script", undoable);
    const Outcome outcome = run(text, "command", undoable);
    if (outcome.ok)
        result = result_of(outcome.value);
    return outcome.ok ? MS::kSuccess : MS::kFailure;
}

MStatus Session::source(const std::string& file) {
    try {
        interpreter_.source(file);
        return MS::kSuccess;
    } catch (const std::runtime_error& error) { // ScriptError or ScriptFault
        output_.error(error.what());
        return MS::kFailure;
    }
}

void Session::show(graph::Severity severity, const std::string& text) {
    show_held_error();
    if (severity == graph::Severity::error && plugin_commands_ > 0)
        held_error_ = text;
    else if (severity == graph::Severity::error)
        output_.error(text);
    else if (severity == graph::Severity::warning)
        output_.warning(text);
    else
        output_.print(text + "\n");
}

void Session::command_added(const std::string& name) {
    interpreter_.add_command(
        name, [this](Invocation& call) { return run_plugin_command(call); }, true);
}

void Session::command_removed(const std::string& name) { interpreter_.remove_command(name); }

Session::Outcome Session::run(const std::string& text, const std::string& file, bool undoable) {
    const Restore restore(undoable_);
    undoable_ = undoable_ && undoable;
    Outcome outcome;
    try {
        outcome.value = interpreter_.run(text, file);
        outcome.ok = true;
    } catch (const ScriptError& error) {
        outcome.error = error.what();
    } catch (const ScriptFault& fault) {
        outcome.error = file + ": " + fault.what();
    }
    if (!outcome.ok)
        output_.error(outcome.error);
    return outcome;
}

} // namespace host::script
