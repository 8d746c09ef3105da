#include "app/prompt.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <editline/readline.h>
#include <filesystem>

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

char** complete(const char* prefix, int, int) {
    g_candidates = g_names();
    return rl_completion_matches(prefix, next_candidate);
}

} // namespace

Prompt::Prompt(Names names, std::string history_file) : history_file_(std::move(history_file)) {
    g_names = names;
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
    char* const typed = readline(mark.c_str());
    if (!typed)
        return false;
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
