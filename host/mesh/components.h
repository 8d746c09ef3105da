/// Vertices, edges, faces and UVs of a mesh that belong to each other.
#pragma once

#include "host/mesh/mesh.h"

#include <cstdint>
#include <vector>

namespace host {

enum class MeshPart { vertex, edge, face, uv };

/// The number of parts of a kind; of UVs, those in the set. A `set` of k_no_uv_set has none.
inline constexpr std::uint32_t k_no_uv_set = 0xFFFFFFFFu;
std::uint32_t component_count(const Mesh& mesh, MeshPart kind, std::uint32_t set);
std::vector<std::uint32_t> all_components(const Mesh& mesh, MeshPart kind, std::uint32_t set);

/// The parts of kind `to` that touch the given parts; with `is_internal` only those that lie wholly
/// among them: edges with both ends, faces with all corners. Ids that do not exist are skipped.
/// Ascending.
MHOST_EXPORT std::vector<std::uint32_t> converted_components(const Mesh& mesh, std::uint32_t set,
                                                             MeshPart from,
                                                             const std::vector<std::uint32_t>& ids,
                                                             MeshPart to, bool is_internal);

} // namespace host
