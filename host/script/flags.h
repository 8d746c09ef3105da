/// Flags of built-in commands: one table per command, parsed strictly.
///
/// Unknown flags, flags that the mode (create, query, edit) does not allow, missing values and
/// values of the wrong type are errors that name the flag.
#pragma once

#include "host/script/interpreter.h"

#include <string>
#include <vector>

namespace host::script {

struct Flag {
    const char* short_name; ///< without the dash
    const char* long_name;
    /// One letter per value: b boolean, i int, f float, s string. Empty if the flag takes no value.
    const char* values = "";
    /// Modes that allow it: c create, q query, e edit. In query mode it takes no values.
    const char* modes = "c";
};

using FlagTable = std::vector<Flag>;

enum class Mode { create, query, edit };

class MHOST_EXPORT Flags {
public:
    /// Reads the arguments of a call. Accepts `-q/-query` and `-e/-edit` if the table has a flag
    /// for that mode. Throws ScriptFault.
    Flags(const Invocation& call, const FlagTable& table);

    Mode mode() const { return mode_; }
    bool query() const { return mode_ == Mode::query; }
    bool edit() const { return mode_ == Mode::edit; }
    /// Whether the flag was given. Flags are looked up by long name, here and below.
    bool has(const char* name) const;
    /// The value at `index` of the flag's last use. Throws ScriptFault if the flag was not given.
    const Value& value(const char* name, size_t index = 0) const;
    std::string text(const char* name, const char* absent) const;
    int32_t integer(const char* name, int32_t absent) const;
    double real(const char* name, double absent) const;
    bool boolean(const char* name, bool absent) const;
    /// The values of every use of a flag, in order.
    std::vector<std::vector<Value>> uses(const char* name) const;
    size_t count() const { return uses_.size(); }

    /// Arguments that are neither flags nor values of flags.
    const std::vector<Value>& operands() const { return operands_; }
    StringArray names() const;
    /// Long names of all flags given, in order; in query mode the properties asked for.
    std::vector<std::string> given() const;
    /// Throws ScriptFault unless the number of operands is between `min` and `max`.
    void require_operands(size_t min, size_t max) const;

private:
    struct Use {
        Flag flag;
        std::vector<Value> values;
    };
    const Use* last_use(const char* name) const;
    const Flag* find(const FlagTable& table, const std::string& name) const;
    void find_mode(const std::vector<Value>& arguments, const FlagTable& table);
    void check_mode(const Flag& flag) const;

    std::string command_;
    Mode mode_ = Mode::create;
    std::vector<Use> uses_;
    std::vector<Value> operands_;
};

/// Whether an argument is a flag: a string that starts with a dash and a letter.
MHOST_EXPORT bool is_flag(const Value& value);
/// Reads on/off, yes/no, true/false or a number. Throws ScriptFault for any other value.
MHOST_EXPORT bool boolean_from(const Value& value);

} // namespace host::script
