/// Converts an OBJ document to a mesh.
#pragma once

#include "host/io/obj_document.h"
#include "host/mesh/mesh.h"

#include <memory>
#include <vector>

namespace host {

/// The corners of a document, changed so that no polygon uses a vertex twice: each repeated use
/// gets an added vertex at the same position, numbered after the document's vertices.
struct DistinctCorners {
    std::vector<uint32_t> corner_vertex;
    std::vector<uint32_t> copy_of; ///< per added vertex, the vertex it duplicates
    uint64_t repeat_polygons = 0;  ///< number of polygons that use a vertex twice
};
MHOST_EXPORT DistinctCorners distinct_corners(const ObjDocument& document);

/// Converts a document to one mesh with one UV set, "map1", which is empty if the file has no
/// texture coordinates. Repeated vertices are duplicated as by `distinct_corners`.
/// Errors: false if the mesh exceeds 32-bit counts or memory runs out.
MHOST_EXPORT bool mesh_of_document(const ObjDocument& document, Mesh& mesh);

/// The document's texture coordinates as the mesh gets them.
MHOST_EXPORT UvSet uv_set_of_document(const ObjDocument& document);

/// Attached to meshes read from OBJ files: the file, whose other lines an export keeps.
struct MHOST_EXPORT ObjOrigin : MeshOrigin {
    explicit ObjOrigin(ObjDocument read) : document(std::move(read)) {}
    ~ObjOrigin() override;
    ObjDocument document;
};

} // namespace host
