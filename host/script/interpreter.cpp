#include "host/script/interpreter.h"

#include "host/base/read_text.h"
#include "host/base/restore.h"
#include "host/script/stack_limit.h"

#include <algorithm>
#include <fstream>

namespace host::script {

namespace {

/// Limit on nested calls. With a small stack the limit is lower (stack_limit.h).
constexpr int k_max_call_depth = 200;

bool readable(const std::string& path) {
    std::ifstream file(path);
    return file.good() && file.peek() != std::ifstream::traits_type::eof();
}

} // namespace

std::string read_script(const std::string& path) {
    std::string text;
    IoError error;
    if (!read_text(path == "-" ? "./-" : path, text, error)) // not standard input
        throw ScriptFault(error.kind == IoError::too_large
                              ? error.message + "."
                              : "Cannot read the file \"" + path + "\".");
    return text;
}

std::vector<Value> Invocation::expanded() const {
    std::vector<Value> values;
    values.reserve(arguments.size());
    for (const Value& value : arguments) {
        if (!value.type().array) {
            values.push_back(value);
            continue;
        }
        for (size_t i = 0; i < value.size(); ++i)
            values.push_back(value.element(int32_t(i)));
    }
    return values;
}

class Interpreter::ScopeGuard {
public:
    explicit ScopeGuard(Frame& frame) : frame_(frame) { frame_.scopes.emplace_back(); }
    ~ScopeGuard() { frame_.scopes.pop_back(); }
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;

private:
    Frame& frame_;
};

Interpreter::Interpreter(Output& output) : output_(output) { add_language_functions(*this); }

Value Interpreter::run(std::string_view text, const std::string& file) {
    auto state = std::make_shared<UnitState>();
    state->unit = parse(text, file);
    Frame frame;
    frame.unit = state;
    frame.top = true;
    const Restore restore_frame(frame_);
    const Restore restore_depth(depth_);
    const Restore restore_statement(top_statement_);
    if (++depth_ > k_max_call_depth || stack_is_low())
        throw ScriptError(file, Position(), "Scripts are nested too deeply.");
    frame_ = &frame;
    last_ = Value();
    for (const SyntaxNodePtr& statement : state->unit->body->items) {
        last_ = Value();
        top_statement_ = statement.get();
        if (execute_top(statement) == Flow::return_)
            return frame.result;
        if (statement->kind != SyntaxKind::expression) // only expressions have a result
            last_ = Value();
    }
    return last_;
}

namespace {

/// The command that a statement runs, or a block begins with; "script" for all others.
std::string name_of(const SyntaxNode& statement) {
    if (statement.kind == SyntaxKind::block && !statement.items.empty())
        return name_of(*statement.items.front());
    const bool is_expression = statement.kind == SyntaxKind::expression;
    const SyntaxNode& inner = is_expression ? statement[part::operand] : statement;
    return inner.kind == SyntaxKind::call ? inner.text : std::string("script");
}

} // namespace

Interpreter::Flow Interpreter::execute_top(const SyntaxNodePtr& statement) {
    Flow flow = Flow::normal;
    if (statement->kind == SyntaxKind::procedure) {
        define(statement);
    } else if (depth_ == 1 && wrapper_) {
        wrapper_(name_of(*statement), [&] { flow = execute(*statement); });
    } else {
        flow = execute(*statement);
    }
    return flow;
}

void Interpreter::source(const std::string& name) {
    // The script path comes first: a file of the same name in the current directory must not stand
    // in for a script that ships with the program.
    std::string path = name;
    if (name.find('/') == std::string::npos) {
        const size_t suffix = name.rfind(".mel");
        const bool has_suffix = suffix != std::string::npos && suffix + 4 == name.size();
        const std::string found = find_script(has_suffix ? name.substr(0, suffix) : name);
        if (!found.empty())
            path = found;
    }
    const std::string text = read_script(path);
    run(text, path);
}

void Interpreter::add_command(const std::string& name, Command command, bool is_from_plugin) {
    commands_[name] = std::move(command);
    if (is_from_plugin)
        from_plugins_.insert(name);
}

bool Interpreter::remove_command(const std::string& name) {
    from_plugins_.erase(name);
    return commands_.erase(name) != 0;
}

std::vector<std::string> Interpreter::command_names() const {
    std::vector<std::string> names;
    for (const auto& command : commands_)
        names.push_back(command.first);
    return names;
}

std::vector<std::string> Interpreter::variable_names() const {
    std::vector<std::string> names;
    for (const auto& variable : globals_)
        names.push_back(variable.first);
    std::sort(names.begin(), names.end());
    return names;
}

std::string Interpreter::find_script(const std::string& name) const {
    for (const std::string& directory : script_path_) {
        std::string path = directory + "/" + name + ".mel";
        if (readable(path))
            return path;
    }
    return std::string();
}

Interpreter::Procedure Interpreter::find_procedure(const std::string& name) const {
    if (frame_) {
        const auto local = frame_->unit->locals.find(name);
        if (local != frame_->unit->locals.end())
            return {frame_->unit, local->second};
    }
    const auto global = procedures_.find(name);
    return global == procedures_.end() ? Procedure() : global->second;
}

Interpreter::Known Interpreter::find(const std::string& name) const {
    if (find_procedure(name).node)
        return Known::procedure;
    if (commands_.count(name) != 0)
        return Known::command;
    return find_script(name).empty() ? Known::no : Known::script;
}

std::string Interpreter::place_of(const std::string& name) const {
    const Procedure procedure = find_procedure(name);
    return procedure.node ? procedure.unit->unit->file : find_script(name);
}

// --- statements -------------------------------------------------------------------------------

Interpreter::Flow Interpreter::execute(const SyntaxNode& node) {
    try {
        return execute_kind(node);
    } catch (const ScriptFault& fault) {
        throw ScriptError(frame_->unit->unit->file, node.at, fault.what());
    }
}

Interpreter::Flow Interpreter::execute_kind(const SyntaxNode& node) {
    if (stack_is_low())
        throw ScriptFault("Nested too deeply.");
    if (stop_ && stop_())
        throw ScriptFault("Interrupted.");
    switch (node.kind) {
    case SyntaxKind::block:
        return execute_block(node);
    case SyntaxKind::expression:
        last_ = evaluate(node[part::operand], &node == top_statement_);
        return Flow::normal;
    case SyntaxKind::declaration:
        declare(node);
        return Flow::normal;
    case SyntaxKind::if_:
        if (evaluate(node[part::condition]).truth())
            return execute(node[part::then]);
        return node.has(part::otherwise) ? execute(node[part::otherwise]) : Flow::normal;
    case SyntaxKind::for_:
        return execute_for(node);
    case SyntaxKind::for_in:
        return execute_for_in(node);
    case SyntaxKind::while_:
    case SyntaxKind::do_while:
        return execute_while(node);
    case SyntaxKind::switch_:
        return execute_switch(node);
    case SyntaxKind::break_:
        return Flow::break_;
    case SyntaxKind::continue_:
        return Flow::continue_;
    case SyntaxKind::return_:
        return execute_return(node);
    case SyntaxKind::procedure:
        throw ScriptFault("A procedure is declared at the outermost level only.");
    default:
        throw ScriptFault("This cannot stand as a statement.");
    }
}

Interpreter::Flow Interpreter::execute_block(const SyntaxNode& node) {
    // Empty statements and the init and step lists of a for loop are blocks without their own
    // scope.
    if (!node.flag) {
        for (const SyntaxNodePtr& statement : node.items)
            execute(*statement);
        return Flow::normal;
    }
    ScopeGuard scope(*frame_);
    for (const SyntaxNodePtr& statement : node.items) {
        const Flow flow = execute(*statement);
        if (flow != Flow::normal)
            return flow;
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_for(const SyntaxNode& node) {
    execute(node[part::init]);
    while (!node.has(part::condition) || evaluate(node[part::condition]).truth()) {
        const Flow flow = execute(node[part::body]);
        if (flow == Flow::return_)
            return flow;
        if (flow == Flow::break_)
            break;
        execute(node[part::step]);
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_for_in(const SyntaxNode& node) {
    const Value array = evaluate(node[part::array]);
    if (!array.type().array)
        throw ScriptFault("\"in\" needs an array, not a " + to_text(array.type()) + ".");
    SyntaxNode target;
    target.kind = SyntaxKind::variable;
    target.text = node.text;
    target.at = node.at;
    for (size_t i = 0; i < array.size(); ++i) {
        store(target, array.element(int32_t(i)));
        const Flow flow = execute(node[part::body]);
        if (flow == Flow::return_)
            return flow;
        if (flow == Flow::break_)
            break;
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_while(const SyntaxNode& node) {
    const SyntaxNode& condition = node[part::condition];
    if (node.kind == SyntaxKind::while_ && !evaluate(condition).truth())
        return Flow::normal;
    do {
        const Flow flow = execute(node[part::body]);
        if (flow == Flow::return_)
            return flow;
        if (flow == Flow::break_)
            break;
    } while (evaluate(condition).truth());
    return Flow::normal;
}

/// Position of the first matching case label among the items, else of the first default label, else
/// the end.
size_t Interpreter::find_case(const SyntaxNode& node, const Value& value) {
    for (size_t i = 0; i < node.items.size(); ++i) {
        const SyntaxNode& item = *node.items[i];
        if (item.kind == SyntaxKind::case_label && item.has(part::value) &&
            apply("==", value, evaluate(item[part::value])).truth())
            return i;
    }
    for (size_t i = 0; i < node.items.size(); ++i)
        if (node.items[i]->kind == SyntaxKind::case_label && !node.items[i]->has(part::value))
            return i;
    return node.items.size();
}

Interpreter::Flow Interpreter::execute_switch(const SyntaxNode& node) {
    const size_t start = find_case(node, evaluate(node[part::value]));
    ScopeGuard scope(*frame_);
    for (size_t i = start; i < node.items.size(); ++i) {
        if (node.items[i]->kind == SyntaxKind::case_label)
            continue;
        const Flow flow = execute(*node.items[i]);
        if (flow == Flow::break_)
            return Flow::normal;
        if (flow != Flow::normal)
            return flow;
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_return(const SyntaxNode& node) {
    if (frame_->top) {
        if (node.has(part::value))
            frame_->result = evaluate(node[part::value]);
        return Flow::return_;
    }
    if (node.has(part::value) != (frame_->result_type.basic != Basic::none))
        throw ScriptFault(node.has(part::value)
                              ? "This procedure returns nothing."
                              : "This procedure returns a " + to_text(frame_->result_type) + ".");
    if (node.has(part::value)) {
        Value value = evaluate(node[part::value]);
        frame_->result = value.type() == frame_->result_type ? std::move(value)
                                                             : value.converted(frame_->result_type);
    }
    return Flow::return_;
}

void Interpreter::declare(const SyntaxNode& node) {
    for (const SyntaxNodePtr& item : node.items)
        declare_one(*item, node.flag);
}

/// A matrix of the declared size, filled with zeros.
Value Interpreter::zero_matrix(const SyntaxNode& item) {
    constexpr size_t k_max_cells = 1'000'000;
    Matrix matrix;
    matrix.rows = uint32_t(std::max(evaluate(item[part::size]).to_int(), 1));
    matrix.columns = uint32_t(std::max(evaluate(item[part::columns]).to_int(), 1));
    const size_t cells = size_t(matrix.rows) * matrix.columns;
    if (cells > k_max_cells)
        throw ScriptFault("A matrix has at most " + std::to_string(k_max_cells) + " cells.");
    matrix.cells.resize(cells);
    return matrix;
}

void Interpreter::declare_one(const SyntaxNode& item, bool global) {
    const bool at_top = frame_->top && frame_->scopes.empty();
    Scope* scope = frame_->scopes.empty() ? nullptr : &frame_->scopes.back();
    VariablePtr found = global || at_top ? find_global(item.text) : find_in(*scope, item.text);
    if (found && found->type != item.type)
        throw ScriptFault("Invalid redeclaration of variable \"$" + item.text +
                          "\" as a different type.");
    const bool fresh = !found;
    if (fresh) {
        found = std::make_shared<Variable>(Variable{item.type, Value::zero(item.type)});
        if (item.type.basic == Basic::matrix)
            found->value = zero_matrix(item);
        if (global || at_top)
            globals_[item.text] = found;
        if (scope && (global || !at_top))
            scope->emplace_back(item.text, found);
    } else if (global) {
        // Declared before: the statement only makes the name visible here; its initial value is not
        // assigned again.
        if (scope)
            scope->emplace_back(item.text, found);
        return;
    } else if (!at_top) {
        found->value = Value::zero(item.type);
    }
    if (item.has(part::initial))
        found->value = evaluate(item[part::initial]).converted(item.type);
    else if (fresh && item.type.array && item.has(part::size))
        found->value.resize(
            size_t(std::clamp(evaluate(item[part::size]).to_int(), 0, 100'000'000)));
}

void Interpreter::define(const SyntaxNodePtr& node) {
    if (node->flag)
        procedures_[node->text] = Procedure{frame_->unit, node};
    else
        frame_->unit->locals[node->text] = node;
}

// --- calls ------------------------------------------------------------------------------------

Value Interpreter::call_node(const SyntaxNode& node) {
    std::vector<Value> arguments;
    arguments.reserve(node.items.size());
    for (const SyntaxNodePtr& argument : node.items)
        arguments.push_back(evaluate(*argument));
    return call(node.text, std::move(arguments));
}

Value Interpreter::call(const std::string& name, std::vector<Value> arguments) {
    // Copied, because the procedure may be redefined while it runs.
    const Procedure known = find_procedure(name);
    if (known.node)
        return call_procedure(known, std::move(arguments));
    const auto command = commands_.find(name);
    if (command != commands_.end()) {
        Invocation invocation{*this, name, std::move(arguments), false};
        const Command run = command->second; // copied, because the command may remove itself
        return run(invocation);
    }
    const std::string script = find_script(name);
    if (!script.empty()) {
        run(read_script(script), script);
        const Procedure found = find_procedure(name);
        if (found.node)
            return call_procedure(found, std::move(arguments));
    }
    throw ScriptFault("Cannot find procedure \"" + name + "\".");
}

CommandSyntax Interpreter::describe(const std::string& name) {
    const auto command = commands_.find(name);
    if (command == commands_.end())
        throw ScriptFault("There is no command \"" + name + "\".");
    Invocation question{*this, name, {}, true};
    try {
        command->second(question);
    } catch (CommandSyntax& syntax) {
        return std::move(syntax);
    }
    return CommandSyntax();
}

Value Interpreter::call_procedure(const Procedure& procedure, std::vector<Value> arguments) {
    const SyntaxNode& node = *procedure.node;
    if (arguments.size() != node.items.size())
        throw ScriptFault("Wrong number of arguments on call to " + node.text + ": " +
                          std::to_string(node.items.size()) + " expected, " +
                          std::to_string(arguments.size()) + " given.");
    if (depth_ >= k_max_call_depth || stack_is_low())
        throw ScriptFault("Procedures are nested too deeply.");
    Frame frame;
    frame.unit = procedure.unit;
    frame.result_type = node.type;
    frame.scopes.emplace_back();
    for (size_t i = 0; i < arguments.size(); ++i) {
        const SyntaxNode& parameter = *node.items[i];
        // An array of the parameter's type stays shared: the language passes arrays by reference.
        Value value = arguments[i].type() == parameter.type
                          ? std::move(arguments[i])
                          : arguments[i].converted(parameter.type);
        frame.scopes.back().emplace_back(
            parameter.text, std::make_shared<Variable>(Variable{parameter.type, std::move(value)}));
    }
    const Restore restore_frame(frame_);
    const Restore restore_depth(depth_);
    ++depth_;
    frame_ = &frame;
    const Flow flow = execute(node[part::procedure_body]);
    if (flow != Flow::return_ && node.type.basic != Basic::none)
        return Value::zero(node.type);
    return frame.result;
}

} // namespace host::script
