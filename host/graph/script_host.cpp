#include "host/graph/script_host.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace host::graph {

namespace {

ScriptHost* g_script = nullptr;

std::string text_of(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%.10g", value);
    return buffer;
}

} // namespace

size_t CommandResult::size() const {
    switch (kind) {
    case Kind::integer:
        return integers.size();
    case Kind::real:
        return reals.size();
    case Kind::text:
        return texts.size();
    case Kind::none:
        break;
    }
    return 0;
}

void CommandResult::set(int value) {
    clear();
    kind = Kind::integer;
    integers = {value};
}

void CommandResult::set(double value) {
    clear();
    kind = Kind::real;
    reals = {value};
}

void CommandResult::set(const std::string& value) {
    clear();
    kind = Kind::text;
    texts = {value};
}

void CommandResult::append(int value) {
    if (kind == Kind::none)
        return set(value);
    is_array = true;
    if (kind == Kind::integer)
        integers.push_back(value);
    else if (kind == Kind::real)
        reals.push_back(value);
    else
        texts.push_back(std::to_string(value));
}

void CommandResult::append(double value) {
    if (kind == Kind::none)
        return set(value);
    is_array = true;
    if (kind == Kind::integer) {
        reals.assign(integers.begin(), integers.end());
        integers.clear();
        kind = Kind::real;
    }
    if (kind == Kind::real)
        reals.push_back(value);
    else
        texts.push_back(text_of(value));
}

void CommandResult::append(const std::string& value) {
    if (kind == Kind::none)
        return set(value);
    texts = to_texts();
    integers.clear();
    reals.clear();
    kind = Kind::text;
    is_array = true;
    texts.push_back(value);
}

bool CommandResult::to(int& value) const {
    double number = 0.0;
    if (kind == Kind::integer && !is_array) {
        value = integers.front();
        return true;
    }
    if (!to(number) || !(number >= -2147483648.0 && number < 2147483648.0))
        return false;
    value = static_cast<int>(number);
    return true;
}

bool CommandResult::to(double& value) const {
    if (is_array || size() != 1)
        return false;
    if (kind == Kind::integer) {
        value = integers.front();
    } else if (kind == Kind::real) {
        value = reals.front();
    } else {
        const char* const text = texts.front().c_str();
        char* end = nullptr;
        const double number = std::strtod(text, &end);
        if (end == text || *end != '\0')
            return false;
        value = number;
    }
    return true;
}

bool CommandResult::to(std::string& value) const {
    if (is_array || size() != 1)
        return false;
    value = to_texts().front();
    return true;
}

std::vector<std::string> CommandResult::to_texts() const {
    std::vector<std::string> all = texts;
    for (const int value : integers)
        all.push_back(std::to_string(value));
    for (const double value : reals)
        all.push_back(text_of(value));
    return all;
}

ScriptHost::~ScriptHost() = default;

void set_script_host(ScriptHost* script) { g_script = script; }
ScriptHost* script_host() { return g_script; }

void show_line(Severity severity, const std::string& text) {
    if (g_script != nullptr)
        return g_script->show(severity, text);
    switch (severity) {
    case Severity::info:
        std::printf("// %s\n", text.c_str());
        std::fflush(stdout);
        break;
    case Severity::warning:
        std::fprintf(stderr, "// Warning: %s\n", text.c_str());
        break;
    case Severity::error:
        std::fprintf(stderr, "// Error: %s\n", text.c_str());
        break;
    }
}

} // namespace host::graph
