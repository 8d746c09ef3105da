/// An OBJ document in the form in which the host's mesh takes it.
///
/// Some polygons get vertices of their own, at the places of the file's, while they are in the
/// host:
///
/// * The host's polygons name every vertex once. A polygon of the file that names one twice (a
///   spike, a polygon that touches itself) gets an added vertex for each repeat.
/// * An edge that more than two triangles use is cut. When such an edge is a diagonal inside a
///   polygon, because another polygon has it too and neither can be divided otherwise (the third
///   copy of a quad, for one), that polygon would be torn. It gets added vertices only, and so lies
///   in the layout by itself and in one piece.
///
/// The corners stay in number and order, so that results per corner belong to the file's corners as
/// they are and nothing has to be joined by hand when the file is written.
#pragma once

#include "host/io/obj_document.h"
#include "host/mesh/mesh.h"

#include <cstdint>
#include <vector>

namespace app {

struct ImportedMesh {
    std::vector<float> positions; ///< 3 per vertex: the file's, over its unit, then the added ones
    std::vector<uint32_t> corner_begin; ///< polygons + 1 entries
    std::vector<uint32_t> corner_vertex;
    std::vector<uint32_t> copy_of;  ///< for each added vertex, the file's vertex it stands for
    uint64_t repeat_polygons = 0;   ///< polygons that name a vertex twice
    uint64_t isolated_polygons = 0; ///< polygons that were given vertices of their own
};

/// Makes the host's mesh, without UV sets, and tells how its vertices belong to the file's.
/// Errors: kInsufficientMemory, or kInvalidParameter when there is too much of something.
/// Cost:   O(vertices + corners) and the triangulation of polygons of more than three corners.
MStatus import_mesh(const host::ObjDocument& document, ImportedMesh& imported, host::Mesh& mesh);

} // namespace app
