/// What AtomicFile asks of the system, on each system. Calls that fail leave their reason in errno.
#pragma once

#include <string>
#include <string_view>

namespace app::file_calls {

struct Target {
    bool is_direct = false; ///< no regular file: written as it is
    std::string path;       ///< behind symbolic links
    int mode = -1;          ///< permissions of the file that is there; -1 for none
};

/// Looks at the file that is to be written. False when it never can be.
bool find_target(const std::string& path, Target& target);

/// Opens a file that must not exist yet; below 0 on failure.
int create_new(const std::string& path);
/// Opens what is no regular file, "-" being standard output; below 0 on failure.
int open_direct(const std::string& path);
/// Closes what open_direct gave.
void close_direct(int file);

bool set_mode(int file, int mode);
bool write_all(int file, std::string_view bytes);
/// Waits until the disk has the content.
bool sync(int file);
bool close(int file);
/// Puts one file in another's place, to outlast a power cut.
bool replace(const std::string& from, const std::string& to);
/// Safe inside signal handlers. A failure is nobody's business.
void remove(const char* path);
long process_id();

} // namespace app::file_calls
