/// `tessora worker`: unwraps what a parent process asks for. Not for people: `tessora unwrap` with
/// several meshes starts such processes.
#pragma once

#include "app/command.h"

namespace app {

/// Reads requests (request_json.h), one a line, from standard input until its end, and answers each
/// with one line: {"code", "reason", "messages", "report"}. `messages` are the sentences that a
/// command for people would have printed.
int worker_command(const Words& words);

} // namespace app
