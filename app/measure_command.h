/// `tessora measure MESH` and `tessora verify MESH`: measure and check the texture coordinates in a
/// file, whichever program made them.
#pragma once

#include "app/command.h"

namespace app {

/// Prints the figures of a layout, even of one with flips and overlaps.
int measure_command(const Words& words);

/// Returns exit_verification and prints the polygons at fault if a guarantee is broken.
int verify_command(const Words& words);

CommandHelp measure_help();
CommandHelp verify_help();

} // namespace app
