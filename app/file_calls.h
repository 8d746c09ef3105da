/// The system calls behind AtomicFile, one source per system. A call that fails sets errno.
#pragma once

#include <string>
#include <string_view>

namespace app::file_calls {

struct Target {
    bool is_direct = false; ///< not a regular file, so written directly
    std::string path;       ///< with symbolic links resolved
    int mode = -1;          ///< permissions of the existing file; -1 if there is none
};

/// Examines the file to be written. Returns false if it cannot be written.
bool find_target(const std::string& path, Target& target);

/// Opens a target that is not a regular file ("-" is standard output); negative on failure.
int open_direct(const std::string& path);
/// Closes a descriptor that open_direct returned.
void close_direct(int file);

bool set_mode(int file, int mode);
bool write_all(int file, std::string_view bytes);
/// Waits until the content is on disk.
bool sync(int file);
bool close(int file);
/// Renames `from` to `to`, replacing it, and waits until the rename is on disk.
bool replace(const std::string& from, const std::string& to);
/// Like `replace`, but fails with EEXIST if `to` exists.
bool rename_new(const std::string& from, const std::string& to);
/// Safe inside signal handlers. Failures are ignored.
void remove(const char* path);

} // namespace app::file_calls
