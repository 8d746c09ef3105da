/// Fuzz target: the script language without the host's commands. The input is a script.
///
/// So that every input ends, the text is changed before it runs: blocks and `while` conditions call
/// a command that fails after some calls, and `for` loops must have a block. Numbers of six digits
/// and more are refused, because an array grows up to the highest index that is written.
#include "host/script/interpreter.h"

#include <cctype>
#include <cstdint>

namespace {

using namespace host::script;

constexpr int k_fuel = 24;
int fuel;

class Silent : public Output {
public:
    void print(const std::string&) override {}
    void warning(const std::string&) override {}
    void error(const std::string&) override {}
};

/// Words, single characters, and strings and comments as a whole.
std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> tokens;
    for (size_t i = 0; i < text.size();) {
        size_t end = i + 1;
        if (text[i] == '"') {
            while (end < text.size() && text[end] != '"')
                end += text[end] == '\\' ? 2 : 1;
            ++end;
        } else if (text.compare(i, 2, "//") == 0) {
            end = text.find('\n', i);
        } else if (text.compare(i, 2, "/*") == 0) {
            end = text.find("*/", i + 2);
            end = end == text.npos ? end : end + 2;
        } else if (std::isalnum(uint8_t(text[i])) || text[i] == '_') {
            while (end < text.size() && (std::isalnum(uint8_t(text[end])) || text[end] == '_'))
                ++end;
        }
        end = std::min(end, text.size());
        tokens.push_back(text.substr(i, end - i));
        i = end;
    }
    return tokens;
}

/// The text with its loops and procedures limited; empty if it is refused.
std::string limited(const std::string& text) {
    std::string result, previous;
    bool for_head = false;
    int parentheses = 0;
    for (const std::string& token : split(text)) {
        const bool blank = std::isspace(uint8_t(token[0])) || token.compare(0, 2, "//") == 0 ||
                           token.compare(0, 2, "/*") == 0;
        if (std::isdigit(uint8_t(token[0])) && token.size() > 5)
            return "";
        if (!blank && for_head && parentheses == 0 && previous == ")") {
            if (token != "{")
                return "";
            for_head = false;
        }
        if (token == "for" && for_head)
            return "";
        if (token == "for") {
            for_head = true;
            parentheses = 0;
        }
        parentheses += token == "(" ? 1 : token == ")" ? -1 : 0;
        result += token;
        if (token == "{" && (previous == ")" || previous == "do" || previous == "else" ||
                             previous == ";" || previous == "{" || previous == "}"))
            result += "burn_fuel;";
        if (token == "(" && previous == "while")
            result += "burn_fuel() && ";
        if (!blank)
            previous = token;
    }
    return for_head ? "" : result;
}

Value burn_fuel(Invocation&) {
    if (--fuel < 0)
        throw ScriptFault("out of fuel");
    return int32_t(1);
}

Value evaluate_limited(Invocation& call) {
    std::string text;
    for (const Value& value : call.expanded())
        text += value.to_string() + " ";
    if (--fuel < 0)
        throw ScriptFault("out of fuel");
    return call.interpreter.run(limited(text), "eval");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = limited(std::string(reinterpret_cast<const char*>(data), size));
    Silent output;
    Interpreter interpreter(output);
    interpreter.add_command("burn_fuel", burn_fuel);
    interpreter.add_command("eval", evaluate_limited);
    interpreter.add_command("evalDeferred", evaluate_limited);
    interpreter.remove_command("source");
    fuel = k_fuel;
    try {
        interpreter.run(text, "input.mel");
    } catch (const ScriptError&) {
    }
    return 0;
}
