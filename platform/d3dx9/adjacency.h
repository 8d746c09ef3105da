/// Face adjacency from shared vertex ids.
#pragma once

#include <cstdint>

namespace d3dx9 {

inline constexpr uint32_t k_no_face = 0xFFFFFFFFu;

enum class AdjacencyResult { ok, index_out_of_range, out_of_memory };

/// Finds the neighbour across every face edge: the other face, if exactly two different faces use
/// the edge. Winding does not matter: a face wound the opposite way is a neighbour too. Shape:
/// corners[3*faces], every entry < vertices -> adjacency[3*faces]; entry 3f+k is the edge
///         from corner k to corner (k+1)%3 of face f; 0xFFFFFFFF = no neighbour. Unchanged on an
///         error.
/// Cost:   O(faces + vertices) time, 4 bytes per face edge and 24 per vertex of scratch memory.
AdjacencyResult face_adjacency(const uint32_t* corners, uint32_t faces, uint32_t vertices,
                               uint32_t* adjacency);

} // namespace d3dx9
