/// Cutting and sewing a UV set along edges of the mesh.
///
/// Two polygons are connected in a UV set if they share a UV at both ends of an edge between them.
/// Cutting gives them UVs of their own in the same place; sewing gives them common ones.
#pragma once

#include "host/mesh/mesh.h"

#include <cstdint>
#include <vector>

namespace host {

/// Cuts along edges. A vertex is split where the cut, with the borders that are there already,
/// divides the polygons around it: a single edge inside of a chart changes nothing. Ids that are no
/// edges are skipped. A set without any mapped corner is projected first (project_uvs), so that
/// cuts have something to divide. Returns the number of UVs added.
MHOST_EXPORT std::uint32_t cut_uvs(Mesh& mesh, std::uint32_t set,
                                   const std::vector<std::uint32_t>& edges);

/// Sews along edges with two mapped polygons: the UVs at either end become one, in the middle of
/// their places. Other edges are skipped. UVs that no corner has any more stay in the list. Returns
/// the number of UVs that were merged into others.
std::uint32_t sew_uvs(Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges);

/// Copies the UVs of one set to another, which keeps its name.
void copy_uvs(Mesh& mesh, std::uint32_t from, std::uint32_t to);

/// Edges of a loop through `edge`, in order: across every vertex with four edges to the opposite
/// one. A closed loop has its first edge at the end again.
std::vector<std::uint32_t> edge_loop(const Mesh& mesh, std::uint32_t edge);

/// Edges of the shortest path between two vertices, in order from `from`; empty if they are not
/// connected. Source: Dijkstra, "A note on two problems in connexion with graphs", 1959.
MHOST_EXPORT std::vector<std::uint32_t> shortest_edge_path(const Mesh& mesh, std::uint32_t from,
                                                           std::uint32_t to);

} // namespace host
