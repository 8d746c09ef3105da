#include "app/atomic_file.h"
#include "app/interrupt.h"

#include <windows.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>
#include <io.h>

namespace app {
namespace {

/// The C library's number for the system's last error: messages are the same on every system.
int last_reason() {
    switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
        return ENOENT;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_WRITE_PROTECT:
        return EACCES;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    case ERROR_DISK_FULL:
        return ENOSPC;
    case ERROR_FILENAME_EXCED_RANGE:
        return ENAMETOOLONG;
    default:
        return EIO;
    }
}

bool write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const size_t part = bytes.size() < INT_MAX ? bytes.size() : INT_MAX;
        const int done = ::_write(file, bytes.data(), static_cast<unsigned>(part));
        if (done < 0)
            return false;
        bytes.remove_prefix(static_cast<size_t>(done));
    }
    return true;
}

std::string temporary_name(const std::string& base, int attempt) {
    return base + ".tmp." + std::to_string(GetCurrentProcessId()) +
           (attempt ? "." + std::to_string(attempt) : "");
}

/// A new file that can be deleted while it is open, so that an interrupted run leaves none.
int create_deletable(const std::string& path) {
    const HANDLE handle =
        CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        errno = last_reason();
        return -1;
    }
    return _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
}

/// What makes a file the same one under another name.
bool identity_of(const std::string& path, BY_HANDLE_FILE_INFORMATION& information) {
    const HANDLE handle =
        CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    const bool known = GetFileInformationByHandle(handle, &information) != 0;
    CloseHandle(handle);
    return known;
}

} // namespace

bool AtomicFile::fail(int reason, std::string& error) const {
    error = path_ + ": cannot be written: " + std::strerror(reason);
    return false;
}

bool AtomicFile::open(const std::string& path, std::string& error) {
    discard();
    path_ = path;
    if (path == "-") {
        state_ = direct;
        return true;
    }
    target_ = path;
    const DWORD attributes = GetFileAttributesA(path.c_str());
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return fail(EISDIR, error);
    if (exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        return fail(EACCES, error);
    return create_temporary(error);
}

bool AtomicFile::create_temporary(std::string& error) {
    const SignalsHeld held; // between the creation and the list of what an interrupt removes
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary_ = temporary_name(target_, attempt);
        file_ = create_deletable(temporary_);
        if (file_ >= 0 || errno != EEXIST)
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
    if (write_all(file_, bytes) && ::_commit(file_) == 0)
        return true;
    const int reason = errno;
    discard();
    return fail(reason, error);
}

bool AtomicFile::commit_direct(std::string& error) {
    state_ = closed;
    const bool good = write_all(1, pending_);
    const int reason = errno;
    pending_.clear();
    return good || fail(reason, error);
}

bool AtomicFile::commit(std::string& error) {
    if (state_ == direct)
        return commit_direct(error);
    const SignalsHeld held;
    const int file = file_;
    file_ = -1;
    const bool is_closed = ::_close(file) == 0;
    const int reason = errno;
    if (!is_closed || MoveFileExA(temporary_.c_str(), target_.c_str(),
                                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
        const int why = is_closed ? last_reason() : reason;
        discard();
        return fail(why, error);
    }
    keep_on_signal(temporary_);
    state_ = closed;
    return true;
}

void AtomicFile::discard() {
    if (state_ == temporary) {
        const SignalsHeld held;
        if (file_ >= 0)
            ::_close(file_);
        DeleteFileA(temporary_.c_str());
        keep_on_signal(temporary_);
    }
    file_ = -1;
    pending_.clear();
    state_ = closed;
}

bool same_file(const std::string& a, const std::string& b) {
    BY_HANDLE_FILE_INFORMATION first = {}, second = {};
    return identity_of(a, first) && identity_of(b, second) &&
           first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh &&
           first.nFileIndexLow == second.nFileIndexLow;
}

} // namespace app
