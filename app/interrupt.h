/// What must happen when the process is told to end, or finds that it cannot go on: unfinished
/// files vanish, and the exit code says why.
///
/// Interrupt, termination and hang-up end with 128 plus the signal's number. A broken contract in
/// one of the libraries ends in the runtime's abort; the program turns that into exit code 70.
#pragma once

#include <cstdint>
#include <string>

namespace app {

/// Installs the handlers; a closed pipe and a file size limit become ordinary write errors.
void install_signal_handlers();

/// Puts a file on the list of what a signal removes, or takes it off. Paths are kept as given.
/// At most eight files of up to 4095 bytes; false beyond that.
bool remove_on_signal(const std::string& path);
void keep_on_signal(const std::string& path);
/// Removes what is on the list; safe inside handlers.
void remove_unfinished_files();

/// Says that the last line on the terminal is unfinished, so that a message must clear it first.
void set_terminal_line_open(bool open);
bool terminal_line_open();

/// Holds signals back for the length of a scope, so that what happens inside happens as a whole.
class SignalsHeld {
public:
    SignalsHeld();
    ~SignalsHeld();
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;

private:
    uint64_t before_[16] = {}; // the system's own record
};

} // namespace app
