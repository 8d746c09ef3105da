#include "app/atomic_file.h"

#include "app/file_calls.h"
#include "app/interrupt.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <set>

namespace app {
namespace {

namespace files = std::filesystem;

constexpr std::string_view k_infix = ".tessora-tmp.";

std::string temporary_name(const std::string& base, int attempt) {
    return base + std::string(k_infix) + std::to_string(file_calls::process_id()) +
           (attempt ? "." + std::to_string(attempt) : "");
}

/// The process in a name made by `temporary_name`; 0 for other names.
long writer_of(const std::string& name) {
    const size_t infix = name.rfind(k_infix);
    if (infix == name.npos)
        return 0;
    const char* const end = name.data() + name.size();
    long process = 0;
    unsigned attempt = 0;
    auto read = std::from_chars(name.data() + infix + k_infix.size(), end, process);
    if (read.ec == std::errc() && read.ptr != end && *read.ptr == '.')
        read = std::from_chars(read.ptr + 1, end, attempt);
    return read.ec == std::errc() && read.ptr == end && process > 0 ? process : 0;
}

/// Removes the temporary files that killed processes left in a folder. Once per folder, so that
/// writing many files into one does not list it every time.
void remove_abandoned_files(const files::path& folder) {
    static std::mutex mutex;
    static std::set<files::path> done;
    const std::lock_guard<std::mutex> guard(mutex);
    if (!done.insert(folder).second)
        return;
    std::error_code failure;
    files::directory_iterator entry(folder.empty() ? "." : folder, failure);
    for (; !failure && entry != files::directory_iterator(); entry.increment(failure)) {
        const long writer = writer_of(entry->path().filename().string());
        if (writer != 0 && !file_calls::is_running(writer))
            file_calls::remove_if_abandoned(entry->path().string());
    }
}

} // namespace

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
    remove_abandoned_files(files::path(target_).parent_path());
    const SignalsHeld held; // until the new file is in the list of files that a signal removes
    std::string base = target_;
    for (int attempt = 0; attempt < 100; ++attempt) {
        temporary_ = temporary_name(base, attempt);
        file_ = file_calls::create_new(temporary_);
        if (file_ < 0 && errno == ENAMETOOLONG &&
            base == target_) // with the suffix the name is too long
            base = (files::path(target_).parent_path() / "tessora").string();
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
    return files::exists(path, failure);
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
