/// The program's exit codes, for scripts and schedulers. They avoid the numbers to which shells and
/// batch systems give a meaning of their own: 99, and 126 to 165 except for signals.
#pragma once

namespace app {

enum ExitCode : int {
    exit_done = 0,         ///< everything requested is written
    exit_unexpected = 1,   ///< any failure other than those below
    exit_usage = 2,        ///< invalid command line; no file was read
    exit_input = 3,        ///< input missing, unreadable or without a mesh
    exit_limit = 4,        ///< mesh too large for 32-bit counts, or out of memory
    exit_unwrap = 5,       ///< the mesh could not be unwrapped as asked
    exit_verification = 6, ///< a finished layout breaks a guarantee
    exit_output = 7,       ///< a result could not be written
    exit_bug = 70,         ///< internal error (failed assertion)
    exit_signal = 128      ///< plus the signal's number: 130 interrupt, 143 termination
};

} // namespace app
