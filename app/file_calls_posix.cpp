#include "app/atomic_file.h"
#include "app/file_calls.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app {
namespace {

std::string behind_links(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (!resolved)
        return path; // does not exist yet
    std::string target = resolved;
    std::free(resolved);
    return target;
}

std::string directory_of(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
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
    target.path = behind_links(path);
    if (exists)
        target.mode = static_cast<int>(info.st_mode & 07777);
    return !exists || ::access(target.path.c_str(), W_OK) == 0;
}

int create_new(const std::string& path) {
    return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
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

void remove(const char* path) { ::unlink(path); }

long process_id() { return ::getpid(); }

} // namespace file_calls

bool same_file(const std::string& a, const std::string& b) {
    struct stat first = {}, second = {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace app
