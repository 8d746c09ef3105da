/// Offsets of UVs in the history: nodes of type polyTweakUV.
#pragma once

#include "host/graph/edits.h"

#include <vector>

namespace host::graph {

struct UvOffset {
    std::uint32_t uv;
    float u, v;
};

/// Adds offsets to those of a polyTweakUV node, at most one per UV. Undo restores the values that
/// were there.
EditPtr tweak_uvs_edit(Node& tweak, std::vector<UvOffset> offsets);

} // namespace host::graph
