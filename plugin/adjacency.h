/// Which triangles are neighbours, for the atlas call.
#pragma once

#include "corelib/array.h"

#include <d3dx9.h>

#include <cstdint>

class Unwrapper;

/// The neighbours of every triangle, opened along the cuts. Two triangles are neighbours exactly
/// when they share an edge by vertex index: positions, the settings' `adjacency_method` and
/// `epsilon` have no say.
/// Shape:  cut_edges[3*faces] -> adjacency[3*faces]; entry 3t+k is the triangle across the edge
/// from
///         corner k to corner (k+1)%3 of triangle t; 0xFFFFFFFF = none, or cut.
/// Owner:  the caller gives the buffer to std::free.
/// Errors: none, and a critical line "Out of memory, can not generate adjacency list" or
///         "ConvertPointRepsToAdjacency() failed: NAME".
uint32_t* build_adjacency(const Unwrapper& unwrapper, ID3DXMesh* mesh,
                          const array<uint32_t>& cut_edges);
