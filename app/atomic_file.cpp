#include "app/atomic_file.h"

#include "app/file_calls.h"
#include "app/interrupt.h"
#include "host/io/temporary_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

namespace app {

bool AtomicFile::fail(int reason, std::string& error) const {
    error = path_ + ": cannot be written: " + std::strerror(reason);
    return false;
}

bool AtomicFile::open(const std::string& path, std::string& error, Existing existing) {
    discard();
    path_ = path;
    existing_ = existing;
    file_calls::Target target;
    if (!file_calls::find_target(path, target))
        return fail(errno, error);
    if (target.is_direct) {
        state_ = direct;
        return true;
    }
    target_ = target.path;
    if (!create_temporary(error))
        return false;
    if (target.mode >= 0 && !file_calls::set_mode(file_, target.mode)) {
        const int reason = errno;
        discard();
        return fail(reason, error);
    }
    return true;
}

bool AtomicFile::create_temporary(std::string& error) {
    host::remove_abandoned_files(target_);
    const SignalsHeld held; // until the new file is in the list of files that a signal removes
    file_ = host::create_temporary(target_, temporary_);
    if (file_ < 0)
        return fail(errno, error);
    state_ = temporary;
    remove_on_signal(temporary_);
    return true;
}

bool AtomicFile::write(std::string_view bytes, std::string& error) {
    if (state_ == direct) {
        pending_ = bytes;
        return true;
    }
    if (file_calls::write_all(file_, bytes) && file_calls::sync(file_))
        return true;
    const int reason = errno;
    discard();
    return fail(reason, error);
}

bool AtomicFile::commit_direct(std::string& error) {
    state_ = closed;
    const int file = file_calls::open_direct(path_);
    const bool good = file >= 0 && file_calls::write_all(file, pending_);
    const int reason = errno;
    if (file >= 0)
        file_calls::close_direct(file);
    pending_.clear();
    return good || fail(reason, error);
}

bool AtomicFile::commit(std::string& error) {
    if (state_ == direct)
        return commit_direct(error);
    const SignalsHeld held;
    const int file = file_;
    file_ = -1;
    const auto rename = existing_ == keep ? file_calls::rename_new : file_calls::replace;
    if (!file_calls::close(file) || !rename(temporary_, target_)) {
        const int reason = errno;
        discard();
        return fail(reason, error);
    }
    keep_on_signal(temporary_);
    state_ = closed;
    return true;
}

bool file_exists(const std::string& path) {
    std::error_code failure;
    return std::filesystem::exists(path, failure);
}

void AtomicFile::discard() {
    if (state_ == temporary) {
        const SignalsHeld held;
        if (file_ >= 0)
            file_calls::close(file_);
        file_calls::remove(temporary_.c_str());
        keep_on_signal(temporary_);
    }
    file_ = -1;
    pending_.clear();
    state_ = closed;
}

} // namespace app
