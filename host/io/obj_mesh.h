/// OBJ files and the scene's meshes: reading one into a mesh value, writing several into one text.
#pragma once

#include "host/io/obj_document.h"
#include "host/mesh/mesh.h"

#include <maya/MMatrix.h>

#include <string>
#include <vector>

namespace host {

/// A document's corners with every vertex named once by each polygon: for each repeat there is an
/// added vertex, at the same place, numbered on from the document's.
struct DistinctCorners {
    std::vector<uint32_t> corner_vertex;
    std::vector<uint32_t> copy_of; ///< for each added vertex, the document's vertex
    uint64_t repeat_polygons = 0;  ///< polygons that name a vertex twice
};
MHOST_EXPORT DistinctCorners distinct_corners(const ObjDocument& document);

/// The document's polygons as one mesh with one UV set, "map1", which is there also when the file
/// has no texture coordinates. Its corners are distinct_corners.
/// Errors: false when the mesh cannot be made (too many of anything, memory).
MHOST_EXPORT bool mesh_of_document(const ObjDocument& document, Mesh& mesh);

struct ObjPart {
    std::string name;
    const Mesh* mesh;
    MMatrix matrix; ///< to world space, in which the file is written
};

/// One OBJ text with an object per part and the current UV set of each.
MHOST_EXPORT std::string obj_of_meshes(const std::vector<ObjPart>& parts);

} // namespace host
