/// The second stage of an unwrap: from flat lists to a texture atlas.
#pragma once

#include "corelib/array.h"
#include "corelib/vertex.h"

#include <cstdint>

class Unwrapper;

/// Cuts the triangle mesh into charts, flattens them and packs them into the texture that the
/// settings describe, by means of the UV-atlas service of the Direct3D extension library. The
/// device and every mesh that this takes exist within the call only.
/// Shape:  vertices[nv], indices[3*nt], cut_edges[3*nt], real_edges[3*nt] -> atlas_indices[3*nt],
///         triangles and corners in the same order; atlas_vertices, where a vertex on a chart
///         border comes once per chart. Coordinates lie in the unit square.
/// Owner:  `vertices` and `indices` are taken over and freed on every path.
/// Result: chart count and stretch reached go to the settings on success, else they stay.
/// Errors: false and a critical line that says why; no line when there is no main window to make a
///         device for.
bool generate_atlas(Unwrapper& unwrapper, array<Vertex> vertices, array<uint32_t> indices,
                    const array<uint32_t>& cut_edges, const array<uint32_t>& real_edges,
                    array<Vertex>& atlas_vertices, array<uint32_t>& atlas_indices);
