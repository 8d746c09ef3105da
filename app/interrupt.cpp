#include "app/interrupt.h"

#include "app/file_calls.h"

#include <csignal>
#include <set>

namespace app {
namespace {

/// Read inside handlers, written only while signals are blocked. Never destroyed: a signal may come
/// after the end of main().
std::set<std::string>& unfinished_files() {
    static auto& paths = *new std::set<std::string>;
    return paths;
}

volatile std::sig_atomic_t g_line_open = 0;
volatile std::sig_atomic_t g_published = 0;
volatile std::sig_atomic_t g_silent = 0;
volatile std::sig_atomic_t g_defer = 0;
volatile std::sig_atomic_t g_deferred = 0;
volatile std::sig_atomic_t g_interrupted = 0;

} // namespace

void remove_on_signal(const std::string& path) {
    const SignalsHeld held;
    unfinished_files().insert(path);
}

void keep_on_signal(const std::string& path) {
    const SignalsHeld held;
    unfinished_files().erase(path);
}

void remove_unfinished_files() {
    for (const std::string& path : unfinished_files())
        file_calls::remove(path.c_str());
}

void set_terminal_line_open(bool open) { g_line_open = open ? 1 : 0; }
bool terminal_line_open() { return g_line_open != 0; }

void set_results_published(bool published) { g_published = published ? 1 : 0; }
bool was_interrupted() { return g_interrupted != 0; }
bool take_interrupt() {
    const bool was = was_interrupted();
    g_interrupted = 0;
    return was;
}
void note_interrupt() { g_interrupted = 1; }

bool results_published() { return g_published != 0; }

void end_silently() { g_silent = 1; }
bool ends_silently() { return g_silent != 0; }

void defer_signals() { g_defer = 1; }
void stop_deferring_signals() {
    g_defer = 0;
    if (g_deferred)
        std::raise(g_deferred);
}
int deferred_signal() { return g_deferred; }

bool note_deferred_signal(int signal) {
    if (g_defer && !g_deferred)
        g_deferred = signal;
    return g_defer != 0;
}

} // namespace app
