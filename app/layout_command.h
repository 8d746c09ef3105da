/// The script command polyLayoutUV: packs the charts of a mesh in the host's scene, with history.
#pragma once

#include "host/graph/uv_layout.h"

#include <string>

namespace app {

/// Packs the charts of a UV set; a host::graph::UvPacker.
bool pack_charts(const host::Mesh& mesh, uint32_t set, const host::graph::UvLayout& layout,
                 host::UvSet& packed, std::string& error);

/// Adds the command, and gives the history nodes that it makes the engine to pack with.
void add_layout_command();

} // namespace app
