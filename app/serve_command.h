/// `tessora serve`: unwraps what clients ask for, a JSON object a line (docs/serve.md).
#pragma once

#include "app/command.h"

namespace app {

int serve_command(const Words& words);
CommandHelp serve_help();

} // namespace app
