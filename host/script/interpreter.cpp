#include "host/script/interpreter.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace host::script {

namespace {

/// Calls within calls; a runaway recursion ends with an error well before the stack does.
constexpr int k_deepest_call = 200;

bool readable(const std::string& path) {
    std::ifstream file(path);
    return file.good() && file.peek() != std::ifstream::traits_type::eof();
}

} // namespace

std::string read_script(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (file)
        text << file.rdbuf();
    if (!file)
        throw ScriptFault("Cannot read the file \"" + path + "\".");
    return text.str();
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
    struct Restore {
        Interpreter& self;
        Frame* outer;
        int depth;
        ~Restore() {
            self.frame_ = outer;
            self.depth_ = depth;
        }
    } restore{*this, frame_, depth_};
    if (++depth_ > k_deepest_call)
        throw ScriptError(file, Position(), "Scripts are nested too deeply.");
    frame_ = &frame;
    last_ = Value();
    for (const NodePtr& statement : state->unit->body->kids) {
        last_ = Value();
        if (execute_top(statement) == Flow::give)
            return frame.result;
        if (statement->kind != Kind::expression) // a loop is worth nothing, whatever ran in it
            last_ = Value();
    }
    return last_;
}

Interpreter::Flow Interpreter::execute_top(const NodePtr& statement) {
    Flow flow = Flow::normal;
    if (statement->kind == Kind::procedure) {
        define(statement);
    } else if (depth_ == 1 && wrapper_) {
        const bool plain = statement->kind == Kind::expression;
        const Node& inner = plain ? *statement->kids[0] : *statement;
        wrapper_(inner.kind == Kind::call ? inner.text : std::string(),
                 [&] { flow = execute(*statement); });
    } else {
        flow = execute(*statement);
    }
    return flow;
}

void Interpreter::source(const std::string& name) {
    std::string path = name;
    if (!readable(path) && name.find('/') == std::string::npos) {
        const size_t suffix = name.rfind(".mel");
        const bool has_suffix = suffix != std::string::npos && suffix + 4 == name.size();
        const std::string found = find_script(has_suffix ? name.substr(0, suffix) : name);
        if (!found.empty())
            path = found;
    }
    const std::string text = read_script(path);
    run(text, path);
}

void Interpreter::add_command(const std::string& name, Command command) {
    commands_[name] = std::move(command);
}

bool Interpreter::remove_command(const std::string& name) { return commands_.erase(name) != 0; }

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

Interpreter::Flow Interpreter::execute(const Node& node) {
    try {
        return execute_kind(node);
    } catch (const ScriptFault& fault) {
        throw ScriptError(frame_->unit->unit->file, node.at, fault.what());
    }
}

Interpreter::Flow Interpreter::execute_kind(const Node& node) {
    switch (node.kind) {
    case Kind::block:
        return execute_block(node);
    case Kind::expression:
        last_ = evaluate(*node.kids[0]);
        return Flow::normal;
    case Kind::declare:
        declare(node);
        return Flow::normal;
    case Kind::branch:
        if (evaluate(*node.kids[0]).truth())
            return execute(*node.kids[1]);
        return node.kids[2] ? execute(*node.kids[2]) : Flow::normal;
    case Kind::loop:
        return execute_loop(node);
    case Kind::for_each:
        return execute_for_each(node);
    case Kind::while_loop:
    case Kind::do_loop:
        return execute_while(node);
    case Kind::choose:
        return execute_choose(node);
    case Kind::leave:
        return Flow::leave;
    case Kind::next:
        return Flow::next;
    case Kind::give:
        return execute_give(node);
    case Kind::procedure:
        throw ScriptFault("A procedure is declared at the outermost level only.");
    default:
        throw ScriptFault("This cannot stand as a statement.");
    }
}

Interpreter::Flow Interpreter::execute_block(const Node& node) {
    // An empty statement and the head of a for loop are blocks without a scope of their own.
    if (!node.flag) {
        for (const NodePtr& kid : node.kids)
            execute(*kid);
        return Flow::normal;
    }
    ScopeGuard scope(*frame_);
    for (const NodePtr& kid : node.kids) {
        const Flow flow = execute(*kid);
        if (flow != Flow::normal)
            return flow;
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_loop(const Node& node) {
    execute(*node.kids[0]);
    while (!node.kids[1] || evaluate(*node.kids[1]).truth()) {
        const Flow flow = execute(*node.kids[3]);
        if (flow == Flow::give)
            return flow;
        if (flow == Flow::leave)
            break;
        execute(*node.kids[2]);
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_for_each(const Node& node) {
    const Value array = evaluate(*node.kids[0]);
    if (!array.type().array)
        throw ScriptFault("\"in\" needs an array, not a " + to_text(array.type()) + ".");
    Node target;
    target.kind = Kind::variable;
    target.text = node.text;
    target.at = node.at;
    for (size_t i = 0; i < array.size(); ++i) {
        store(target, array.element(int32_t(i)));
        const Flow flow = execute(*node.kids[1]);
        if (flow == Flow::give)
            return flow;
        if (flow == Flow::leave)
            break;
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_while(const Node& node) {
    const bool body_first = node.kind == Kind::do_loop;
    const Node& condition = *node.kids[body_first ? 1 : 0];
    const Node& body = *node.kids[body_first ? 0 : 1];
    if (!body_first && !evaluate(condition).truth())
        return Flow::normal;
    do {
        const Flow flow = execute(body);
        if (flow == Flow::give)
            return flow;
        if (flow == Flow::leave)
            break;
    } while (evaluate(condition).truth());
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_choose(const Node& node) {
    const Value value = evaluate(*node.kids[0]);
    size_t start = node.kids.size();
    for (size_t i = 1; i < node.kids.size() && start == node.kids.size(); ++i) {
        const Node& kid = *node.kids[i];
        if (kid.kind == Kind::label && kid.kids[0] &&
            apply("==", value, evaluate(*kid.kids[0])).truth())
            start = i;
    }
    for (size_t i = 1; i < node.kids.size() && start == node.kids.size(); ++i)
        if (node.kids[i]->kind == Kind::label && !node.kids[i]->kids[0])
            start = i;
    ScopeGuard scope(*frame_);
    for (size_t i = start; i < node.kids.size(); ++i) {
        if (node.kids[i]->kind == Kind::label)
            continue;
        const Flow flow = execute(*node.kids[i]);
        if (flow == Flow::leave)
            return Flow::normal;
        if (flow != Flow::normal)
            return flow;
    }
    return Flow::normal;
}

Interpreter::Flow Interpreter::execute_give(const Node& node) {
    if (frame_->top) {
        if (node.kids[0])
            frame_->result = evaluate(*node.kids[0]);
        return Flow::give;
    }
    if (bool(node.kids[0]) != (frame_->result_type.basic != Basic::none))
        throw ScriptFault(node.kids[0]
                              ? "This procedure returns nothing."
                              : "This procedure returns a " + to_text(frame_->result_type) + ".");
    if (node.kids[0]) {
        Value value = evaluate(*node.kids[0]);
        frame_->result = value.type() == frame_->result_type ? std::move(value)
                                                             : value.converted(frame_->result_type);
    }
    return Flow::give;
}

void Interpreter::declare(const Node& node) {
    for (const NodePtr& item : node.kids)
        declare_one(*item, node.flag);
}

void Interpreter::declare_one(const Node& item, bool global) {
    const bool at_top = frame_->top && frame_->scopes.empty();
    Scope* scope = frame_->scopes.empty() ? nullptr : &frame_->scopes.back();
    VariablePtr found;
    if (global || at_top) {
        const auto known = globals_.find(item.text);
        if (known != globals_.end())
            found = known->second;
    } else {
        for (const auto& entry : *scope)
            if (entry.first == item.text)
                found = entry.second;
    }
    if (found && found->type != item.type)
        throw ScriptFault("Invalid redeclaration of variable \"$" + item.text +
                          "\" as a different type.");
    const bool fresh = !found;
    if (fresh) {
        found = std::make_shared<Variable>(Variable{item.type, Value::zero(item.type)});
        if (item.type.basic == Basic::matrix) {
            Matrix matrix;
            matrix.rows = uint32_t(std::clamp(evaluate(*item.kids[1]).to_int(), 1, 10000));
            matrix.columns = uint32_t(std::clamp(evaluate(*item.kids[2]).to_int(), 1, 10000));
            matrix.cells.resize(size_t(matrix.rows) * matrix.columns);
            found->value = Value(std::move(matrix));
        }
        if (global || at_top)
            globals_[item.text] = found;
        if (scope && (global || !at_top))
            scope->emplace_back(item.text, found);
    } else if (global) {
        // Declared before: this only brings the name into the procedure, initial value and all.
        if (scope)
            scope->emplace_back(item.text, found);
        return;
    } else if (!at_top) {
        found->value = Value::zero(item.type);
    }
    if (item.kids[0]) {
        Value value = evaluate(*item.kids[0]);
        found->value = value.converted(item.type);
    } else if (fresh && item.type.array && item.kids[1]) {
        found->value.resize(size_t(std::clamp(evaluate(*item.kids[1]).to_int(), 0, 100'000'000)));
    }
}

void Interpreter::define(const NodePtr& node) {
    if (node->flag)
        procedures_[node->text] = Procedure{frame_->unit, node};
    else
        frame_->unit->locals[node->text] = node;
}

// --- calls ------------------------------------------------------------------------------------

Value Interpreter::call_node(const Node& node) {
    std::vector<Value> arguments;
    arguments.reserve(node.kids.size());
    for (const NodePtr& kid : node.kids)
        arguments.push_back(evaluate(*kid));
    return call(node.text, std::move(arguments));
}

Value Interpreter::call(const std::string& name, std::vector<Value> arguments) {
    // A copy: a redefinition while it runs must not pull it away.
    const Procedure known = find_procedure(name);
    if (known.node)
        return call_procedure(known, std::move(arguments));
    const auto command = commands_.find(name);
    if (command != commands_.end()) {
        Invocation invocation{*this, name, std::move(arguments)};
        const Command run = command->second; // it may unregister itself
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

Value Interpreter::call_procedure(const Procedure& procedure, std::vector<Value> arguments) {
    const Node& node = *procedure.node;
    if (arguments.size() + 1 != node.kids.size())
        throw ScriptFault("Wrong number of arguments on call to " + node.text + ": " +
                          std::to_string(node.kids.size() - 1) + " expected, " +
                          std::to_string(arguments.size()) + " given.");
    if (depth_ >= k_deepest_call)
        throw ScriptFault("Procedures are nested too deeply.");
    Frame frame;
    frame.unit = procedure.unit;
    frame.result_type = node.type;
    frame.scopes.emplace_back();
    for (size_t i = 0; i < arguments.size(); ++i) {
        const Node& parameter = *node.kids[i + 1];
        // An array of the right type stays shared: the language hands it over by reference.
        Value value = arguments[i].type() == parameter.type
                          ? std::move(arguments[i])
                          : arguments[i].converted(parameter.type);
        frame.scopes.back().emplace_back(
            parameter.text, std::make_shared<Variable>(Variable{parameter.type, std::move(value)}));
    }
    struct Restore {
        Interpreter& self;
        Frame* outer;
        ~Restore() {
            self.frame_ = outer;
            --self.depth_;
        }
    } restore{*this, frame_};
    ++depth_;
    frame_ = &frame;
    const Flow flow = execute(*node.kids[0]);
    if (flow != Flow::give && node.type.basic != Basic::none)
        return Value::zero(node.type);
    return frame.result;
}

} // namespace host::script
