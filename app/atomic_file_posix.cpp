#include "app/atomic_file.h"
#include "app/interrupt.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace app {
namespace {

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

/// Makes a rename outlast a power cut. File systems that cannot do it lose nothing else.
void sync_directory(const std::string& directory) {
    const int file = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0)
        return;
    ::fsync(file);
    ::close(file);
}

std::string temporary_name(const std::string& base, int attempt) {
    return base + ".tmp." + std::to_string(::getpid()) +
           (attempt ? "." + std::to_string(attempt) : "");
}

} // namespace

bool AtomicFile::fail(int reason, std::string& error) const {
    error = path_ + ": cannot be written: " + std::strerror(reason);
    return false;
}

bool AtomicFile::open(const std::string& path, std::string& error) {
    discard();
    path_ = path;
    struct stat info = {};
    const bool exists = path != "-" && ::stat(path.c_str(), &info) == 0;
    if (exists && S_ISDIR(info.st_mode))
        return fail(EISDIR, error);
    if (path == "-" || (exists && !S_ISREG(info.st_mode))) {
        state_ = direct;
        return true;
    }
    target_ = behind_links(path);
    if (exists && ::access(target_.c_str(), W_OK) != 0)
        return fail(errno, error);
    if (!create_temporary(error))
        return false;
    if (exists && ::fchmod(file_, info.st_mode & 07777) != 0) {
        const int reason = errno;
        discard();
        return fail(reason, error);
    }
    return true;
}

bool AtomicFile::create_temporary(std::string& error) {
    const SignalsHeld held; // between the creation and the list of what a signal removes
    std::string base = target_;
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary_ = temporary_name(base, attempt);
        file_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file_ < 0 && errno == ENAMETOOLONG && base == target_)
            base = directory_of(target_) + "/tessora"; // the target's own name is near the limit
        else if (file_ >= 0 || errno != EEXIST)
            break;
    }
    if (file_ < 0)
        return fail(errno, error);
    state_ = temporary;
    if (remove_on_signal(temporary_))
        return true;
    discard();
    return fail(ENAMETOOLONG, error);
}

bool AtomicFile::write(std::string_view bytes, std::string& error) {
    if (state_ == direct) {
        pending_ = bytes;
        return true;
    }
    if (write_all(file_, bytes) && ::fsync(file_) == 0)
        return true;
    const int reason = errno;
    discard();
    return fail(reason, error);
}

bool AtomicFile::commit_direct(std::string& error) {
    state_ = closed;
    const bool standard_output = path_ == "-";
    const int file =
        standard_output ? STDOUT_FILENO : ::open(path_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
    bool good = file >= 0 && write_all(file, pending_);
    const int reason = errno;
    if (file >= 0 && !standard_output)
        ::close(file);
    pending_.clear();
    return good || fail(reason, error);
}

bool AtomicFile::commit(std::string& error) {
    if (state_ == direct)
        return commit_direct(error);
    const SignalsHeld held;
    const int file = file_;
    file_ = -1;
    if (::close(file) != 0 || ::rename(temporary_.c_str(), target_.c_str()) != 0) {
        const int reason = errno;
        discard();
        return fail(reason, error);
    }
    keep_on_signal(temporary_);
    state_ = closed;
    sync_directory(directory_of(target_));
    return true;
}

void AtomicFile::discard() {
    if (state_ == temporary) {
        const SignalsHeld held;
        if (file_ >= 0)
            ::close(file_);
        ::unlink(temporary_.c_str());
        keep_on_signal(temporary_);
    }
    file_ = -1;
    pending_.clear();
    state_ = closed;
}

bool same_file(const std::string& a, const std::string& b) {
    struct stat first = {}, second = {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

} // namespace app
