/// The D3DX meshes of the atlas stage: lists in, lists out. A vertex of such a mesh is 20 bytes,
/// position and texture coordinate, like a `Vertex`; indices are 32-bit.
#pragma once

#include "corelib/array.h"
#include "corelib/math/atlas_context.h"
#include "corelib/vertex.h"

#include <cstdint>

/// Creates a mesh of `vertices` (texture coordinates 0) and the triangles of `indices`, on the
/// context's device. The caller releases it. Both lists are freed on every path. Shape:
/// vertices[nv], indices[3*nt], every index < nv. Errors: null and a line "Failed to create d3dx
/// mesh: NAME", "Unable to lock vertex buffer" or
///         "Unable to lock index buffer"; after the last two the mesh is leaked.
ID3DXMesh* create_mesh(AtlasContext& context, array<Vertex> vertices, array<uint32_t> indices);

/// Replaces the contents of the two lists by the vertices and indices of `mesh`. Elements that find
/// no memory are left out.
/// Errors: false and a line "Unable to lock vertex buffer" or "Unable to lock index buffer"; both
///         lists are empty, and after the second the vertex buffer stays locked.
bool read_back(AtlasContext& context, ID3DXMesh* mesh, array<Vertex>& atlas_vertices,
               array<uint32_t>& atlas_indices);
