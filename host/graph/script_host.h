/// What the graph needs from the script language: to run statements, to show lines to the user, to
/// know the commands of plug-ins. The language registers itself here, so that the graph does not
/// depend on it.
#pragma once

#include <maya/MStatus.h>

#include <string>
#include <vector>

namespace host::graph {

/// What a command or a statement gives back.
struct MHOST_EXPORT CommandResult {
    enum class Kind { none, integer, real, text };
    Kind kind = Kind::none;
    bool is_array = false;
    /// One entry, or as many as the array has; the list of the kind is the one in use.
    std::vector<int> integers;
    std::vector<double> reals;
    std::vector<std::string> texts;

    void clear() { *this = CommandResult(); }
    size_t size() const;
    void set(int value);
    void set(double value);
    void set(const std::string& value);
    /// A result that holds something becomes an array; an int meets a text as text.
    void append(int value);
    void append(double value);
    void append(const std::string& value);
    /// Conversions as the script language has them; false when there is none (an array to a
    /// scalar, text that is no number, nothing at all).
    bool to(int& value) const;
    bool to(double& value) const;
    bool to(std::string& value) const;
    std::vector<std::string> to_texts() const;
};

enum class Line { info, warning, error };

class MHOST_EXPORT ScriptHost {
public:
    virtual ~ScriptHost();
    /// Runs statements at once, re-entrantly. `display`: echo them to the user. A failure was shown
    /// to the user before this returns.
    virtual MStatus execute(const std::string& text, bool display, bool undoable,
                            CommandResult& result) = 0;
    virtual MStatus source(const std::string& file) = 0;
    /// A line for the user, without prefix or newline.
    virtual void show(Line line, const std::string& text) = 0;
    /// A plug-in brought a command, or took it away. Calls go to Commands::run.
    virtual void command_added(const std::string& name) = 0;
    virtual void command_removed(const std::string& name) = 0;
};

/// Not owned; null for none: then execution fails, and lines go to standard output and error as
/// "// Warning: ..." and "// Error: ...".
MHOST_EXPORT void set_script_host(ScriptHost* script);
MHOST_EXPORT ScriptHost* script_host();

MHOST_EXPORT void show_line(Line line, const std::string& text);

} // namespace host::graph
