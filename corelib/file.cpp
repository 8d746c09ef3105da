#include "corelib/file.h"

#include "corelib/error.h"

#include <cerrno>
#include <cstring>

namespace {

// The line number in the BUG report; fixed, because people search logs for it.
constexpr int k_open_mode_check_line = 48;

const char* stream_mode(int mode) {
    switch (mode) {
    case 1:
        return "rb";
    case 2:
        return "wb";
    case 3:
        return "r+b";
    case 4:
        return "ab";
    default:
        report_bug_reason("file::open", "file", k_open_mode_check_line,
                          "\"unsupported open flag combination\"");
    }
}

} // namespace

file::~file() {
    if (handle_ != nullptr && !lost_)
        std::fclose(handle_);
}

bool file::fail(int error_number) {
    error_ = std::strerror(error_number);
    return false;
}

bool file::open(const char* name, int mode) {
    std::FILE* const stream = std::fopen(name, stream_mode(mode));
    if (stream == nullptr)
        return fail(errno);
    if (handle_ != nullptr && !lost_)
        std::fclose(handle_);
    handle_ = stream;
    written_ = false;
    lost_ = false;
    return true;
}

bool file::write(const void* bytes, size_t size) {
    if (handle_ == nullptr || lost_)
        return fail(EBADF);
    written_ = true;
    if (std::fwrite(bytes, size, 1, handle_) != 1)
        return fail(errno);
    return true;
}

bool file::close_stream() {
    // Flush first: if the disk is full the stream can still be closed later, whereas after a failed
    // fclose the handle must not be used.
    if (written_ && std::fflush(handle_) != 0)
        return false;
    lost_ = std::fclose(handle_) != 0;
    return !lost_;
}

bool file::close() {
    if (handle_ == nullptr)
        return true;
    if (lost_)
        return fail(EBADF);
    if (!close_stream())
        return fail(errno);
    handle_ = nullptr;
    return true;
}
