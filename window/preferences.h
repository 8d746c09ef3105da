/// What the window remembers between sessions, kept as option variables.
#pragma once

#include <string>
#include <vector>

namespace window {

double preference(const char* name, double absent);
void set_preference(const char* name, double value);

/// The files opened or saved last, the newest first.
std::vector<std::string> recent_files();
/// Puts a file first; at most ten are kept.
void add_recent_file(const std::string& path);

} // namespace window
