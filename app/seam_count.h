/// Seams of a mesh: edges across which its texture coordinates are discontinuous.
#pragma once

#include "host/mesh/mesh.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace app {

/// Vertex ids of an edge, the smaller first.
using VertexPair = std::pair<uint32_t, uint32_t>;

/// Returns the seams of a UV set, sorted, without duplicates: edges whose two faces have different
/// UV ids at an end (an unmapped corner differs from everything), and all edges of three or more
/// faces. Borders of the surface are not seams. Cost: O(corners), plus sorting the seams.
std::vector<VertexPair> find_seams(const host::Mesh& mesh, const host::UvSet& set);

} // namespace app
