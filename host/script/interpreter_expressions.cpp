#include "host/script/interpreter.h"
#include "host/script/stack_limit.h"

#include <cmath>

namespace host::script {

namespace {

int32_t wrapped(int64_t value) { return int32_t(uint32_t(uint64_t(value))); }

[[noreturn]] void no_operator(const std::string& op, const Value& left, const Value& right) {
    throw ScriptFault("No operator \"" + op + "\" between " + to_text(left.type()) + " and " +
                      to_text(right.type()) + ".");
}

Value apply_ints(char op, int32_t left, int32_t right) {
    const int64_t a = left, b = right;
    switch (op) {
    case '+':
        return wrapped(a + b);
    case '-':
        return wrapped(a - b);
    case '*':
        return wrapped(a * b);
    default:
        if (b == 0)
            throw ScriptFault("Division by zero.");
        return wrapped(op == '/' ? a / b : a % b);
    }
}

Value apply_reals(char op, double left, double right) {
    switch (op) {
    case '+':
        return left + right;
    case '-':
        return left - right;
    case '*':
        return left * right;
    default:
        if (right == 0.0)
            throw ScriptFault("Division by zero.");
        return op == '/' ? left / right : std::fmod(left, right);
    }
}

Vector scaled(const Vector& v, double by) { return {v.x * by, v.y * by, v.z * by}; }

Value apply_vectors(char op, const Value& left, const Value& right) {
    const bool both = left.type().basic == right.type().basic;
    const Vector a = left.to_vector(), b = right.to_vector();
    switch (op) {
    case '+':
        return Vector{a.x + b.x, a.y + b.y, a.z + b.z};
    case '-':
        return Vector{a.x - b.x, a.y - b.y, a.z - b.z};
    case '*':
        if (both)
            return a.x * b.x + a.y * b.y + a.z * b.z;
        return left.type().basic == Basic::vector ? scaled(a, right.to_real())
                                                  : scaled(b, left.to_real());
    case '^':
        return Vector{a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    case '/':
        if (left.type().basic == Basic::vector && !both) {
            if (right.to_real() == 0.0)
                throw ScriptFault("Division by zero.");
            return scaled(a, 1.0 / right.to_real());
        }
        break;
    default:
        break;
    }
    no_operator(std::string(1, op), left, right);
}

Value apply_matrices(char op, const Value& left, const Value& right) {
    const Matrix& a = left.as<Matrix>();
    const Matrix& b = right.as<Matrix>();
    Matrix result = a;
    if (op == '*') {
        if (a.columns != b.rows)
            throw ScriptFault("The matrices do not fit each other.");
        result.columns = b.columns;
        result.cells.assign(size_t(a.rows) * b.columns, 0.0);
        for (size_t i = 0; i < a.rows; ++i)
            for (size_t j = 0; j < b.columns; ++j)
                for (size_t k = 0; k < a.columns; ++k)
                    result.cells[i * b.columns + j] +=
                        a.cells[i * a.columns + k] * b.cells[k * b.columns + j];
        return result;
    }
    if (a.rows != b.rows || a.columns != b.columns)
        throw ScriptFault("The matrices do not fit each other.");
    if (op != '+' && op != '-')
        no_operator(std::string(1, op), left, right);
    for (size_t i = 0; i < a.cells.size(); ++i)
        result.cells[i] += op == '+' ? b.cells[i] : -b.cells[i];
    return result;
}

Value compare(const std::string& op, const Value& left, const Value& right) {
    const bool equal = op == "==" || op == "!=";
    if (left.is_string() || right.is_string()) {
        if (!equal)
            no_operator(op, left, right);
        return (left.to_string() == right.to_string()) == (op == "==");
    }
    if (left.type().basic == Basic::vector && right.type().basic == Basic::vector && equal)
        return (left.to_vector() == right.to_vector()) == (op == "==");
    const double a = left.to_real(), b = right.to_real();
    if (equal)
        return (a == b) == (op == "==");
    if (op == "<")
        return a < b;
    if (op == ">")
        return a > b;
    return op == "<=" ? a <= b : a >= b;
}

} // namespace

Value apply(const std::string& op, const Value& left, const Value& right) {
    const Type a = left.type(), b = right.type();
    if (a.array || b.array || a.basic == Basic::none || b.basic == Basic::none)
        no_operator(op, left, right);
    if (op == "==" || op == "!=" || op[0] == '<' || op[0] == '>')
        return compare(op, left, right);
    if (a.basic == Basic::string || b.basic == Basic::string) {
        if (op == "+")
            return left.to_string() + right.to_string();
        no_operator(op, left, right);
    }
    if (a.basic == Basic::matrix && b.basic == Basic::matrix)
        return apply_matrices(op[0], left, right);
    if (a.basic == Basic::matrix || b.basic == Basic::matrix)
        no_operator(op, left, right);
    if (a.basic == Basic::vector || b.basic == Basic::vector)
        return apply_vectors(op[0], left, right);
    if (op == "^")
        no_operator(op, left, right);
    if (a.basic == Basic::integer && b.basic == Basic::integer)
        return apply_ints(op[0], left.to_int(), right.to_int());
    return apply_reals(op[0], left.to_real(), right.to_real());
}

namespace {

bool is_chain(SyntaxKind kind) {
    return kind == SyntaxKind::binary || kind == SyntaxKind::logical ||
           kind == SyntaxKind::element || kind == SyntaxKind::component;
}

} // namespace

Value Interpreter::evaluate(const SyntaxNode& node, bool is_used) {
    try {
        return evaluate_kind(node, is_used);
    } catch (const ScriptFault& fault) {
        throw ScriptError(frame_->unit->unit->file, node.at, fault.what());
    }
}

Value Interpreter::evaluate_kind(const SyntaxNode& node, bool is_used) {
    if (stack_is_low())
        throw ScriptFault("Nested too deeply.");
    switch (node.kind) {
    case SyntaxKind::literal:
        return node.value;
    case SyntaxKind::variable:
        return variable(node.text).value;
    case SyntaxKind::element:
    case SyntaxKind::component:
    case SyntaxKind::binary:
    case SyntaxKind::logical:
        return evaluate_chain(node);
    case SyntaxKind::unary:
        return evaluate_unary(node);
    case SyntaxKind::conditional:
        return evaluate(
            node[evaluate(node[part::condition]).truth() ? part::then : part::otherwise]);
    case SyntaxKind::assign:
        return evaluate_assign(node, is_used);
    case SyntaxKind::increment:
        return evaluate_increment(node);
    case SyntaxKind::cast:
        return evaluate(node[part::operand]).converted(node.type);
    case SyntaxKind::array:
        return evaluate_array(node);
    case SyntaxKind::vector:
    case SyntaxKind::matrix:
        return evaluate_vector(node);
    case SyntaxKind::call:
        return call_node(node);
    case SyntaxKind::catch_:
        return evaluate_catch(node);
    default:
        throw ScriptFault("This cannot stand in an expression.");
    }
}

static_assert(part::left == 0 && part::base == 0, "a chain continues in the first part");

/// Evaluates operators that nest to the left, such as 1 + 1 + ..., $a && $b && ... and $a[0][0]....
/// The parser does not limit the length of such chains, so they are evaluated in a loop.
Value Interpreter::evaluate_chain(const SyntaxNode& node) {
    std::vector<const SyntaxNode*> links; // without `node`; outermost first
    const SyntaxNode* inner = &node[part::left];
    for (; is_chain(inner->kind); inner = &(*inner)[part::left])
        links.push_back(inner);
    Value value = evaluate(*inner);
    for (auto link = links.rbegin(); link != links.rend(); ++link) {
        try {
            value = evaluate_link(**link, value);
        } catch (const ScriptFault& fault) {
            throw ScriptError(frame_->unit->unit->file, (*link)->at, fault.what());
        }
    }
    return evaluate_link(node, value);
}

/// Evaluates an operator whose first part has the value `left`.
Value Interpreter::evaluate_link(const SyntaxNode& node, const Value& left) {
    switch (node.kind) {
    case SyntaxKind::element:
        return evaluate_element(node, left);
    case SyntaxKind::component:
        return evaluate_component(node, left);
    case SyntaxKind::logical:
        return evaluate_logical(node, left);
    default:
        return apply(node.text, left, evaluate(node[part::right]));
    }
}

Value Interpreter::evaluate_component(const SyntaxNode& node, const Value& base) {
    const Vector v = base.to_vector();
    return node.text == "x" ? v.x : node.text == "y" ? v.y : v.z;
}

Value Interpreter::evaluate_unary(const SyntaxNode& node) {
    const Value value = evaluate(node[part::operand]);
    if (node.text == "!")
        return !value.truth();
    if (value.is_string())
        throw ScriptFault("No operator \"-\" for a string.");
    return apply("*", value, Value(int32_t(-1)));
}

/// The right operand is evaluated only if the left one does not decide.
Value Interpreter::evaluate_logical(const SyntaxNode& node, const Value& left) {
    if (left.truth() == (node.text == "||"))
        return left.truth();
    return evaluate(node[part::right]).truth();
}

Value Interpreter::evaluate_element(const SyntaxNode& node, const Value& array) {
    const int32_t index = evaluate(node[part::index]).to_int();
    if (array.type().basic == Basic::matrix && !array.type().array) {
        if (!node.has(part::column))
            throw ScriptFault("A matrix needs a row and a column.");
        const int32_t column = evaluate(node[part::column]).to_int();
        const Matrix& matrix = array.as<Matrix>();
        if (index < 0 || column < 0 || uint32_t(index) >= matrix.rows ||
            uint32_t(column) >= matrix.columns)
            throw ScriptFault("Matrix index out of range.");
        return matrix.cells[size_t(index) * matrix.columns + size_t(column)];
    }
    if (!array.type().array || node.has(part::column))
        throw ScriptFault("A " + to_text(array.type()) + " cannot be indexed like this.");
    return array.element(index);
}

Value Interpreter::evaluate_array(const SyntaxNode& node) {
    std::vector<Value> values;
    Basic widest = Basic::integer;
    for (const SyntaxNodePtr& element : node.items) {
        values.push_back(evaluate(*element));
        const Type type = values.back().type();
        if (type.array || type.basic == Basic::matrix || type.basic == Basic::none)
            throw ScriptFault("An array cannot hold a " + to_text(type) + ".");
        if (type.basic > widest)
            widest = type.basic;
    }
    Value array = Value::zero({widest, true});
    for (const Value& value : values)
        array.append(value);
    return array;
}

Value Interpreter::evaluate_vector(const SyntaxNode& node) {
    std::vector<double> cells;
    for (const SyntaxNodePtr& cell : node.items)
        cells.push_back(evaluate(*cell).to_real());
    if (node.kind == SyntaxKind::vector)
        return Vector{cells[0], cells[1], cells[2]};
    Matrix matrix;
    matrix.columns = node.count;
    matrix.rows = uint32_t(cells.size() / node.count);
    matrix.cells = std::move(cells);
    return matrix;
}

Value Interpreter::evaluate_assign(const SyntaxNode& node, bool is_used) {
    const SyntaxNode& target = node[part::target];
    Value value = evaluate(node[part::assigned]);
    if (value.is_none())
        throw ScriptFault("There is no value to assign.");
    if (node.text == "=") {
        store(target, value);
        return value;
    }
    if (target.kind == SyntaxKind::variable && node.text == "+=") {
        Variable& found = variable(target.text);
        if (found.value.is_string()) { // append in place: building a long text stays linear
            found.value.text() += value.to_string();
            return is_used ? found.value : Value();
        }
    }
    Value result = apply(node.text.substr(0, 1), evaluate(target), value);
    store(target, result);
    return result;
}

Value Interpreter::evaluate_increment(const SyntaxNode& node) {
    const SyntaxNode& target = node[part::target];
    const Value before = evaluate(target);
    if (!before.is_number())
        throw ScriptFault("Only a number can be counted up or down.");
    const Value after = apply(node.text.substr(0, 1), before, Value(int32_t(1)));
    store(target, after);
    return node.flag ? before : after;
}

Value Interpreter::evaluate_catch(const SyntaxNode& node) {
    Frame* const frame = frame_;
    const int depth = depth_;
    const size_t scopes = frame->scopes.size();
    try {
        evaluate(node[part::operand]);
        return int32_t(0);
    } catch (const ScriptError& error) {
        frame_ = frame;
        depth_ = depth;
        frame_->scopes.resize(scopes);
        if (!node.flag)
            output_.error(error.what());
        return int32_t(1);
    }
}

Interpreter::VariablePtr Interpreter::find_variable(const std::string& name) const {
    for (auto scope = frame_->scopes.rbegin(); scope != frame_->scopes.rend(); ++scope)
        if (VariablePtr found = find_in(*scope, name))
            return found;
    return frame_->top ? find_global(name) : nullptr;
}

Interpreter::VariablePtr Interpreter::find_global(const std::string& name) const {
    const auto global = globals_.find(name);
    return global == globals_.end() ? nullptr : global->second;
}

Interpreter::VariablePtr Interpreter::find_in(const Scope& scope, const std::string& name) {
    for (const auto& entry : scope)
        if (entry.first == name)
            return entry.second;
    return nullptr;
}

Interpreter::Variable& Interpreter::variable(const std::string& name) const {
    const VariablePtr found = find_variable(name);
    if (!found)
        throw ScriptFault("\"$" + name + "\" is an undeclared variable.");
    return *found;
}

Interpreter::Variable& Interpreter::new_variable(const std::string& name, Type type) {
    auto made = std::make_shared<Variable>(Variable{type, Value::zero(type)});
    if (frame_->scopes.empty())
        globals_[name] = made;
    else
        frame_->scopes.back().emplace_back(name, made);
    return *made;
}

void Interpreter::store(const SyntaxNode& target, const Value& value) {
    if (target.kind != SyntaxKind::variable)
        return store_element(target, value);
    const VariablePtr found = find_variable(target.text);
    Variable& variable = found ? *found : new_variable(target.text, value.type());
    variable.value = value.converted(variable.type);
}

void Interpreter::store_element(const SyntaxNode& target, const Value& value) {
    const std::string& name = target[part::base].text;
    if (target.kind == SyntaxKind::component) {
        Variable& found = variable(name);
        if (found.type != Type{Basic::vector, false})
            throw ScriptFault("\"$" + name + "\" is not a vector.");
        Vector v = found.value.to_vector();
        (target.text == "x" ? v.x : target.text == "y" ? v.y : v.z) = value.to_real();
        found.value = Value(v);
        return;
    }
    const int32_t index = evaluate(target[part::index]).to_int();
    if (target.has(part::column)) {
        const int32_t column = evaluate(target[part::column]).to_int();
        Variable& found = variable(name);
        if (found.type.basic != Basic::matrix)
            throw ScriptFault("\"$" + name + "\" is not a matrix.");
        Matrix matrix = found.value.as<Matrix>();
        if (index < 0 || column < 0 || uint32_t(index) >= matrix.rows ||
            uint32_t(column) >= matrix.columns)
            throw ScriptFault("Matrix index out of range.");
        matrix.cells[size_t(index) * matrix.columns + size_t(column)] = value.to_real();
        found.value = Value(std::move(matrix));
        return;
    }
    const VariablePtr known = find_variable(name);
    Variable& found = known ? *known : new_variable(name, {value.type().basic, true});
    if (!found.type.array)
        throw ScriptFault("\"$" + name + "\" is not an array.");
    if (value.type().array)
        throw ScriptFault("An array cannot hold an array.");
    found.value.set_element(index, value);
}

} // namespace host::script
