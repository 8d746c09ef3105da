#include "app/options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace app {
namespace {

std::string normalised(std::string name) {
    for (size_t i = 2; i < name.size(); ++i)
        if (name[i] == '-')
            name[i] = '_';
    return name;
}

bool read_switch(const std::string& word, bool& value) {
    for (const char* yes : {"on", "yes", "true", "1"})
        if (word == yes)
            return value = true;
    for (const char* no : {"off", "no", "false", "0"})
        if (word == no) {
            value = false;
            return true;
        }
    return false;
}

template <class Number>
bool read_number(std::string word, Number& value) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
        word.erase(0, 1);
    Number read{};
    const char* end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, read);
    if (result.ec != std::errc() || result.ptr != end || !std::isfinite(double(read)))
        return false;
    value = read;
    return true;
}

/// Stores `word` in the target and returns null, or returns what kind of value was expected.
struct Store {
    const std::string& word;
    const char* operator()(bool* target) const {
        return read_switch(word, *target) ? nullptr : "on, off, yes, no, true, false, 1 or 0";
    }
    const char* operator()(int* target) const {
        return read_number(word, *target) ? nullptr : "a whole number";
    }
    const char* operator()(double* target) const {
        return read_number(word, *target) ? nullptr : "a number";
    }
    const char* operator()(std::string* target) const {
        *target = word;
        return word.empty() ? "a name" : nullptr;
    }
};

struct DefaultText {
    std::string operator()(const bool*) const { return ""; }
    std::string operator()(const int* value) const { return std::to_string(*value); }
    std::string operator()(const double* value) const {
        char digits[32];
        return {digits, std::to_chars(digits, digits + sizeof digits, *value).ptr};
    }
    std::string operator()(const std::string* value) const { return *value; }
};

/// `text` wrapped at `width` columns; the first line starts at column `indent`, the others are
/// indented by it.
std::string wrapped(const std::string& text, size_t indent, size_t width) {
    std::string out;
    size_t column = indent;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find(' ', at), text.size());
        if (column > indent && column + 1 + end - at > width) {
            out += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            out += ' ';
            ++column;
        }
        out.append(text, at, end - at);
        column += end - at;
        at = end + 1;
    }
    return out;
}

/// Levenshtein distance: the fewest insertions, deletions and replacements from `a` to `b`.
size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<size_t> row(b.size() + 1);
    for (size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (size_t i = 1; i <= a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i;
        for (size_t j = 1; j <= b.size(); ++j) {
            const size_t above = row[j];
            row[j] = std::min({above + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

} // namespace

std::string nearest(const std::string& word, const std::vector<std::string>& candidates) {
    std::string best;
    size_t least = std::max<size_t>(2, word.size() / 3) + 1;
    if (word.size() > 100)
        return best;
    for (const std::string& candidate : candidates) {
        const size_t distance = edit_distance(word, candidate);
        if (distance < least) {
            least = distance;
            best = candidate;
        }
    }
    return best;
}

void OptionTable::heading(const std::string& text) {
    rows_.push_back({"", "", static_cast<bool*>(nullptr), "", text, ""});
}

void OptionTable::add(const std::string& name, Target target, const std::string& value_name,
                      const std::string& help) {
    rows_.push_back({name, name == "help" ? "-h" : "", target, value_name, help,
                     std::visit(DefaultText{}, target)});
}

void OptionTable::alias(const std::string& spelling) { rows_.back().alias = spelling; }

void OptionTable::choices(std::vector<std::string> values) {
    rows_.back().choices = std::move(values);
}

const OptionTable::Row* OptionTable::find(const std::string& spelling) const {
    for (const Row& row : rows_)
        if (!row.name.empty() && (spelling == "--" + row.name || spelling == row.alias))
            return &row;
    return nullptr;
}

std::string OptionTable::unknown(const std::string& spelling) const {
    std::vector<std::string> names;
    for (const Row& row : rows_)
        if (!row.name.empty())
            names.push_back("--" + row.name);
    const std::string guess = spelling.size() > 3 ? nearest(normalised(spelling), names) : "";
    return "unknown option " + spelling + (guess.empty() ? "" : "; did you mean " + guess + "?");
}

bool OptionTable::parse(const std::vector<std::string>& words, std::vector<std::string>& operands,
                        std::string& error) const {
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (word == "--") {
            operands.insert(operands.end(), words.begin() + std::ptrdiff_t(i) + 1, words.end());
            break;
        }
        if (word.size() < 2 || word[0] != '-') {
            operands.push_back(word);
            continue;
        }
        const size_t equals = word.find('=');
        const std::string spelling = word.substr(0, equals);
        const Row* row = find(normalised(spelling));
        if (!row) {
            error = unknown(spelling);
            return false;
        }
        const bool attached = equals != word.npos;
        if (bool* const* target = std::get_if<bool*>(&row->target); target && !attached) {
            if (i + 1 < words.size() && read_switch(words[i + 1], **target))
                ++i;
            else
                **target = true;
            continue;
        }
        if (!attached && i + 1 == words.size()) {
            error = spelling + " needs a value: " + row->value_name;
            return false;
        }
        const std::string value = attached ? word.substr(equals + 1) : words[++i];
        if (const char* expected = std::visit(Store{value}, row->target)) {
            error = spelling + ": '" + value + "' is not " + expected;
            return false;
        }
    }
    return true;
}

std::string OptionTable::help() const {
    constexpr size_t indent = 24, width = 80;
    std::string out;
    for (const Row& row : rows_) {
        if (row.name.empty()) {
            out += (out.empty() ? "" : "\n") + row.help + "\n";
            continue;
        }
        std::string left = "  " + (row.alias.empty() ? "" : row.alias + ", ") + "--" + row.name;
        left += row.value_name.empty() ? "" : " " + row.value_name;
        if (left.size() + 2 > indent)
            left += "\n" + std::string(indent, ' ');
        else
            left.resize(indent, ' ');
        const std::string text =
            row.help + (row.default_text.empty() ? "" : " (" + row.default_text + ")");
        out += left + wrapped(text, indent, width) + "\n";
    }
    return out;
}

} // namespace app
