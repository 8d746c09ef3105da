/// How much of the calling thread's stack scripts may use.
#pragma once

namespace host::script {

/// Whether so little of the stack is left that a nested script must fail: less than a quarter, at
/// most 1 MiB. The reserve is for the commands that the script calls. The size of the stack is that
/// of the running system (`ulimit -s`), read once per thread.
bool stack_is_low();

} // namespace host::script
