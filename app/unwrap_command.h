/// `tessora unwrap`: reads a mesh, has it unwrapped, writes the mesh, the report and the picture.
#pragma once

#include "app/command.h"

namespace app {

int unwrap_command(const Words& words);

} // namespace app
