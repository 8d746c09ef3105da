#include "tests/corelib/streams.h"

#include "tests/corelib/support.h"

#include <cstdio>

#if defined(_WIN32)

#include <windows.h>

#include <fcntl.h>
#include <io.h>

namespace {

bool same_file(HANDLE a, HANDLE b) {
    BY_HANDLE_FILE_INFORMATION x, y;
    return GetFileInformationByHandle(a, &x) != 0 && GetFileInformationByHandle(b, &y) != 0 &&
           x.nFileIndexLow == y.nFileIndexLow && x.nFileIndexHigh == y.nFileIndexHigh &&
           x.dwVolumeSerialNumber == y.dwVolumeSerialNumber;
}

/// Disables the runtime's check, which would end the process for a descriptor that is not open.
void ignore_parameter(const wchar_t*, const wchar_t*, const wchar_t*, unsigned, uintptr_t) {}

} // namespace

int descriptor_of(const char* path) {
    const HANDLE wanted =
        CreateFileA(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, 0, nullptr);
    if (wanted == INVALID_HANDLE_VALUE)
        return -1;
    const _invalid_parameter_handler before = _set_invalid_parameter_handler(ignore_parameter);
    int found = -1;
    for (int descriptor = 3; descriptor < 256 && found < 0; ++descriptor)
        if (same_file(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), wanted))
            found = descriptor;
    _set_invalid_parameter_handler(before);
    CloseHandle(wanted);
    return found;
}

/// Redirects both streams to one file, standard output in text mode. Text mode doubles the carriage
/// return, which tells the lines of standard output from those of standard error.
void note_streams(const std::function<void()>& action,
                  const std::function<void(const char*)>& note) {
    const TemporaryFile both;
    std::fflush(stdout);
    std::fflush(stderr);
    const int output = _dup(1), error = _dup(2);
    const int file = _open(both.path(), _O_CREAT | _O_RDWR | _O_APPEND | _O_BINARY, 0600);
    _dup2(file, 1);
    _dup2(file, 2);
    _close(file);
    const int output_mode = _setmode(1, _O_TEXT), error_mode = _setmode(2, _O_BINARY);
    action();
    std::fflush(stdout);
    std::fflush(stderr);
    _dup2(output, 1);
    _dup2(error, 2);
    _setmode(1, output_mode);
    _setmode(2, error_mode);
    _close(output);
    _close(error);
    const std::string text = both.text();
    for (size_t end = text.find('\n'); end != text.npos; end = text.find('\n', end + 1))
        note(end >= 2 && text[end - 2] == '\r' ? "stdout" : "stderr");
}

#else

#include <sys/stat.h>

int descriptor_of(const char* path) {
    struct stat wanted;
    if (stat(path, &wanted) != 0)
        return -1;
    for (int descriptor = 3; descriptor < 256; ++descriptor) {
        struct stat found;
        if (fstat(descriptor, &found) == 0 && found.st_ino == wanted.st_ino &&
            found.st_dev == wanted.st_dev)
            return descriptor;
    }
    return -1;
}

/// Streams with write functions that call `note`.
void note_streams(const std::function<void()>& action,
                  const std::function<void(const char*)>& note) {
    struct Cookie {
        std::function<void()> written;
    };
    Cookie error_cookie{[&] { note("stderr"); }};
    Cookie output_cookie{[&] { note("stdout"); }};
    cookie_io_functions_t io = {};
    io.write = [](void* cookie, const char*, size_t size) {
        static_cast<Cookie*>(cookie)->written();
        return static_cast<ssize_t>(size);
    };
    std::FILE* const real_error = stderr;
    std::FILE* const real_output = stdout;
    stderr = fopencookie(&error_cookie, "w", io);
    stdout = fopencookie(&output_cookie, "w", io);
    action();
    std::fclose(stderr);
    std::fclose(stdout);
    stderr = real_error;
    stdout = real_output;
}

#endif
