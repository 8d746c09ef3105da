/// The polygons of a PLY file as one mesh, and the file with new texture coordinates.
///
/// Coordinates are per corner (the faces' list `texcoord`) or per vertex (the vertices' `s t`,
/// `u v` or `texture_u texture_v`). In the second case a vertex is split where they have a seam, so
/// vertices at bit-equal positions are one vertex of the document; otherwise the document's
/// vertices are the file's. Faces with fewer than three corners are not part of the mesh and stay
/// in the file.
#pragma once

#include "formats/limits.h"
#include "formats/ply_file.h"
#include "host/io/obj_document.h"
#include "host/io/obj_reader.h"
#include "host/io/obj_writer.h"

#include <string>

namespace formats {

/// Where the coordinates of a result stand.
enum class PlyUvs {
    as_read, ///< per vertex if the input has them there, else per corner
    face,
    vertex
};

struct PlyMesh {
    PlyFile file;
    int u = -1, v = -1; ///< numbers of the vertices' properties; -1 if they have none
    int indices = -1;   ///< numbers of the faces' properties
    int texcoord = -1;
};

/// Reads the file's bytes. `max_corners` holds for vertices as well; it is `k_max_corners` at most.
/// Errors: false with `error` set, "file: place: reason".
bool read_ply_mesh(const std::string& name, std::string bytes, uint64_t max_corners, PlyMesh& mesh,
                   host::ObjDocument& document, host::IoError& error);

/// The file with new texture coordinates; old ones are removed, wherever they stand. Per vertex, a
/// vertex is split where corners differ: its copies follow the last vertex, so that other elements
/// that name vertices stay valid. Everything else stays: other elements and properties,
/// comments, encoding.
/// Errors: false with a reason in `error` if the coordinates do not fit the document, cannot be per
///         vertex because a corner has none, or splitting makes more than `max_vertices`.
bool patch_ply(const PlyMesh& mesh, const host::ObjDocument& document, const host::ObjUvs& uvs,
               PlyUvs place, uint64_t max_vertices, std::string& bytes, std::string& error);

} // namespace formats
