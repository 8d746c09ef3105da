/// Runs the script language: variables, expressions, control flow, procedures, and the table of
/// commands that the host and its plug-ins add.
///
/// Not thread-safe. Errors are thrown as ScriptError with file, line and column; the caller of
/// `run` reports them. A text is parsed completely before its first statement runs, so a syntax
/// error has no side effects.
#pragma once

#include "host/script/ast.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

namespace host::script {

class Interpreter;

/// Receives the output of scripts.
class MHOST_EXPORT Output {
public:
    virtual ~Output() = default;
    virtual void print(const std::string& text) = 0;   ///< as is, no newline added
    virtual void warning(const std::string& text) = 0; ///< one line, without a prefix
    virtual void error(const std::string& text) = 0;   ///< one line, starts with FILE:LINE:COLUMN
};

/// One call of a command.
struct MHOST_EXPORT Invocation {
    Interpreter& interpreter;
    std::string name;
    std::vector<Value> arguments; ///< arrays unexpanded; flags as strings with their dash
    /// The command is only asked what it takes: where it would read its arguments, it throws a
    /// CommandSyntax.
    bool describes = false;
    /// The arguments with each array replaced by its elements, as commands (not functions) take
    /// them.
    std::vector<Value> expanded() const;
};

/// A flag of a command, for its description.
struct DescribedFlag {
    std::string short_name, long_name; ///< without the dash
    std::string values;                ///< words such as "int float"; empty if it takes no value
    std::string modes;                 ///< letters: c create, q query, e edit
};

/// What a command takes. Thrown by commands that are asked to describe themselves; no exception
/// handler of the language catches it.
struct CommandSyntax {
    std::vector<DescribedFlag> flags;
    std::string arguments; ///< number of arguments, "1" or "0 to 2"; empty if the flags tell
};

/// Throws ScriptFault to fail.
using Command = std::function<Value(Invocation&)>;

class MHOST_EXPORT Interpreter {
public:
    explicit Interpreter(Output& output);

    /// Runs statements at global scope. Returns the result of the last one. Throws ScriptError.
    Value run(std::string_view text, const std::string& file);
    /// Runs a file, looked up as given and then on the script path. Throws ScriptFault if not
    /// found.
    void source(const std::string& name);
    /// Calls a procedure or command by name, as a statement would.
    Value call(const std::string& name, std::vector<Value> arguments);

    /// `is_from_plugin`: the command does not belong to the host.
    void add_command(const std::string& name, Command command, bool is_from_plugin = false);
    bool is_from_plugin(const std::string& name) const { return from_plugins_.count(name) != 0; }
    bool remove_command(const std::string& name);

    enum class Known { no, command, procedure, script };
    Known find(const std::string& name) const;
    /// The file that defines a procedure, else the NAME.mel found on the script path, else empty.
    std::string place_of(const std::string& name) const;

    /// Directories searched in order for the NAME.mel that defines an unknown procedure NAME.
    std::vector<std::string>& script_path() { return script_path_; }
    Output& output() { return output_; }
    /// Called around every statement of the outermost text, to make it an undo entry. Receives the
    /// name of the command or procedure that the statement calls (empty if it is no call) and must
    /// call `run`.
    using Wrapper = std::function<void(const std::string& name, const std::function<void()>& run)>;
    void set_wrapper(Wrapper wrapper) { wrapper_ = std::move(wrapper); }
    /// What a command takes. Runs nothing. Throws ScriptFault if there is no such command.
    CommandSyntax describe(const std::string& name);
    /// Asked before every statement and every turn of a loop; if it answers true, the script ends
    /// with the error "Interrupted.". Null: never.
    void set_stop(std::function<bool()> stop) { stop_ = std::move(stop); }
    /// Names of all commands in byte order, for completion.
    std::vector<std::string> command_names() const;
    /// Names of global variables in byte order, without the dollar sign.
    std::vector<std::string> variable_names() const;

private:
    struct Variable {
        Type type;
        Value value;
    };
    using VariablePtr = std::shared_ptr<Variable>;
    using Scope = std::vector<std::pair<std::string, VariablePtr>>;
    struct UnitState;
    using UnitPtr = std::shared_ptr<UnitState>;
    struct Procedure {
        UnitPtr unit;
        SyntaxNodePtr node; ///< null if not found
    };
    struct UnitState {
        std::shared_ptr<const Unit> unit;
        std::unordered_map<std::string, SyntaxNodePtr>
            locals; ///< procedures local to the file, by name
    };
    struct Frame {
        UnitPtr unit;
        bool top =
            false; ///< at global scope: names not found in `scopes` are looked up in globals_
        Type result_type;
        Value result;
        std::vector<Scope> scopes;
    };
    enum class Flow { normal, break_, continue_, return_ };
    class ScopeGuard;

    // interpreter.cpp: statements and calls
    Flow execute_top(const SyntaxNodePtr& statement);
    Flow execute(const SyntaxNode& node);
    Flow execute_kind(const SyntaxNode& node);
    Flow execute_block(const SyntaxNode& node);
    Flow execute_for(const SyntaxNode& node);
    Flow execute_for_in(const SyntaxNode& node);
    Flow execute_while(const SyntaxNode& node);
    Flow execute_switch(const SyntaxNode& node);
    size_t find_case(const SyntaxNode& node, const Value& value);
    Flow execute_return(const SyntaxNode& node);
    void declare(const SyntaxNode& node);
    void declare_one(const SyntaxNode& item, bool global);
    Value zero_matrix(const SyntaxNode& item);
    void define(const SyntaxNodePtr& node);
    Value call_node(const SyntaxNode& node);
    Value call_procedure(const Procedure& procedure, std::vector<Value> arguments);
    Procedure find_procedure(const std::string& name) const;
    std::string find_script(const std::string& name) const;

    // interpreter_expressions.cpp
    /// Without `is_used` the result may be left out: copying a long text for nothing takes long.
    Value evaluate(const SyntaxNode& node, bool is_used = true);
    Value evaluate_kind(const SyntaxNode& node, bool is_used);
    Value evaluate_chain(const SyntaxNode& node);
    Value evaluate_link(const SyntaxNode& node, const Value& left);
    static Value evaluate_component(const SyntaxNode& node, const Value& base);
    Value evaluate_unary(const SyntaxNode& node);
    Value evaluate_logical(const SyntaxNode& node, const Value& left);
    Value evaluate_element(const SyntaxNode& node, const Value& base);
    Value evaluate_array(const SyntaxNode& node);
    Value evaluate_vector(const SyntaxNode& node);
    Value evaluate_assign(const SyntaxNode& node, bool is_used);
    Value evaluate_increment(const SyntaxNode& node);
    Value evaluate_catch(const SyntaxNode& node);
    void store(const SyntaxNode& target, const Value& value);
    void store_element(const SyntaxNode& target, const Value& value);
    VariablePtr find_variable(const std::string& name) const;
    VariablePtr find_global(const std::string& name) const;
    static VariablePtr find_in(const Scope& scope, const std::string& name);
    Variable& variable(const std::string& name) const;
    Variable& new_variable(const std::string& name, Type type);

    Output& output_;
    std::unordered_map<std::string, VariablePtr> globals_;
    std::unordered_map<std::string, Procedure> procedures_;
    std::map<std::string, Command> commands_;
    std::set<std::string> from_plugins_;
    std::vector<std::string> script_path_;
    Wrapper wrapper_;
    std::function<bool()> stop_;
    Frame* frame_ = nullptr;
    const SyntaxNode* top_statement_ = nullptr; ///< the only one whose result is used
    Value last_;
    int depth_ = 0;
};

/// Returns `left op right` for the operators + - * / % ^ == != < > <= >=. Throws ScriptFault if the
/// operand types do not fit.
MHOST_EXPORT Value apply(const std::string& op, const Value& left, const Value& right);

/// Adds the functions of the language itself: strings, arrays, mathematics, eval, source.
void add_language_functions(Interpreter& interpreter);

/// Returns the content of a script file. Throws ScriptFault if it cannot be read or is too large.
MHOST_EXPORT std::string read_script(const std::string& path);

} // namespace host::script
