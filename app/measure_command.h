/// `tessora measure MESH` and `tessora verify MESH`: judge the texture coordinates in a file,
/// whoever made them.
#pragma once

#include "app/command.h"

namespace app {

/// Prints the figures of a layout. Layouts full of faults are measured like others.
int measure_command(const Words& words);

/// Ends with exit_verification and names the polygons when a guarantee is broken.
int verify_command(const Words& words);

} // namespace app
