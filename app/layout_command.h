/// The script command polyLayoutUV: packs the charts of a mesh in the host's scene, with history.
#pragma once

namespace app {

/// Adds the command, and gives the history nodes that it makes the engine to pack with.
void add_layout_command();

} // namespace app
