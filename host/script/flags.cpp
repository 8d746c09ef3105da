#include "host/script/flags.h"

#include <cstdlib>
#include <cstring>

namespace host::script {

namespace {

bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool whole_number(const std::string& text) {
    if (text.empty())
        return false;
    char* end = nullptr;
    std::strtod(text.c_str(), &end);
    return *end == '\0';
}

const char* kind_name(char kind) {
    switch (kind) {
    case 'b':
        return "a boolean";
    case 'i':
        return "an int";
    case 'f':
        return "a float";
    default:
        return "a string";
    }
}

std::string kind_word(char kind) {
    const std::string name = kind_name(kind);
    return name.substr(name.find(' ') + 1);
}

Value flag_value(char kind, const Value& value) {
    switch (kind) {
    case 'b':
        return boolean_from(value);
    case 'i':
    case 'f':
        if (value.is_string() && !whole_number(value.text()))
            break;
        return kind == 'i' ? Value(value.to_int()) : Value(value.to_real());
    default:
        return value.to_string();
    }
    throw ScriptFault("not a number");
}

CommandSyntax described(const FlagTable& table) {
    CommandSyntax syntax;
    for (const Flag& flag : table) {
        std::string values;
        for (const char* kind = flag.values; *kind; ++kind)
            values += (values.empty() ? "" : " ") + kind_word(*kind);
        syntax.flags.push_back({flag.short_name, flag.long_name, values, flag.modes});
    }
    return syntax;
}

} // namespace

bool is_flag(const Value& value) {
    return value.is_string() && value.text().size() > 1 && value.text()[0] == '-' &&
           is_letter(value.text()[1]);
}

bool boolean_from(const Value& value) {
    if (!value.is_string())
        return value.truth();
    const std::string& text = value.text();
    for (const char* yes : {"on", "yes", "true", "1"})
        if (text == yes)
            return true;
    for (const char* no : {"off", "no", "false", "0"})
        if (text == no)
            return false;
    throw ScriptFault("\"" + text + "\" is not a boolean.");
}

const Flag* Flags::find(const FlagTable& table, const std::string& name) const {
    for (const Flag& flag : table)
        if (name == flag.short_name || name == flag.long_name)
            return &flag;
    throw ScriptFault("Invalid flag \"-" + name + "\" for the command " + command_ + ".");
}

void Flags::find_mode(const std::vector<Value>& arguments, const FlagTable& table) {
    bool can_query = false, can_edit = false;
    for (const Flag& flag : table) {
        // A command that has a -query flag of its own has no query mode.
        if (std::strcmp(flag.long_name, "query") == 0)
            return;
        can_query = can_query || std::strchr(flag.modes, 'q');
        can_edit = can_edit || std::strchr(flag.modes, 'e');
    }
    for (const Value& value : arguments) {
        if (!is_flag(value))
            continue;
        const std::string& text = value.text();
        if (can_query && (text == "-q" || text == "-query"))
            mode_ = Mode::query;
        if (can_edit && (text == "-e" || text == "-edit"))
            mode_ = Mode::edit;
    }
}

void Flags::check_mode(const Flag& flag) const {
    static const char letters[] = {'c', 'q', 'e'};
    static const char* const names[] = {"created", "queried", "edited"};
    if (std::strchr(flag.modes, letters[size_t(mode_)]))
        return;
    throw ScriptFault(std::string("Flag \"-") + flag.long_name + "\" of the command " + command_ +
                      " cannot be " + names[size_t(mode_)] + ".");
}

Flags::Flags(const Invocation& call, const FlagTable& table) : command_(call.name) {
    if (call.describes)
        throw described(table);
    const std::vector<Value> arguments = call.expanded();
    find_mode(arguments, table);
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (!is_flag(arguments[i])) {
            operands_.push_back(arguments[i]);
            continue;
        }
        const std::string name = arguments[i].text().substr(1);
        if (mode_ == Mode::query && (name == "q" || name == "query"))
            continue;
        if (mode_ == Mode::edit && (name == "e" || name == "edit"))
            continue;
        const Flag* flag = find(table, name);
        check_mode(*flag);
        Use use{*flag, {}};
        for (const char* kind = flag->values; *kind && mode_ != Mode::query; ++kind) {
            const bool there = i + 1 < arguments.size();
            try {
                if (!there)
                    throw ScriptFault("missing");
                use.values.push_back(flag_value(*kind, arguments[i + 1]));
                ++i;
            } catch (const ScriptFault&) {
                throw ScriptFault(
                    "Flag \"-" + name + "\" of the command " + command_ + " needs " +
                    kind_name(*kind) +
                    (there ? ", not \"" + arguments[i + 1].to_string() + "\"." : "."));
            }
        }
        uses_.push_back(std::move(use));
    }
}

const Flags::Use* Flags::last_use(const char* name) const {
    for (auto use = uses_.rbegin(); use != uses_.rend(); ++use)
        if (std::strcmp(use->flag.long_name, name) == 0)
            return &*use;
    return nullptr;
}

bool Flags::has(const char* name) const { return last_use(name) != nullptr; }

const Value& Flags::value(const char* name, size_t index) const {
    const Use* use = last_use(name);
    if (!use || index >= use->values.size())
        throw ScriptFault(std::string("Flag \"-") + name + "\" is missing.");
    return use->values[index];
}

std::string Flags::text(const char* name, const char* absent) const {
    return has(name) ? value(name).to_string() : std::string(absent);
}

int32_t Flags::integer(const char* name, int32_t absent) const {
    return has(name) ? value(name).to_int() : absent;
}

double Flags::real(const char* name, double absent) const {
    return has(name) ? value(name).to_real() : absent;
}

bool Flags::boolean(const char* name, bool absent) const {
    return has(name) ? value(name).truth() : absent;
}

std::vector<std::vector<Value>> Flags::uses(const char* name) const {
    std::vector<std::vector<Value>> found;
    for (const Use& use : uses_)
        if (std::strcmp(use.flag.long_name, name) == 0)
            found.push_back(use.values);
    return found;
}

StringArray Flags::names() const {
    StringArray names;
    for (const Value& value : operands_)
        names.push_back(value.to_string());
    return names;
}

std::vector<std::string> Flags::given() const {
    std::vector<std::string> names;
    for (const Use& use : uses_)
        names.emplace_back(use.flag.long_name);
    return names;
}

void Flags::require_operands(size_t min, size_t max) const {
    if (operands_.size() >= min && operands_.size() <= max)
        return;
    throw ScriptFault(
        "The command " + command_ + " takes " +
        (min == max ? std::to_string(min) : std::to_string(min) + " to " + std::to_string(max)) +
        " arguments besides its flags, not " + std::to_string(operands_.size()) + ".");
}

} // namespace host::script
