#include "app/exit_code.h"
#include "app/system.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <malloc.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace app {

const char k_path_separator = ':';

void prepare_process() {
    // The wrong direction on purpose: reading or writing fails as it would on a closed descriptor.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(stream, F_GETFD) < 0 &&
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream)
            ::_exit(exit_unexpected);
    // Packing has the results of all its meshes open at once.
    rlimit files = {};
    if (::getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < files.rlim_max) {
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 1u << 20);
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
}

void keep_freed_memory() {
#ifdef __GLIBC__
    ::mallopt(M_TRIM_THRESHOLD, 64 << 20);
    ::mallopt(M_MMAP_THRESHOLD, 32 << 20); // the first call stops the library from adapting it
#endif
}

std::string program_file() {
    std::error_code failure;
    return std::filesystem::read_symlink("/proc/self/exe", failure).string();
}

std::string program_directory() {
    const std::string file = program_file();
    return file.empty() ? "." : std::filesystem::path(file).parent_path().string();
}

double peak_memory_mb() {
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0; // the kernel counts in KiB
}

bool is_terminal_input_and_output() {
    return ::isatty(STDIN_FILENO) != 0 && ::isatty(STDOUT_FILENO) != 0;
}

bool is_terminal_error() {
    const char* terminal = std::getenv("TERM");
    const bool can_move = terminal && std::strcmp(terminal, "dumb") != 0;
    return can_move && ::isatty(STDERR_FILENO) != 0;
}

int terminal_columns() {
    winsize size = {};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

void* loaded_function(const std::string& library, const char* function) {
    void* const handle = ::dlopen(("lib" + library + ".so").c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (!handle)
        return nullptr;
    void* const found = ::dlsym(handle, function);
    ::dlclose(handle); // drops this reference only; the library stays loaded
    return found;
}

} // namespace app
