#include "host/script/functions.h"
#include "host/script/patterns.h"

#include <regex>

namespace host::script {

namespace {

namespace re = std::regex_constants;

/// Error texts for invalid patterns, worded as by the POSIX library.
struct Reason {
    re::error_type code;
    const char* text;
};
const Reason k_reasons[] = {
    {re::error_brack, "Unmatched [, [^, [:, [., or [="},
    {re::error_paren, "Unmatched ( or \\("},
    {re::error_brace, "Unmatched \\{"},
    {re::error_badbrace, "Invalid content of \\{\\}"},
    {re::error_range, "Invalid range end"},
    {re::error_ctype, "Invalid character class name"},
    {re::error_collate, "Invalid collation character"},
    {re::error_escape, "Trailing backslash"},
    {re::error_badrepeat, "Invalid preceding regular expression"},
};

const char* reason_of(re::error_type code) {
    for (const Reason& reason : k_reasons)
        if (reason.code == code)
            return reason.text;
    return "Invalid regular expression";
}

/// Matches `c` against the character set that starts at `at`, after the '['. Returns the offset
/// after the set, or npos if the ']' is missing.
size_t fits_set(const std::string& pattern, size_t at, char c, bool& fits) {
    const bool excludes = at < pattern.size() && (pattern[at] == '!' || pattern[at] == '^');
    at += excludes;
    fits = false;
    for (bool first = true; at < pattern.size() && (first || pattern[at] != ']'); first = false) {
        if (pattern[at] == '\\' && at + 1 < pattern.size())
            ++at;
        const char low = pattern[at++];
        char high = low;
        if (at + 1 < pattern.size() && pattern[at] == '-' && pattern[at + 1] != ']') {
            high = pattern[at + 1];
            at += 2;
        }
        fits = fits || (low <= c && c <= high);
    }
    fits = fits != excludes;
    return at < pattern.size() ? at + 1 : std::string::npos;
}

/// Matches `c` against the pattern element at `at` (a character, '?' or a set, not '*') and moves
/// `at` past it.
bool fits_one(const std::string& pattern, size_t& at, char c) {
    const char piece = pattern[at++];
    if (piece == '?')
        return true;
    if (piece == '[') {
        bool fits = false;
        const size_t end = fits_set(pattern, at, c, fits);
        if (end == std::string::npos)
            return c == '['; // without a ']' the '[' is an ordinary character
        at = end;
        return fits;
    }
    if (piece == '\\' && at < pattern.size())
        return pattern[at++] == c;
    return piece == c;
}

} // namespace

bool find_pattern(const std::string& pattern, const std::string& text, size_t& first,
                  size_t& last) {
    try {
        std::smatch match;
        if (!std::regex_search(text, match, std::regex(pattern, std::regex::extended)))
            return false;
        first = size_t(match.position(0));
        last = first + size_t(match.length(0));
        return true;
    } catch (const std::regex_error& error) {
        throw ScriptFault("The pattern \"" + pattern +
                          "\" is no regular expression: " + reason_of(error.code()) + ".");
    }
}

/// Backtracks to the last '*' only: letting an earlier one match more text never helps.
bool fits_wildcards(const std::string& pattern, const std::string& text) {
    size_t at = 0, i = 0;
    size_t star = std::string::npos, star_text = 0;
    while (i < text.size()) {
        if (at < pattern.size() && pattern[at] == '*') {
            star = at++;
            star_text = i;
            continue;
        }
        if (at < pattern.size() && fits_one(pattern, at, text[i])) {
            ++i;
            continue;
        }
        if (star == std::string::npos)
            return false;
        at = star + 1;
        i = ++star_text;
    }
    while (at < pattern.size() && pattern[at] == '*')
        ++at;
    return at == pattern.size();
}

} // namespace host::script
