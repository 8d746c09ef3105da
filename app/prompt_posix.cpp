#include "app/interrupt.h"
#include "app/prompt.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <editline/readline.h>
#include <filesystem>
#include <langinfo.h>
#include <poll.h>
#include <unistd.h>

namespace app {

namespace {

// Globals, because the library's callbacks have no context argument.
Prompt::Names g_names = nullptr;
std::vector<std::string> g_candidates;

char* next_candidate(const char* prefix, int state) {
    static size_t at;
    if (state == 0)
        at = 0;
    while (at < g_candidates.size()) {
        const std::string& name = g_candidates[at++];
        if (name.compare(0, std::strlen(prefix), prefix) == 0)
            return strdup(name.c_str());
    }
    return nullptr;
}

/// Waits until there is something to read; returns false if Ctrl-C was noted. A signal that comes
/// between looking at the note and waiting would be missed, so it is blocked until ppoll() waits.
bool wait_for_input(int file) {
    sigset_t interrupt, before;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupt, &before);
    pollfd input = {file, POLLIN, 0};
    while (!was_interrupted() && ::ppoll(&input, 1, nullptr, &before) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return !was_interrupted();
}

/// Reads one byte; -1 at end of input, and when Ctrl-C was noted.
int read_byte(int file) {
    unsigned char byte = 0;
    ssize_t count = 0;
    do {
        if (!wait_for_input(file))
            return -1;
        count = ::read(file, &byte, 1);
    } while (count < 0 && errno == EINTR);
    return count == 1 ? byte : -1;
}

/// Reads one character in UTF-8. The library's own reader waits on after Ctrl-C.
int read_character(FILE* input) {
    const int file = ::fileno(input), first = read_byte(file);
    if (first < 0xC0)
        return first;
    const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
    int character = first & (0x3F >> more);
    for (int i = 0; i < more; ++i) {
        const int next = read_byte(file);
        if (next < 0)
            return next;
        character = character << 6 | (next & 0x3F);
    }
    return character;
}

/// The library encodes what was typed in the locale's encoding.
void use_utf8() {
    std::setlocale(LC_CTYPE, "");
    if (std::strcmp(::nl_langinfo(CODESET), "UTF-8") != 0)
        std::setlocale(LC_CTYPE, "C.UTF-8");
}

char** complete(const char* prefix, int, int) {
    g_candidates = g_names();
    return rl_completion_matches(prefix, next_candidate);
}

} // namespace

Prompt::Prompt(Names names, std::string history_file) : history_file_(std::move(history_file)) {
    g_names = names;
    use_utf8();
    rl_getc_function = read_character;
    rl_attempted_completion_function = complete;
    using_history();
    if (history_file_.empty())
        return;
    std::error_code failure;
    std::filesystem::create_directories(std::filesystem::path(history_file_).parent_path(),
                                        failure);
    read_history(history_file_.c_str());
}

bool Prompt::read(const std::string& mark, std::string& line) {
    line.clear();
    char* const typed = readline(mark.c_str());
    if (!typed)
        return was_interrupted();
    line = typed;
    if (*typed)
        add_history(typed);
    std::free(typed);
    return true;
}

void Prompt::save_history() const {
    if (!history_file_.empty())
        write_history(history_file_.c_str());
}

} // namespace app
