/// Flags of built-in commands: one table per command, parsed strictly.
///
/// A flag that the table does not list is refused by name; so is one that the mode (create, query,
/// edit) does not allow, a missing value, and a value of the wrong kind. Nothing is ever ignored.
#pragma once

#include "host/script/interpreter.h"

#include <string>
#include <vector>

namespace host::script {

struct Flag {
    const char* short_name; ///< without the dash
    const char* long_name;
    /// One letter per value: b boolean, i int, f float, s string. Empty: the flag stands alone.
    const char* values = "";
    /// Where it may stand: c create, q query, e edit. In a query it takes no values.
    const char* modes = "c";
};

using FlagTable = std::vector<Flag>;

enum class Mode { create, query, edit };

class MHOST_EXPORT Flags {
public:
    /// Reads the arguments of a call. `-q/-query` and `-e/-edit` are known to every command whose
    /// table has a flag for that mode. Throws ScriptFault.
    Flags(const Invocation& call, const FlagTable& table);

    Mode mode() const { return mode_; }
    bool query() const { return mode_ == Mode::query; }
    bool edit() const { return mode_ == Mode::edit; }
    /// By long name.
    bool has(const char* name) const;
    /// Value of the last use. The flag must be there.
    const Value& value(const char* name, size_t index = 0) const;
    std::string text(const char* name, const char* absent) const;
    int32_t integer(const char* name, int32_t absent) const;
    double real(const char* name, double absent) const;
    bool boolean(const char* name, bool absent) const;
    /// The values of every use of a flag, in order.
    std::vector<std::vector<Value>> uses(const char* name) const;
    size_t count() const { return uses_.size(); }

    /// What is not a flag or a flag's value.
    const std::vector<Value>& operands() const { return operands_; }
    StringArray names() const;
    /// The long names of all flags given, in order; for a query this says what is asked.
    std::vector<std::string> given() const;
    /// Throws unless min <= operands <= max.
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

/// True when an argument is written as a flag: a string that is a dash and then a letter.
MHOST_EXPORT bool is_flag(const Value& value);
/// on/off, yes/no, true/false or a number. Throws when it is none.
MHOST_EXPORT bool boolean_from(const Value& value);

} // namespace host::script
