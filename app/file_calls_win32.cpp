#include "app/atomic_file.h"
#include "app/file_calls.h"
#include "host/io/temporary_file_calls.h"

#include <windows.h>

#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <io.h>

namespace app {
namespace {

bool refuse(int reason) {
    errno = reason;
    return false;
}

/// Equal for all names of one file. A missing file is identified by its full path, in lower case,
/// because Windows ignores case; "" if there is no such path.
std::string identity_of(const std::string& path) {
    if (path.empty())
        return "";
    const HANDLE handle =
        CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        char full[4096];
        const DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
        if (length == 0 || length >= sizeof full)
            return "";
        CharLowerA(full);
        return full;
    }
    BY_HANDLE_FILE_INFORMATION information = {};
    const bool known = GetFileType(handle) == FILE_TYPE_DISK &&
                       GetFileInformationByHandle(handle, &information) != 0;
    CloseHandle(handle);
    return known ? std::to_string(information.dwVolumeSerialNumber) + ":" +
                       std::to_string(information.nFileIndexHigh) + ":" +
                       std::to_string(information.nFileIndexLow)
                 : "";
}

} // namespace

namespace file_calls {

bool find_target(const std::string& path, Target& target) {
    target.is_direct = path == "-";
    target.path = path;
    const DWORD attributes =
        target.is_direct ? INVALID_FILE_ATTRIBUTES : GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return true;
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        return refuse(EISDIR);
    return (attributes & FILE_ATTRIBUTE_READONLY) == 0 || refuse(EACCES);
}

// Standard output is the only target that is written directly on Windows.
int open_direct(const std::string&) { return 1; }

void close_direct(int) {}

/// New files inherit the permissions of their folder.
bool set_mode(int, int) { return true; }

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

bool sync(int file) { return ::_commit(file) == 0; }

bool close(int file) { return ::_close(file) == 0; }

bool replace(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0 ||
           refuse(host::file_calls::last_reason());
}

bool rename_new(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) != 0 ||
           refuse(host::file_calls::last_reason());
}

void remove(const char* path) { DeleteFileA(path); } // an open file disappears when closed

} // namespace file_calls

bool same_file(const std::string& a, const std::string& b) {
    const std::string identity = identity_of(a);
    return !identity.empty() && identity == identity_of(b);
}

} // namespace app
