/// Signals: unfinished files are removed, and the exit code tells which signal ended the process.
///
/// Interrupt, termination and hang-up end with 128 plus the signal's number. A failed assertion in
/// one of the libraries calls abort(); the program turns that into exit code 70.
#pragma once

#include <cstdint>
#include <string>

namespace app {

/// Installs the handlers. Writing to a closed pipe or beyond the file size limit fails with an
/// ordinary write error instead of a signal.
void install_signal_handlers();

/// Adds a file to the list of files that a signal removes, or takes it off the list.
void remove_on_signal(const std::string& path);
void keep_on_signal(const std::string& path);
/// Removes the files on the list; safe inside handlers.
void remove_unfinished_files();

/// Tells whether the terminal's current line holds a progress bar, which the next message must
/// clear first.
void set_terminal_line_open(bool open);
bool terminal_line_open();

/// Call with true when every result is in place: from then on a signal ends the process with exit
/// code 0, not with one that says that nothing was written.
void set_results_published(bool published);
bool results_published();

/// From now on a signal ends the process without a message, because a parent process tells.
void end_silently();
bool ends_silently();

/// From now on an interrupt, a termination or a hang-up is only noted, and the caller, which has to
/// ask for it, ends the process in an orderly way.
void defer_signals();
/// From now on they end the process again; one that was noted does so at once.
void stop_deferring_signals();
/// The signal that came first since defer_signals(), or 0.
int deferred_signal();
/// For the handlers: notes the signal and returns true if signals are deferred.
bool note_deferred_signal(int signal);

/// Blocks signals while it lives, so that the code in its scope is not interrupted half-way.
class SignalsHeld {
public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    uint64_t before_[16] = {}; // the signal mask to restore, in the system's own format
};

/// While it lives, Ctrl-C is noted instead of ending the process. System calls that wait are
/// interrupted.
class InterruptNoted {
public:
    InterruptNoted();
    ~InterruptNoted();
    InterruptNoted(const InterruptNoted&) = delete;
    InterruptNoted& operator=(const InterruptNoted&) = delete;
};
/// Whether Ctrl-C was noted since the last `take_interrupt`, which also forgets it.
bool was_interrupted();
bool take_interrupt();
/// For the handlers: notes Ctrl-C.
void note_interrupt();

} // namespace app
