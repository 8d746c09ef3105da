/// File name patterns, expanded by the program itself because not every shell does it.
#pragma once

#include <string>
#include <vector>

namespace app {

/// True if the text contains a character that means something in a pattern: * ? [
bool is_glob(const std::string& text);

/// True if one name (without slashes) matches: `*` any characters, `?` one, `[a-z]` one of a set,
/// `[!a]` one outside it. A byte is a character. A `[` without `]` stands for itself.
bool glob_matches(const std::string& pattern, const std::string& name);

/// The part of a pattern before its first component with a pattern character: "a/b/*.obj" gives
/// "a/b".
std::string glob_base(const std::string& pattern);

/// The files that match, in byte order. `**` as a whole component is any number of folders. Names
/// that start with a dot match only a component that starts with one. Links to folders are followed
/// only where `**` does not search.
std::vector<std::string> expand_glob(const std::string& pattern);

} // namespace app
