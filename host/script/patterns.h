/// Patterns over text, by the system's own library where it has one.
#pragma once

#include <cstddef>
#include <string>

namespace host::script {

/// The leftmost match of an extended regular expression, the longest there, as offsets; or false.
/// Throws ScriptFault when the pattern is none.
bool find_pattern(const std::string& pattern, const std::string& text, size_t& first, size_t& last);

/// Whether the whole text fits the wildcards: * any text, ? any character, [abc], [a-c] and [!abc]
/// one of a set, a backslash before a character that means itself.
bool fits_wildcards(const std::string& pattern, const std::string& text);

} // namespace host::script
