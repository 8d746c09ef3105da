/// The script console's memory: what was said and what was typed.
///
/// Everything said also goes to the process's standard streams, as in the other ways to run the
/// program, so that a terminal or a log holds it too.
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
    /// What the user typed, and what came of it.
    void echo(const std::string& statements);
    void result(const std::string& text);

    /// The newest k_most_lines lines, oldest first.
    const std::deque<Line>& lines() const { return lines_; }
    /// Counts up with every line, so that a view knows when to scroll.
    size_t revision() const { return revision_; }
    /// The newest line of a kind that is a result, a warning or an error, of those that came after
    /// a revision; null if there is none.
    const Line* last(size_t since = 0) const;
    void clear();
    bool echoes_to_streams = true;

    // Typed statements: up and down walk through them as in a shell.
    void remember(const std::string& statements);
    /// The statements before (or after, with forward) those shown; `draft` is what stands in the
    /// field and comes back at the newer end. Empty changes nothing.
    std::string recall(bool forward, const std::string& draft);
    const std::vector<std::string>& history() const { return history_; }

    static constexpr size_t k_most_lines = 5000;

private:
    void add(Kind kind, const std::string& text);

    /// The error stream as it was first: somebody may lead std::cerr to this console.
    std::ostream errors_{std::cerr.rdbuf()};

    std::deque<Line> lines_;
    std::string unfinished_; ///< printed without a line end so far
    size_t revision_ = 0;
    std::vector<std::string> history_;
    size_t place_ = 0; ///< in history_; its size: at the draft
    std::string draft_;
};

/// What a line says to somebody who looks at menus and buttons: without the marks of a comment, and
/// without the place in a statement that the window itself has written.
std::string plain_words(const Console::Line& line);

/// Names that continue the word at the end of `text`, and what they all continue it with.
/// "poly" -> polyCube, polySphere ...; `$` begins a variable.
std::vector<std::string> completions(const host::script::Interpreter& interpreter,
                                     const std::string& text, std::string& common);

} // namespace window
