/// Converts an OBJ document to the host's mesh.
///
/// The host accepts fewer shapes than a file can hold, so some polygons get vertices of their own
/// in the host's mesh, at the same positions as the file's; polygon/separate.h says which. Number
/// and order of the corners never change, so results per corner apply to the file as they are.
#pragma once

#include "host/io/obj_document.h"
#include "host/mesh/mesh.h"

#include <cstdint>
#include <vector>

namespace app {

struct ImportedMesh {
    std::vector<uint32_t> copy_of;  ///< for each added vertex, the file's vertex it copies
    uint64_t repeat_polygons = 0;   ///< polygons that repeat a vertex
    uint64_t isolated_polygons = 0; ///< polygons made entirely of added vertices
};

/// Makes the host's mesh, without UV sets, in the document's unit, and the map from its vertices to
/// the file's: first come the file's vertices, then added ones.
/// Errors: kInsufficientMemory, or kInvalidParameter if a count exceeds 32 bits.
/// Cost:   O(vertices + corners), plus triangulating polygons of more than three corners.
MStatus import_mesh(const host::ObjDocument& document, ImportedMesh& imported, host::Mesh& mesh);

} // namespace app
