#include "host/io/write_file.h"

#include "host/base/open_flags.h"
#include "host/io/temporary_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#if defined(_WIN32)
#define fsync _commit
#endif

namespace host {
namespace {

namespace files = std::filesystem;

constexpr int k_max_links = 40;          // as many as Linux follows
constexpr size_t k_max_write = 1u << 30; // bytes; every system accepts that much in one call

/// `path` with symbolic links in its last part followed, also to a missing file.
bool follow_links(files::path& path) {
    std::error_code failure;
    for (int links = 0; links <= k_max_links; ++links) {
        if (!files::is_symlink(path, failure))
            return true;
        path = path.parent_path() / files::read_symlink(path, failure);
    }
    errno = ELOOP;
    return false;
}

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const auto done = ::write(file, bytes.data(), std::min(bytes.size(), k_max_write));
        if (done < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(static_cast<size_t>(std::max<decltype(done)>(done, 0)));
    }
    return true;
}

bool write_and_close(int file, std::string_view bytes, bool sync) {
    const bool written = write_all(file, bytes) && (!sync || ::fsync(file) == 0);
    const int reason = errno;
    const bool closed = ::close(file) == 0;
    if (!written)
        errno = reason;
    return written && closed;
}

bool replace(const files::path& target, std::string_view bytes, Durability durability) {
    std::string temporary;
    remove_abandoned_files(target.string());
    const int file = create_temporary(target.string(), temporary);
    if (file < 0)
        return false;
    std::error_code failure;
    const files::file_status old = files::status(target, failure);
    bool good = write_and_close(file, bytes, durability == Durability::power);
    if (good && files::exists(old))
        files::permissions(temporary, old.permissions(), failure);
    if (good) {
        failure.clear();
        files::rename(temporary, target, failure);
        good = !failure;
        errno = failure.value();
    }
    if (!good) {
        const int reason = errno;
        files::remove(temporary, failure);
        errno = reason;
    }
    return good;
}

bool write_directly(const files::path& target, std::string_view bytes) {
    const int file = ::open(target.string().c_str(), O_WRONLY | O_BINARY | O_CLOEXEC);
    return file >= 0 && write_and_close(file, bytes, false);
}

} // namespace

bool write_file(const std::string& path, std::string_view bytes, Durability durability,
                std::string& reason) {
    files::path target = path;
    std::error_code failure;
    bool good = follow_links(target);
    if (good) {
        const files::file_status status = files::status(target, failure);
        const bool is_plain = !files::exists(status) || files::is_regular_file(status);
        good = is_plain ? replace(target, bytes, durability) : write_directly(target, bytes);
    }
    if (!good)
        reason = std::strerror(errno);
    return good;
}

} // namespace host
