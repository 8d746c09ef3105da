/// Writes meshes of the scene to OBJ text.
///
/// A mesh that was read from an OBJ file is written as that file with new texture coordinates:
/// materials, normals, groups, names, comments and all other lines are kept (obj_writer.h). If the
/// mesh was moved or its points were edited, the coordinates of the vertices concerned are
/// replaced, and normals turn with the mesh. With several meshes, the indices in all files but the
/// first are shifted.
#pragma once

#include "host/mesh/mesh.h"

#include <maya/MMatrix.h>

#include <string>
#include <vector>

namespace host {

struct ObjPart {
    std::string name;
    const Mesh* mesh;
    MMatrix matrix; ///< to world space, the space of the file
};

/// Returns OBJ text of all parts, each with its current UV set.
/// Errors: false with a sentence in `error` if a UV in use is not finite; `text` is then
///         unspecified.
MHOST_EXPORT bool obj_of_meshes(const std::vector<ObjPart>& parts, std::string& text,
                                std::string& error);

/// Whether the file that a mesh was read from has lines other than positions, texture coordinates
/// and faces.
MHOST_EXPORT bool has_other_lines(const Mesh& mesh);

} // namespace host
