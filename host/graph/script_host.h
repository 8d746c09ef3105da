/// The graph's interface to the script language: running statements, printing lines, announcing
/// plug-in commands. The language registers its implementation here, so that the graph does not
/// depend on it.
#pragma once

#include <maya/MStatus.h>

#include <string>
#include <vector>

namespace host::graph {

/// The result of a command or statement.
struct MHOST_EXPORT CommandResult {
    enum class Kind { none, integer, real, text };
    Kind kind = Kind::none;
    bool is_array = false;
    /// The list of the current kind holds one entry, or all elements if the result is an array.
    std::vector<int> integers;
    std::vector<double> reals;
    std::vector<std::string> texts;

    void clear() { *this = CommandResult(); }
    size_t size() const;
    void set(int value);
    void set(double value);
    void set(const std::string& value);
    /// Appending to a result that is not empty makes it an array; a number appended to text becomes
    /// text.
    void append(int value);
    void append(double value);
    void append(const std::string& value);
    /// Conversions by the rules of the script language. Return false if there is none: from an
    /// array to a scalar, from text that is not a number, from an empty result.
    bool to(int& value) const;
    bool to(double& value) const;
    bool to(std::string& value) const;
    std::vector<std::string> to_texts() const;
};

enum class Severity { info, warning, error };

class MHOST_EXPORT ScriptHost {
public:
    virtual ~ScriptHost();
    /// Runs statements immediately; may be called while other statements run. `display`: echo them
    /// to the user. Errors have been shown to the user when it returns.
    virtual MStatus execute(const std::string& text, bool display, bool undoable,
                            CommandResult& result) = 0;
    virtual MStatus source(const std::string& file) = 0;
    /// Prints a line for the user; `text` has no prefix and no newline.
    virtual void show(Severity severity, const std::string& text) = 0;
    /// Called when a plug-in registers or deregisters a command. The language runs it by
    /// Commands::run.
    virtual void command_added(const std::string& name) = 0;
    virtual void command_removed(const std::string& name) = 0;
};

/// The implementation is not owned and may be NULL; `execute` then fails, and lines go to standard
/// output and standard error as "// Warning: ..." and "// Error: ...".
MHOST_EXPORT void set_script_host(ScriptHost* script);
MHOST_EXPORT ScriptHost* script_host();

MHOST_EXPORT void show_line(Severity severity, const std::string& text);

} // namespace host::graph
