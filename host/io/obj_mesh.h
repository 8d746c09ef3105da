/// Converts an OBJ document to a mesh, and meshes of the scene to OBJ text.
#pragma once

#include "host/io/obj_document.h"
#include "host/mesh/mesh.h"

#include <maya/MMatrix.h>

#include <string>
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

struct ObjPart {
    std::string name;
    const Mesh* mesh;
    MMatrix matrix; ///< to world space, the space of the file
};

/// Returns OBJ text with one object per part, each with its current UV set.
MHOST_EXPORT std::string obj_of_meshes(const std::vector<ObjPart>& parts);

} // namespace host
