/// Regular expressions and wildcards, by the system's library where it has one.
#pragma once

#include <cstddef>
#include <string>

namespace host::script {

/// Finds the leftmost, longest match of a POSIX extended regular expression as the range [first,
/// last). False if there is no match. Throws ScriptFault if the pattern is invalid.
bool find_pattern(const std::string& pattern, const std::string& text, size_t& first, size_t& last);

/// Whether the whole text matches a shell pattern: * matches any text, ? any character, [abc],
/// [a-c] and [!abc] one of a set; a backslash escapes the next character.
bool fits_wildcards(const std::string& pattern, const std::string& text);

} // namespace host::script
