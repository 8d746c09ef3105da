/// Looks at streams from below: the order in which code writes to the standard ones, and which
/// descriptor a file is open under.
#pragma once

#include <functional>

/// Runs `action` and calls `note` with "stderr" or "stdout" for every line that it writes there:
/// while it writes, or on Windows afterwards, in the order of writing. Nothing is shown.
void note_streams(const std::function<void()>& action,
                  const std::function<void(const char*)>& note);

/// The descriptor that is open on `path` in this process, or -1.
int descriptor_of(const char* path);
