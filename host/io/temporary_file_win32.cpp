#include "host/io/temporary_file_calls.h"

#include <windows.h>

#include <cerrno>
#include <fcntl.h>
#include <io.h>

namespace host::file_calls {

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

/// The file can be deleted while it is open, so that an interrupted run leaves nothing behind.
int create_new(const std::string& path) {
    const HANDLE handle =
        CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        errno = last_reason();
        return -1;
    }
    return _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY);
}

void remove_if_abandoned(const std::string& path) {
    // Without sharing: fails while its writer has it open.
    const HANDLE handle = CreateFileA(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle != INVALID_HANDLE_VALUE)
        CloseHandle(handle);
}

long process_id() { return static_cast<long>(GetCurrentProcessId()); }

bool is_running(long process) {
    const HANDLE handle = OpenProcess(SYNCHRONIZE, FALSE, static_cast<DWORD>(process));
    if (handle == nullptr)
        return GetLastError() != ERROR_INVALID_PARAMETER; // that means: no such process
    const bool runs = WaitForSingleObject(handle, 0) == WAIT_TIMEOUT;
    CloseHandle(handle);
    return runs;
}

} // namespace host::file_calls
