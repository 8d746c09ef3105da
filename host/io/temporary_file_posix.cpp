#include "host/io/temporary_file_calls.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace host::file_calls {
namespace {

/// Whether a process has ended and only waits to be collected, which in a container whose first
/// process does not care takes forever. Unknown counts as no.
bool is_zombie(long process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t name_end = line.rfind(')'); // the state follows the name, which can hold anything
    return name_end != line.npos && line.compare(name_end, 3, ") Z") == 0;
}

} // namespace

int create_new(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file >= 0) // not all file systems can lock; then only the process id protects the file
        ::flock(file, LOCK_EX | LOCK_NB);
    return file;
}

void remove_if_abandoned(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return;
    struct stat info = {};
    if (::fstat(file, &info) == 0 && S_ISREG(info.st_mode) && ::flock(file, LOCK_EX | LOCK_NB) == 0)
        ::unlink(path.c_str());
    ::close(file);
}

long process_id() { return ::getpid(); }

bool is_running(long process) {
    return (::kill(static_cast<pid_t>(process), 0) == 0 || errno != ESRCH) && !is_zombie(process);
}

} // namespace host::file_calls
