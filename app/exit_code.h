/// How the program ends, for scripts and schedulers. None of these numbers means anything else to
/// the shells and batch systems that run it (1 is left to them, as are 99 and 126 to 165).
#pragma once

namespace app {

enum ExitCode : int {
    exit_done = 0,         ///< everything asked for is written
    exit_unexpected = 1,   ///< a failure that is none of the kinds below
    exit_usage = 2,        ///< the command line means nothing; nothing was read
    exit_input = 3,        ///< input missing, unreadable or no mesh
    exit_limit = 4,        ///< the mesh is beyond 32-bit counts, or memory ran out
    exit_unwrap = 5,       ///< the mesh could not be unwrapped as asked
    exit_verification = 6, ///< a finished layout breaks a guarantee
    exit_output = 7,       ///< a result could not be written
    exit_bug = 70,         ///< a broken contract inside the program
    exit_signal = 128      ///< plus the signal's number: 130 interrupt, 143 termination
};

} // namespace app
