/// Long options of a command line, as a table that parses words and prints its own help.
///
/// `--name VALUE` or `--name=VALUE`; `-` and `_` are the same inside a name; there are no
/// abbreviations. A switch takes the next word as its value only when that word is one of on, off,
/// yes, no, true, false, 1, 0. `--` ends the options, and `-` alone is an operand. When an option
/// is given twice, the last one counts.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace app {

class OptionTable {
public:
    using Target = std::variant<bool*, int*, double*, std::string*>;

    /// A heading of the help text for the options that follow.
    void heading(const std::string& text);

    /// `target` holds the default and receives the value; it must outlive the table. `value_name`
    /// stands in the help text ("" for switches), and so does the default of numbers.
    void add(const std::string& name, Target target, const std::string& value_name,
             const std::string& help);
    /// Another spelling of the option added last, with its dashes ("-o").
    void alias(const std::string& spelling);

    /// Reads the words; operands are appended to `operands` in order.
    /// Errors: false with a sentence in `error`; targets may have been written by then.
    bool parse(const std::vector<std::string>& words, std::vector<std::string>& operands,
               std::string& error) const;

    /// One block a line or more per option, headings between, 80 columns.
    std::string help() const;

private:
    struct Row {
        std::string name; // empty: a heading, whose text is in `help`
        std::string alias;
        Target target;
        std::string value_name;
        std::string help;
        std::string default_text;
    };
    const Row* find(const std::string& spelling) const;
    std::string unknown(const std::string& spelling) const;

    std::vector<Row> rows_;
};

/// The candidate nearest to `word` by edit distance, if it is near enough to be a slip of the
/// fingers; else "".
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

} // namespace app
