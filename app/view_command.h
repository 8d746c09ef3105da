/// The command `view`: the desktop window. Where the program was built without it, the command says
/// so.
#pragma once

#include "app/command.h"

namespace app {

int view_command(const Words& words);

} // namespace app
