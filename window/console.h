/// The script console's log and input history.
///
/// Output is also written to the process's standard streams, so that a terminal or log file
/// captures it as it does for the other commands of the program.
#pragma once

#include "host/script/interpreter.h"

#include <cstddef>
#include <deque>
#include <iostream>
#include <string>
#include <vector>

namespace window {

class Console : public host::script::Output {
public:
    enum class Kind { input, output, result, warning, error };
    struct Line {
        Kind kind;
        std::string text; ///< without a line end
    };

    void print(const std::string& text) override;
    void warning(const std::string& text) override;
    void error(const std::string& text) override;
    /// Adds the statements that the user typed, and their result, to the log.
    void echo(const std::string& statements);
    void result(const std::string& text);

    /// The newest k_max_lines lines, oldest first.
    const std::deque<Line>& lines() const { return lines_; }
    /// Increases with every line added, so that a view knows when to scroll.
    size_t revision() const { return revision_; }
    /// The newest result, warning or error added after revision `since`; null if none.
    const Line* last(size_t since = 0) const;
    void clear();
    bool echoes_to_streams = true;
    /// Warnings and errors are dropped, because what causes them was asked for: a cancelled
    /// statement fails in many words.
    bool withholds_errors = false;

    // Input history, navigated with the up and down keys as in a shell.
    void remember(const std::string& statements);
    /// Steps to the previous (`forward`: next) history entry and returns it. `draft` is the text in
    /// the input field; it is returned again when stepping past the newest entry.
    std::string recall(bool forward, const std::string& draft);
    const std::vector<std::string>& history() const { return history_; }

    static constexpr size_t k_max_lines = 5000;

private:
    void add(Kind kind, const std::string& text);

    /// Writes to std::cerr's original buffer; std::cerr itself may be redirected to this console.
    std::ostream errors_{std::cerr.rdbuf()};

    std::deque<Line> lines_;
    std::string unfinished_; ///< printed without a line end so far
    size_t revision_ = 0;
    std::vector<std::string> history_;
    size_t place_ = 0; ///< index into history_; history_.size() stands for the draft
    std::string draft_;
};

/// A line for the status bar: without "// Error: " and the like, and without "window:LINE:COLUMN:",
/// which points into a statement that the window generated.
std::string plain_words(const Console::Line& line);

/// Command names (after `$`: variable names) that complete the word at the end of `text`. `common`
/// receives the characters that all of them add: "polyC" -> polyCube, polyCylinder, `common` empty.
std::vector<std::string> completions(const host::script::Interpreter& interpreter,
                                     const std::string& text, std::string& common);

} // namespace window
