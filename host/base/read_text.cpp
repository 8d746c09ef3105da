#include "host/base/read_text.h"

#include "host/base/open_flags.h"

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
    text.resize(size_t(std::min(expected + 1, most)));
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

namespace {

/// The most that a device gives; it may have no end.
constexpr uint64_t k_most_of_device = 256u << 20;

/// Reads at most `of_file` bytes of a regular file, `of_other` of anything else, and one more than
/// `k_most_of_device` of a device. `limit` is which of them it was.
bool read_limited(const std::string& path, uint64_t of_file, uint64_t of_other, std::string& text,
                  IoError& error, uint64_t& limit) {
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
        limit = S_ISREG(info.st_mode)   ? of_file
                : S_ISCHR(info.st_mode) ? std::min(of_other, k_most_of_device + 1)
                                        : of_other;
        good = good &&
               read_all(file, sized ? static_cast<uint64_t>(info.st_size) : 65535, limit, text);
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

/// Returns false with an error: there are more than `most` bytes.
bool refuse_rest(const std::string& path, uint64_t most, std::string& text, IoError& error) {
    text.clear();
    error = {IoError::too_large, path + ": more than " + std::to_string(most) + " bytes"};
    return false;
}

} // namespace

bool read_start(const std::string& path, uint64_t most, std::string& text, IoError& error) {
    uint64_t limit = 0;
    if (!read_limited(path, most, most, text, error, limit))
        return false;
    return limit == most || text.size() < limit || refuse_rest(path, limit - 1, text, error);
}

bool read_text(const std::string& path, std::string& text, IoError& error) {
    constexpr uint64_t k_most_of_file = uint64_t(8) << 30;
    uint64_t limit = 0;
    if (!read_limited(path, k_most_of_file + 1, k_most_of_device + 1, text, error, limit))
        return false;
    return text.size() < limit || refuse_rest(path, limit - 1, text, error);
}

} // namespace host
