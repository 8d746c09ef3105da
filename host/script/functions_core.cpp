#include "host/script/functions.h"

#include <algorithm>

namespace host::script {

namespace {

Value print(Invocation& call) {
    for (const Value& value : call.arguments)
        call.interpreter.output().print(value.printed());
    return Value();
}

Value error(Invocation& call) {
    require_arguments(call, 1, 1);
    throw ScriptFault(call.arguments[0].to_string());
}

Value warning(Invocation& call) {
    require_arguments(call, 1, 1);
    call.interpreter.output().warning(call.arguments[0].to_string());
    return Value();
}

Value size(Invocation& call) {
    require_arguments(call, 1, 1);
    const Value& value = call.arguments[0];
    return int32_t(value.is_string() ? value.text().size() : value.size());
}

Value clear(Invocation& call) {
    require_arguments(call, 1, 1);
    if (!call.arguments[0].type().array)
        throw ScriptFault("clear needs an array.");
    call.arguments[0].resize(0);
    return Value();
}

Value eval(Invocation& call) {
    require_arguments(call, 1, 1000);
    std::string text;
    for (const Value& value : call.expanded())
        text += (text.empty() ? "" : " ") + value.to_string();
    return call.interpreter.run(text, "eval");
}

Value source(Invocation& call) {
    require_arguments(call, 1, 1);
    call.interpreter.source(call.arguments[0].to_string());
    return Value();
}

Value exists(Invocation& call) {
    require_arguments(call, 1, 1);
    return call.interpreter.find(call.arguments[0].to_string()) != Interpreter::Known::no;
}

Value what_is(Invocation& call) {
    require_arguments(call, 1, 1);
    const std::string name = call.arguments[0].to_string();
    const std::string place = call.interpreter.place_of(name);
    switch (call.interpreter.find(name)) {
    case Interpreter::Known::command:
        return "Command";
    case Interpreter::Known::procedure:
        return "Mel procedure found in: " + place;
    case Interpreter::Known::script:
        return "Script found in: " + place;
    case Interpreter::Known::no:
        break;
    }
    return "Unknown";
}

template <class T>
void sort_values(Value& array) {
    T& values = array.as<T>();
    std::stable_sort(values.begin(), values.end());
}

Value sort(Invocation& call) {
    require_arguments(call, 1, 1);
    Value array = call.arguments[0];
    if (!array.type().array || array.type().basic == Basic::vector)
        throw ScriptFault("sort needs an array of int, float or string.");
    array = array.converted(array.type());
    if (array.type().basic == Basic::integer)
        sort_values<IntArray>(array);
    else if (array.type().basic == Basic::real)
        sort_values<RealArray>(array);
    else
        sort_values<StringArray>(array);
    return array;
}

} // namespace

void require_arguments(const Invocation& call, size_t min, size_t max) {
    const size_t given = call.arguments.size();
    const std::string wanted =
        min == max ? std::to_string(min) : std::to_string(min) + " to " + std::to_string(max);
    if (call.describes)
        throw CommandSyntax{{}, wanted};
    if (given >= min && given <= max)
        return;
    throw ScriptFault("Wrong number of arguments on call to " + call.name + ": " + wanted +
                      " expected, " + std::to_string(given) + " given.");
}

Value& array_argument(Invocation& call, size_t index, Basic basic) {
    Value& value = call.arguments[index];
    if (value.type() != Type{basic, true})
        throw ScriptFault("Argument " + std::to_string(index + 1) + " of " + call.name +
                          " must be a " + to_text({basic, true}) + ", not a " +
                          to_text(value.type()) + ".");
    return value;
}

void add_core_functions(Interpreter& interpreter) {
    interpreter.add_command("print", print);
    interpreter.add_command("error", error);
    interpreter.add_command("warning", warning);
    interpreter.add_command("size", size);
    interpreter.add_command("clear", clear);
    interpreter.add_command("eval", eval);
    interpreter.add_command("evalDeferred",
                            eval); // runs at once: scripts run without an event loop
    interpreter.add_command("source", source);
    interpreter.add_command("exists", exists);
    interpreter.add_command("whatIs", what_is);
    interpreter.add_command("sort", sort);
}

void add_language_functions(Interpreter& interpreter) {
    add_core_functions(interpreter);
    add_text_functions(interpreter);
    add_math_functions(interpreter);
}

} // namespace host::script
