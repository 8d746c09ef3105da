/// Converts an OBJ document to a mesh.
#pragma once

#include "host/io/obj_document.h"
#include "host/mesh/mesh.h"
#include "polygon/polygons.h"

#include <memory>
#include <vector>

namespace host {

/// The document's polygons. Valid as long as the document.
inline tessora::polygon::Polygons polygons_of(const ObjDocument& document) {
    return {document.corner_begin.data(), static_cast<uint32_t>(document.polygon_count()),
            document.corner_vertex.data()};
}

/// Converts a document to one mesh with one UV set, "map1", which is empty if the file has no
/// texture coordinates. A vertex that a polygon names again is duplicated.
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
