#include "host/io/obj_reader.h"
#include "host/io/open_flags.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace host {
namespace {

/// Bytes per read call; systems limit it differently, all accept this size.
constexpr size_t k_max_read = 1u << 30;

/// Reads to the end of the file, at most `most` bytes. `expected` only avoids reallocations: the
/// file may grow meanwhile.
bool read_all(int file, uint64_t expected, uint64_t most, std::string& text) {
    size_t have = 0;
    text.resize(size_t(std::min(expected, most - 1) + 1));
    while (have < most) {
        if (have == text.size())
            text.resize(size_t(std::min<uint64_t>(2 * uint64_t(have), most)));
        const ssize_t got =
            ::read(file, text.data() + have, std::min(text.size() - have, k_max_read));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            break;
        have += static_cast<size_t>(got);
    }
    text.resize(have);
    return true;
}

} // namespace

bool read_text(const std::string& path, std::string& text, IoError& error, uint64_t most) {
    const bool standard_input = path == "-";
    const int file =
        standard_input ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_BINARY | O_CLOEXEC);
    bool good = file >= 0;
    error = {};
    try {
        struct stat info = {};
        good = good && ::fstat(file, &info) == 0;
        if (good && S_ISDIR(info.st_mode)) {
            errno = EISDIR;
            good = false;
        }
        const bool sized = S_ISREG(info.st_mode) && info.st_size > 0;
        good =
            good && read_all(file, sized ? static_cast<uint64_t>(info.st_size) : 65535, most, text);
        if (!good)
            error = {IoError::unreadable, path + ": cannot be read: " + std::strerror(errno)};
    } catch (const std::bad_alloc&) {
        error = {IoError::too_large, path + ": not enough memory for the file"};
        good = false;
    }
    if (file >= 0 && !standard_input)
        ::close(file);
    return good;
}

} // namespace host
