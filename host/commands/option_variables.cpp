#include "host/commands/option_variables.h"

#include "host/io/write_file.h"
#include "host/script/flags.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace host::script {

namespace {

const FlagTable k_flags = {
    {"ex", "exists", "s"},
    {"q", "query", "s"},
    {"iv", "intValue", "si"},
    {"fv", "floatValue", "sf"},
    {"sv", "stringValue", "ss"},
    {"iva", "intValueAppend", "si"},
    {"fva", "floatValueAppend", "sf"},
    {"sva", "stringValueAppend", "ss"},
    {"rm", "remove", "s"},
    {"ca", "clearArray", "s"},
    {"l", "list"},
};

/// The value as a literal; floats with enough digits to read back exactly.
std::string literal(const Value& value) {
    if (value.is_string())
        return quoted(value.text());
    if (value.type().basic == Basic::integer)
        return std::to_string(value.to_int());
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value.to_real());
    return text;
}

const char* flag_for(Basic basic, bool append) {
    if (basic == Basic::integer)
        return append ? "-iva" : "-iv";
    if (basic == Basic::real)
        return append ? "-fva" : "-fv";
    return append ? "-sva" : "-sv";
}

class Silent : public Output {
public:
    void print(const std::string&) override {}
    void warning(const std::string&) override {}
    void error(const std::string&) override {}
};

Value append(const Value* before, const Value& value) {
    const Basic basic = value.type().basic;
    Value result = Value::zero({basic, true});
    if (before && before->type() == result.type())
        result = before->converted(result.type());
    result.append(value);
    return result;
}

Value run(Invocation& call, OptionVariables& variables) {
    const Flags flags(call, k_flags);
    flags.require_operands(0, 0);
    variables.load(call.interpreter.output());
    if (flags.has("exists"))
        return variables.find(flags.text("exists", "")) != nullptr;
    if (flags.has("query")) {
        const Value* found = variables.find(flags.text("query", ""));
        return found ? found->converted(found->type()) : Value(int32_t(0));
    }
    if (flags.has("list"))
        return variables.names();
    // Removals come first, in whatever order the flags are given.
    for (const auto& use : flags.uses("remove"))
        variables.remove(use[0].to_string());
    for (const auto& use : flags.uses("clearArray")) {
        const std::string name = use[0].to_string();
        const Value* found = variables.find(name);
        if (found && found->type().array)
            variables.set(name, Value::zero(found->type()));
    }
    for (const char* flag : {"intValue", "floatValue", "stringValue"})
        for (const auto& use : flags.uses(flag))
            variables.set(use[0].to_string(), use[1]);
    for (const char* flag : {"intValueAppend", "floatValueAppend", "stringValueAppend"})
        for (const auto& use : flags.uses(flag)) {
            const std::string name = use[0].to_string();
            variables.set(name, append(variables.find(name), use[1]));
        }
    return Value();
}

} // namespace

void OptionVariables::load(Output& output) {
    if (loaded_)
        return;
    loaded_ = true;
    if (!std::filesystem::exists(file_))
        return;
    Silent silent;
    Interpreter reader(silent);
    const auto loaded = std::make_shared<OptionVariables>();
    add_option_variables(reader, loaded);
    try {
        // Run line by line, so that an invalid statement does not affect the others.
        const std::string text = read_script(file_);
        size_t number = 0;
        for (size_t start = 0; start < text.size();) {
            const size_t end = std::min(text.find('\n', start), text.size());
            ++number;
            try {
                reader.run(text.substr(start, end - start), file_);
            } catch (const std::runtime_error&) {
                output.warning(file_ + ":" + std::to_string(number) +
                               ": This option variable cannot be read and is left out.");
            }
            start = end + 1;
        }
    } catch (const ScriptFault& fault) {
        output.warning(fault.what());
    }
    values_ = loaded->values_;
}

const Value* OptionVariables::find(const std::string& name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? nullptr : &found->second;
}

void OptionVariables::set(const std::string& name, const Value& value) {
    values_[name] = value;
    save();
}

void OptionVariables::remove(const std::string& name) {
    if (values_.erase(name) != 0)
        save();
}

StringArray OptionVariables::names() const {
    StringArray names;
    for (const auto& value : values_)
        names.push_back(value.first);
    return names;
}

void OptionVariables::save() const {
    if (file_.empty())
        return;
    std::string text;
    for (const auto& entry : values_) {
        const Value& value = entry.second;
        const Basic basic = value.type().basic;
        if (!value.type().array)
            text += std::string("optionVar ") + flag_for(basic, false) + " " + quoted(entry.first) +
                    " " + literal(value) + ";\n";
        for (size_t i = 0; value.type().array && i < value.size(); ++i)
            text += std::string("optionVar ") + flag_for(basic, true) + " " + quoted(entry.first) +
                    " " + literal(value.element(int32_t(i))) + ";\n";
    }
    std::error_code failure;
    std::filesystem::create_directories(std::filesystem::path(file_).parent_path(), failure);
    std::string reason;
    if (!write_file(file_, text, Durability::process, reason))
        throw ScriptFault("The option variables cannot be written to \"" + file_ + "\": " + reason +
                          ".");
}

std::string option_variable_file() {
    if (const char* file = std::getenv("TESSORA_PREFERENCES"))
        return file;
    if (const char* data = std::getenv("APPDATA")) // Windows
        return std::string(data) + "/tessora/option_variables.mel";
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config && *config)
        return std::string(config) + "/tessora/option_variables.mel";
    const char* home = std::getenv("HOME");
    if (home && *home)
        return std::string(home) + "/.config/tessora/option_variables.mel";
    return std::string();
}

void add_option_variables(Interpreter& interpreter,
                          const std::shared_ptr<OptionVariables>& variables) {
    interpreter.add_command("optionVar",
                            [variables](Invocation& call) { return run(call, *variables); });
}

} // namespace host::script
