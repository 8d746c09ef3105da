/// Option variables: settings that scripts remember between runs.
///
/// Kept in a file of `optionVar` statements, so that a person can read and mend it. Every change is
/// written at once, whole or not at all. Without a file name they last as long as the process.
#pragma once

#include "host/script/interpreter.h"

#include <map>
#include <memory>
#include <string>

namespace host::script {

class MHOST_EXPORT OptionVariables {
public:
    /// The file need not exist; damaged statements in it are skipped with a warning.
    explicit OptionVariables(std::string file = std::string())
        : file_(std::move(file)), loaded_(file_.empty()) {}
    /// Reads the file, the first time only: programs that need no options leave it alone.
    void load(Output& output);

    const Value* find(const std::string& name) const;
    /// An int, a float, a text, or an array of one of them. Throws ScriptFault when the file cannot
    /// be written; the value holds for this process all the same.
    void set(const std::string& name, const Value& value);
    void remove(const std::string& name);
    StringArray names() const;

private:
    void save() const;
    std::string file_;
    bool loaded_;
    std::map<std::string, Value> values_;
};

/// $TESSORA_PREFERENCES if set, else tessora/option_variables.mel below $XDG_CONFIG_HOME or
/// ~/.config; empty when there is no home.
MHOST_EXPORT std::string option_variable_file();

/// Adds the command optionVar.
MHOST_EXPORT void add_option_variables(Interpreter& interpreter,
                                       const std::shared_ptr<OptionVariables>& variables);

} // namespace host::script
