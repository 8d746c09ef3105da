/// `tessora view`: opens the desktop window. In builds without it, the command prints an error.
#pragma once

#include "app/command.h"

namespace app {

int view_command(const Words& words);

} // namespace app
