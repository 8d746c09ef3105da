#include "host/script/functions.h"

#include <cmath>
#include <memory>
#include <random>

namespace host::script {

namespace {

using Unary = double (*)(double);
using Binary = double (*)(double, double);

void add_unary(Interpreter& interpreter, const char* name, Unary function) {
    interpreter.add_command(name, [function](Invocation& call) -> Value {
        require_arguments(call, 1, 1);
        return function(call.arguments[0].to_real());
    });
}

void add_binary(Interpreter& interpreter, const char* name, Binary function) {
    interpreter.add_command(name, [function](Invocation& call) -> Value {
        require_arguments(call, 2, 2);
        return function(call.arguments[0].to_real(), call.arguments[1].to_real());
    });
}

Value absolute(Invocation& call) {
    require_arguments(call, 1, 1);
    const Value& value = call.arguments[0];
    if (value.type().basic == Basic::integer)
        return value.to_int() < 0 ? apply("*", value, Value(int32_t(-1))) : value;
    return std::fabs(value.to_real());
}

bool all_ints(const Invocation& call) {
    for (const Value& value : call.arguments)
        if (value.type().basic != Basic::integer)
            return false;
    return true;
}

Value smaller(Invocation& call) {
    require_arguments(call, 2, 2);
    const bool first = call.arguments[0].to_real() <= call.arguments[1].to_real();
    const Value& value = call.arguments[first ? 0 : 1];
    return all_ints(call) ? value : Value(value.to_real());
}

Value larger(Invocation& call) {
    require_arguments(call, 2, 2);
    const bool first = call.arguments[0].to_real() >= call.arguments[1].to_real();
    const Value& value = call.arguments[first ? 0 : 1];
    return all_ints(call) ? value : Value(value.to_real());
}

Value clamp(Invocation& call) {
    require_arguments(call, 3, 3);
    const double low = call.arguments[0].to_real(), high = call.arguments[1].to_real();
    const double value = call.arguments[2].to_real();
    const double clamped = value < low ? low : value > high ? high : value;
    if (all_ints(call))
        return int32_t(clamped);
    return clamped;
}

Value magnitude(Invocation& call) {
    require_arguments(call, 1, 1);
    return Value(call.arguments[0].to_vector()).to_real();
}

Value unit(Invocation& call) {
    require_arguments(call, 1, 1);
    const Vector v = call.arguments[0].to_vector();
    const double length = Value(v).to_real();
    if (length == 0.0)
        return v;
    return Vector{v.x / length, v.y / length, v.z / length};
}

Value dot(Invocation& call) {
    require_arguments(call, 2, 2);
    return apply("*", call.arguments[0].to_vector(), call.arguments[1].to_vector());
}

Value cross(Invocation& call) {
    require_arguments(call, 2, 2);
    return apply("^", call.arguments[0].to_vector(), call.arguments[1].to_vector());
}

/// Each interpreter has its own generator; a seed determines the numbers on every platform.
void add_random(Interpreter& interpreter) {
    auto generator = std::make_shared<std::mt19937>(1u);
    interpreter.add_command("seed", [generator](Invocation& call) -> Value {
        require_arguments(call, 1, 1);
        generator->seed(uint32_t(call.arguments[0].to_int()));
        return call.arguments[0];
    });
    interpreter.add_command("rand", [generator](Invocation& call) -> Value {
        require_arguments(call, 1, 2);
        const bool range = call.arguments.size() == 2;
        const double low = range ? call.arguments[0].to_real() : 0.0;
        const double high = call.arguments[range ? 1 : 0].to_real();
        return low + (high - low) * (double((*generator)()) / 4294967296.0);
    });
}

const std::pair<const char*, Unary> k_unary_functions[] = {
    {"floor", [](double v) { return std::floor(v); }},
    {"ceil", [](double v) { return std::ceil(v); }},
    {"trunc", [](double v) { return std::trunc(v); }},
    {"sqrt",
     [](double v) {
         if (v < 0.0)
             throw ScriptFault("sqrt of a negative number.");
         return std::sqrt(v);
     }},
    {"exp", [](double v) { return std::exp(v); }},
    {"log",
     [](double v) {
         if (v <= 0.0)
             throw ScriptFault("log needs a positive number.");
         return std::log(v);
     }},
    {"sin", [](double v) { return std::sin(v); }},
    {"cos", [](double v) { return std::cos(v); }},
    {"tan", [](double v) { return std::tan(v); }},
    {"asin", [](double v) { return std::asin(v); }},
    {"acos", [](double v) { return std::acos(v); }},
    {"atan", [](double v) { return std::atan(v); }},
    {"deg_to_rad", [](double v) { return v * 0.017453292519943295; }},
    {"rad_to_deg", [](double v) { return v * 57.29577951308232; }},
};

} // namespace

void add_math_functions(Interpreter& interpreter) {
    for (const auto& function : k_unary_functions)
        add_unary(interpreter, function.first, function.second);
    add_binary(interpreter, "pow", [](double a, double b) { return std::pow(a, b); });
    add_binary(interpreter, "atan2", [](double a, double b) { return std::atan2(a, b); });
    add_binary(interpreter, "fmod", [](double a, double b) { return std::fmod(a, b); });
    interpreter.add_command("abs", absolute);
    interpreter.add_command("min", smaller);
    interpreter.add_command("max", larger);
    interpreter.add_command("clamp", clamp);
    interpreter.add_command("mag", magnitude);
    interpreter.add_command("unit", unit);
    interpreter.add_command("dot", dot);
    interpreter.add_command("cross", cross);
    add_random(interpreter);
}

} // namespace host::script
