/// Repair of the false-edge array that goes into the atlas call.
#pragma once

#include "corelib/math/atlas_context.h"

#include <cstdint>

/// Regroups triangles into polygons by a flood fill across false edges, chains each polygon's
/// vertices along its real edges, and turns false edges back into real ones where the chains of a
/// polygon do not join into one (a polygon with a hole has two borders), so that every group of
/// false edges outlines one connected polygon.
/// Shape:  adjacency[3*faces] (0xFFFFFFFF = no neighbour), false_edges[3*faces] (0xFFFFFFFF = real
///         edge, anything else = false edge; changed in place); entry 3t+k is the edge from corner
///         k to corner (k+1)%3 of triangle t. `mesh` has 32-bit indices.
/// Errors: changes nothing, without a log line, if the index buffer cannot be locked, an index is
/// out
///         of range, or memory runs out.
/// Cost:   O(faces log faces + vertices) time, 16 bytes per face and 8 per vertex of scratch
/// memory.
///         Only a polygon whose first triangle lists a vertex twice costs O(chains * faces).
void fix_false_edges(const AtlasContext& context, ID3DXMesh* mesh, const uint32_t* adjacency,
                     uint32_t* false_edges);
