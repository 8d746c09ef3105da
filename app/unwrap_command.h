/// `tessora unwrap`: reads a mesh file, unwraps it, writes the mesh, the report and the pictures.
#pragma once

#include "app/command.h"

namespace app {

int unwrap_command(const Words& words);

} // namespace app
