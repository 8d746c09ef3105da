/// A table of long options that parses a command line and prints its own help text.
///
/// `--name VALUE` or `--name=VALUE`; `-` and `_` are the same inside a name; abbreviations are not
/// accepted. A switch takes the next word as its value only if that word is on, off, yes, no, true,
/// false, 1 or 0. `--` ends the options; `-` alone is an operand. If an option is given twice, the
/// last one counts.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace app {

class OptionTable {
public:
    using Target = std::variant<bool*, int*, double*, std::string*>;

    /// Adds a heading to the help text, above the options added next.
    void heading(const std::string& text);

    /// Adds an option; "help" is also spelled -h. `target` holds the default and receives the
    /// value; it must outlive the table. The help text shows `value_name` ("" for switches) and the
    /// default.
    void add(const std::string& name, Target target, const std::string& value_name,
             const std::string& help);
    /// Adds another spelling of the last option, with its dashes ("-o").
    void alias(const std::string& spelling);
    /// Names the values of the last option, for completion; `parse` accepts others too.
    void choices(std::vector<std::string> values);

    /// Reads the options in `words` and appends the operands to `operands`, in order.
    /// Errors: false with a sentence in `error`; earlier options have been stored by then.
    bool parse(const std::vector<std::string>& words, std::vector<std::string>& operands,
               std::string& error) const;

    /// The help text: headings and options, at most 80 columns wide.
    std::string help() const;

    struct Row {
        std::string name;  ///< empty for a heading, whose text is in `help`
        std::string alias; ///< empty if none
        Target target;
        std::string value_name; ///< empty for a switch
        std::string help;
        std::string default_text;
        std::vector<std::string> choices = {};
    };
    const std::vector<Row>& rows() const { return rows_; }

private:
    const Row* find(const std::string& spelling) const;
    std::string unknown(const std::string& spelling) const;

    std::vector<Row> rows_;
};

/// The candidate nearest to `word` by edit distance, if it is near enough for `word` to be a typing
/// error; else "".
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

} // namespace app
