/// Seams of a mesh: edges along which its texture coordinates part.
#pragma once

#include "host/mesh/mesh.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace app {

/// Two vertices, the smaller first.
using VertexPair = std::pair<uint32_t, uint32_t>;

/// The edges of a UV set between two faces that have other UVs at one of the ends (an unmapped
/// corner counts as another UV), and all edges of three or more faces; sorted, each once. Borders
/// of the surface are none. Cost: O(corners), and the sorting of the seams.
std::vector<VertexPair> find_seams(const host::Mesh& mesh, const host::UvSet& set);

} // namespace app
