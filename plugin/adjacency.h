/// Which triangles are neighbours, for the atlas call.
#pragma once

#include "corelib/array.h"

#include <d3dx9.h>

#include <cstdint>

class Unwrapper;

/// Returns the adjacency of the mesh, opened along the cuts. Two triangles are neighbours if and
/// only if they share an edge by vertex index; positions and the settings' `adjacency_method` and
/// `epsilon` are not used.
/// Shape:  cut_edges[3*faces] -> adjacency[3*faces]; entry 3t+k is the triangle across the edge
/// from
///         corner k to corner (k+1)%3 of triangle t; 0xFFFFFFFF = no neighbour, or cut.
/// Owner:  the caller frees the buffer with std::free.
/// Errors: null and a critical log line "Out of memory, can not generate adjacency list" or
///         "ConvertPointRepsToAdjacency() failed: NAME".
uint32_t* build_adjacency(const Unwrapper& unwrapper, ID3DXMesh* mesh,
                          const array<uint32_t>& cut_edges);
