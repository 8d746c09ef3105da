#include "host/script/functions.h"
#include "host/script/patterns.h"

#include <algorithm>

namespace host::script {

namespace {

std::string text_argument(const Invocation& call, size_t index) {
    return call.arguments[index].to_string();
}

Value match(Invocation& call) {
    require_arguments(call, 2, 2);
    const std::string text = text_argument(call, 1);
    size_t first, last;
    if (!find_pattern(text_argument(call, 0), text, first, last))
        return std::string();
    return text.substr(first, last - first);
}

Value substitute(Invocation& call) {
    require_arguments(call, 3, 3);
    std::string text = text_argument(call, 1);
    size_t first, last;
    if (find_pattern(text_argument(call, 0), text, first, last))
        text.replace(first, last - first, text_argument(call, 2));
    return text;
}

Value gmatch(Invocation& call) {
    require_arguments(call, 2, 2);
    return fits_wildcards(text_argument(call, 1), text_argument(call, 0));
}

/// Splits a text at any of the delimiter characters; drops empty pieces.
StringArray pieces(const std::string& text, const std::string& delimiters) {
    StringArray found;
    size_t start = text.find_first_not_of(delimiters);
    while (start != std::string::npos) {
        const size_t end = text.find_first_of(delimiters, start);
        found.push_back(text.substr(start, end - start));
        start = text.find_first_not_of(delimiters, end);
    }
    return found;
}

Value tokenize(Invocation& call) {
    require_arguments(call, 2, 3);
    const bool given = call.arguments.size() == 3;
    const std::string delimiters = given ? text_argument(call, 1) : " \t\n\r";
    Value& array = array_argument(call, given ? 2 : 1, Basic::string);
    array.as<StringArray>() = pieces(text_argument(call, 0), delimiters);
    return int32_t(array.size());
}

Value substring(Invocation& call) {
    require_arguments(call, 3, 3);
    const std::string text = text_argument(call, 0);
    const int32_t length = int32_t(text.size());
    const int32_t first = std::max(call.arguments[1].to_int(), 1);
    const int32_t last = std::min(call.arguments[2].to_int(), length);
    if (first > last)
        return std::string();
    return text.substr(size_t(first - 1), size_t(last - first + 1));
}

Value string_compare(Invocation& call) {
    require_arguments(call, 2, 2);
    const int order = text_argument(call, 0).compare(text_argument(call, 1));
    return int32_t(order < 0 ? -1 : order > 0);
}

template <char First, char Last>
Value change_case(Invocation& call) {
    require_arguments(call, 1, 1);
    std::string text = text_argument(call, 0);
    for (char& c : text)
        if (c >= First && c <= Last)
            c = char(c ^ 0x20);
    return text;
}

Value capitalize(Invocation& call) {
    require_arguments(call, 1, 1);
    std::string text = text_argument(call, 0);
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z')
        text[0] = char(text[0] ^ 0x20);
    return text;
}

Value start_string(Invocation& call) {
    require_arguments(call, 2, 2);
    return text_argument(call, 0).substr(0, size_t(std::max(call.arguments[1].to_int(), 0)));
}

Value end_string(Invocation& call) {
    require_arguments(call, 2, 2);
    const std::string text = text_argument(call, 0);
    const size_t count = size_t(std::max(call.arguments[1].to_int(), 0));
    return count >= text.size() ? text : text.substr(text.size() - count);
}

Value starts_with(Invocation& call) {
    require_arguments(call, 2, 2);
    return text_argument(call, 0).rfind(text_argument(call, 1), 0) == 0;
}

Value ends_with(Invocation& call) {
    require_arguments(call, 2, 2);
    const std::string text = text_argument(call, 0), tail = text_argument(call, 1);
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

Value strip(Invocation& call) {
    require_arguments(call, 1, 1);
    const std::string text = text_argument(call, 0);
    const size_t first = text.find_first_not_of(" \t\n\r");
    if (first == std::string::npos)
        return std::string();
    return text.substr(first, text.find_last_not_of(" \t\n\r") - first + 1);
}

Value array_contains(Invocation& call) {
    require_arguments(call, 2, 2);
    const StringArray& values = array_argument(call, 1, Basic::string).as<StringArray>();
    return std::find(values.begin(), values.end(), text_argument(call, 0)) != values.end();
}

Value array_catenate(Invocation& call) {
    require_arguments(call, 2, 2);
    StringArray values = array_argument(call, 0, Basic::string).as<StringArray>();
    const StringArray& tail = array_argument(call, 1, Basic::string).as<StringArray>();
    values.insert(values.end(), tail.begin(), tail.end());
    return values;
}

Value array_to_string(Invocation& call) {
    require_arguments(call, 2, 2);
    const StringArray& values = array_argument(call, 0, Basic::string).as<StringArray>();
    std::string text;
    for (size_t i = 0; i < values.size(); ++i)
        text += (i == 0 ? "" : text_argument(call, 1)) + values[i];
    return text;
}

Value string_to_array(Invocation& call) {
    require_arguments(call, 2, 2);
    return pieces(text_argument(call, 0), text_argument(call, 1));
}

/// `format -stringArg a -stringArg b "^1s and ^2s"` returns "a and b".
Value format(Invocation& call) {
    StringArray values;
    std::string pattern;
    bool has_pattern = false;
    const std::vector<Value> arguments = call.expanded();
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::string text = arguments[i].to_string();
        if (text == "-stringArg" || text == "-s") {
            if (++i == arguments.size())
                throw ScriptFault("Flag -stringArg needs a value.");
            values.push_back(arguments[i].to_string());
        } else if (!has_pattern) {
            pattern = text;
            has_pattern = true;
        } else {
            throw ScriptFault("format takes one pattern; \"" + text + "\" is too much.");
        }
    }
    std::string result;
    for (size_t i = 0; i < pattern.size(); ++i) {
        size_t end = i + 1;
        size_t number = 0;
        while (pattern[i] == '^' && end < pattern.size() && end < i + 5 && pattern[end] >= '0' &&
               pattern[end] <= '9')
            number = number * 10 + size_t(pattern[end++] - '0');
        if (number == 0 || end >= pattern.size() || pattern[end] != 's') {
            result += pattern[i];
            continue;
        }
        if (number > values.size())
            throw ScriptFault("format has no value for ^" + std::to_string(number) + "s.");
        result += values[number - 1];
        i = end;
    }
    return result;
}

} // namespace

void add_text_functions(Interpreter& interpreter) {
    static const std::pair<const char*, Value (*)(Invocation&)> functions[] = {
        {"match", match},
        {"substitute", substitute},
        {"gmatch", gmatch},
        {"tokenize", tokenize},
        {"substring", substring},
        {"strcmp", string_compare},
        {"toupper", change_case<'a', 'z'>},
        {"tolower", change_case<'A', 'Z'>},
        {"capitalizeString", capitalize},
        {"startString", start_string},
        {"endString", end_string},
        {"startsWith", starts_with},
        {"endsWith", ends_with},
        {"strip", strip},
        {"stringArrayContains", array_contains},
        {"stringArrayCatenate", array_catenate},
        {"stringArrayToString", array_to_string},
        {"stringToStringArray", string_to_array},
        {"format", format},
    };
    for (const auto& function : functions)
        interpreter.add_command(function.first, function.second);
}

} // namespace host::script
