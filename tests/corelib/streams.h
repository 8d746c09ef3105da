/// Observes the order of writes to the standard streams, and finds the descriptor of an open file.
#pragma once

#include <functional>

/// Runs `action` and calls `note` with "stderr" or "stdout" for every line that it writes there, in
/// order; immediately, or on Windows after `action` has returned. The lines are not displayed.
void note_streams(const std::function<void()>& action,
                  const std::function<void(const char*)>& note);

/// The descriptor that is open on `path` in this process, or -1.
int descriptor_of(const char* path);
