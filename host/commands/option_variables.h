/// Option variables: settings that scripts remember between runs.
///
/// Saved to a file of `optionVar` statements, which a user can read and edit; every change rewrites
/// the file atomically. Without a file name they are lost at the end of the process.
#pragma once

#include "host/script/interpreter.h"

#include <map>
#include <memory>
#include <string>

namespace host::script {

class MHOST_EXPORT OptionVariables {
public:
    /// The file need not exist. Invalid statements in it are skipped with a warning.
    explicit OptionVariables(std::string file = std::string())
        : file_(std::move(file)), loaded_(file_.empty()) {}
    /// Reads the file on the first call. Programs that use no option variables never read it.
    void load(Output& output);

    const Value* find(const std::string& name) const;
    /// Sets an int, a float, a string, or an array of one of them. Throws ScriptFault if the file
    /// cannot be written; the variable is set for this process nevertheless.
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
/// ~/.config; empty if $HOME is not set. On Windows, below %APPDATA%.
MHOST_EXPORT std::string option_variable_file();

/// Adds the command optionVar.
MHOST_EXPORT void add_option_variables(Interpreter& interpreter,
                                       const std::shared_ptr<OptionVariables>& variables);

} // namespace host::script
