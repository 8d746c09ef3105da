#include "host/io/temporary_file.h"

#include "host/io/temporary_file_calls.h"

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <mutex>
#include <set>
#include <string_view>

namespace host {
namespace {

namespace files = std::filesystem;

constexpr std::string_view k_infix = ".tessora-tmp.";
constexpr int k_max_names = 100; // this many stale files cannot be an accident

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

} // namespace

int create_temporary(const std::string& target, std::string& path) {
    std::string base = target;
    int file = -1;
    for (int attempt = 0; attempt < k_max_names; ++attempt) {
        path = temporary_name(base, attempt);
        file = file_calls::create_new(path);
        if (file < 0 && errno == ENAMETOOLONG && base == target) // too long with the suffix
            base = (files::path(target).parent_path() / "tessora").string();
        else if (file >= 0 || errno != EEXIST)
            break;
    }
    return file;
}

void remove_abandoned_files(const std::string& target) {
    static std::mutex mutex;
    static std::set<files::path> done;
    const files::path folder = files::path(target).parent_path();
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

} // namespace host
