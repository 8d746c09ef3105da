#include "app/atomic_file.h"
#include "app/file_calls.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app {
namespace {

std::string directory_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

/// Follows symbolic links in the last part of a path, also to a file that does not exist yet. Fails
/// with ELOOP if there are too many.
bool follow_links(std::string& path) {
    constexpr int k_max_links = 40; // as many as Linux follows
    for (int links = 0; links <= k_max_links; ++links) {
        char target[PATH_MAX];
        const ssize_t length = ::readlink(path.c_str(), target, sizeof target);
        if (length < 0)
            return true; // not a link
        const std::string text(target, static_cast<size_t>(length));
        path = text[0] == '/' ? text : directory_of(path) + "/" + text;
    }
    errno = ELOOP;
    return false;
}

/// Equal for all names of one file; "" if the file may be shared or cannot be identified.
std::string identity_of(std::string path) {
    const auto of = [](const struct stat& info) {
        return std::to_string(info.st_dev) + ":" + std::to_string(info.st_ino);
    };
    struct stat info = {};
    if (path.empty())
        return "";
    if (::stat(path.c_str(), &info) == 0)
        return S_ISCHR(info.st_mode) || S_ISSOCK(info.st_mode) ? "" : of(info);
    if (!follow_links(path) || ::stat(directory_of(path).c_str(), &info) != 0)
        return "";
    return of(info) + "/" + path.substr(path.rfind('/') + 1);
}

/// Makes a rename survive a power cut. Failure is ignored: some file systems cannot sync
/// directories.
void sync_directory(const std::string& directory) {
    const int file = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0)
        return;
    ::fsync(file);
    ::close(file);
}

} // namespace

namespace file_calls {

bool find_target(const std::string& path, Target& target) {
    struct stat info = {};
    const bool exists = path != "-" && ::stat(path.c_str(), &info) == 0;
    if (exists && S_ISDIR(info.st_mode)) {
        errno = EISDIR;
        return false;
    }
    target.is_direct = path == "-" || (exists && !S_ISREG(info.st_mode));
    if (target.is_direct)
        return true;
    target.path = path;
    if (!follow_links(target.path))
        return false;
    if (exists)
        target.mode = static_cast<int>(info.st_mode & 07777);
    return !exists || ::access(target.path.c_str(), W_OK) == 0;
}

int open_direct(const std::string& path) {
    return path == "-" ? STDOUT_FILENO : ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
}

void close_direct(int file) {
    if (file != STDOUT_FILENO)
        ::close(file);
}

bool set_mode(int file, int mode) { return ::fchmod(file, static_cast<mode_t>(mode)) == 0; }

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t done = ::write(file, bytes.data(), bytes.size());
        if (done < 0 && errno == EINTR)
            continue;
        if (done < 0)
            return false;
        bytes.remove_prefix(static_cast<size_t>(done));
    }
    return true;
}

bool sync(int file) { return ::fsync(file) == 0; }

bool close(int file) { return ::close(file) == 0; }

bool replace(const std::string& from, const std::string& to) {
    if (::rename(from.c_str(), to.c_str()) != 0)
        return false;
    sync_directory(directory_of(to));
    return true;
}

bool rename_new(const std::string& from, const std::string& to) {
    // Not every file system can refuse to replace; a hard link refuses too, but not all have those.
    bool done = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0;
    if (!done && (errno == EINVAL || errno == ENOSYS)) {
        done = ::link(from.c_str(), to.c_str()) == 0;
        if (done)
            ::unlink(from.c_str());
    }
    if (done)
        sync_directory(directory_of(to));
    return done;
}

void remove(const char* path) { ::unlink(path); }

} // namespace file_calls

bool same_file(const std::string& a, const std::string& b) {
    const std::string identity = identity_of(a);
    return !identity.empty() && identity == identity_of(b);
}

} // namespace app
