#include "app/exit_code.h"
#include "app/interrupt.h"

#include <cstring>
#include <signal.h>
#include <unistd.h>

namespace app {
namespace {

constexpr int k_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGABRT};

void write_error(const char* text) {
    const size_t length = std::strlen(text);
    // The result must be used, but a failure cannot be handled here.
    if (::write(STDERR_FILENO, text, length) < 0)
        return;
}

void end_process(int signal) {
    if (signal != SIGABRT && note_deferred_signal(signal))
        return;
    remove_unfinished_files();
    if (terminal_line_open())
        write_error("\r\033[K");
    if (signal == SIGABRT) {
        write_error("tessora: internal error; unfinished files are removed. Please report this "
                    "together with the input.\n");
        ::_exit(exit_bug);
    }
    if (results_published())
        ::_exit(exit_done);
    if (!ends_silently())
        write_error("tessora: interrupted; unfinished files are removed\n");
    ::_exit(exit_signal + signal);
}

} // namespace

void install_signal_handlers() {
    struct sigaction action = {};
    action.sa_handler = end_process;
    sigfillset(&action.sa_mask);
    for (const int signal : k_signals) {
        // A signal that the parent process ignores (nohup) stays ignored.
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (signal == SIGABRT || before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
    sigaction(SIGXFSZ, &action, nullptr);
}

InterruptNoted::InterruptNoted() {
    struct sigaction action = {}; // without SA_RESTART: reading a line ends
    action.sa_handler = [](int) { note_interrupt(); };
    sigaction(SIGINT, &action, nullptr);
}

InterruptNoted::~InterruptNoted() {
    struct sigaction action = {};
    action.sa_handler = end_process;
    sigfillset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
}

SignalsHeld::SignalsHeld() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : k_signals)
        sigaddset(&set, signal); // abort() itself works even when blocked
    static_assert(sizeof before_ >= sizeof set);
    sigprocmask(SIG_BLOCK, &set, reinterpret_cast<sigset_t*>(before_));
}

SignalsHeld::~SignalsHeld() {
    sigprocmask(SIG_SETMASK, reinterpret_cast<sigset_t*>(before_), nullptr);
}

} // namespace app
