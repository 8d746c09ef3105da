/// The system calls behind temporary_file.h, one source per system.
#pragma once

#include <maya/MTypes.h>

#include <string>

namespace host::file_calls {

/// Creates a file that must not exist yet, and locks it until it is closed, so that
/// `remove_if_abandoned` spares it. Returns its descriptor, or a negative number on failure, with
/// the reason in errno.
int create_new(const std::string& path);
/// Removes a temporary file whose writer is gone: no process holds it locked (on Windows: open).
/// Failures are ignored.
void remove_if_abandoned(const std::string& path);
MHOST_EXPORT long process_id();
/// Whether a process with this id runs on this computer.
MHOST_EXPORT bool is_running(long process);
#ifdef _WIN32
/// The errno value for the system's last error, so that messages are the same on every system.
MHOST_EXPORT int last_reason();
#endif

} // namespace host::file_calls
