/// The second stage of an unwrap: from flat lists to a texture atlas.
#pragma once

#include "corelib/array.h"
#include "corelib/vertex.h"

#include <cstdint>

class Unwrapper;

/// Cuts the triangle mesh into charts, flattens them and packs them into the texture that the
/// settings describe, by calling the UV-atlas service of the Direct3D extension library. The device
/// and the D3DX meshes are created and released within the call.
/// Shape:  vertices[nv], indices[3*nt], cut_edges[3*nt], real_edges[3*nt] -> atlas_indices[3*nt],
///         triangles and corners in the same order, and atlas_vertices, which has a vertex on a
///         chart border once per chart. UVs lie in the unit square.
/// Owner:  takes over the four lists and frees each once it is read.
/// Result: on success chart count and stretch are written to the settings, else they stay.
/// Errors: false and a critical log line with the reason; no line if the host has no main window,
///         which the device needs.
bool generate_atlas(Unwrapper& unwrapper, array<Vertex> vertices, array<uint32_t> indices,
                    array<uint32_t> cut_edges, array<uint32_t> real_edges,
                    array<Vertex>& atlas_vertices, array<uint32_t>& atlas_indices);
