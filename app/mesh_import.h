/// An OBJ document in the form in which the host's mesh takes it.
///
/// The host's polygons name every vertex once. A polygon of the file that names one twice (a spike,
/// a polygon that touches itself) gets a vertex of its own, at the same place, for each repeat. The
/// corners stay in number and order, so that results per corner belong to the file's corners as
/// they are and nothing has to be joined by hand when the file is written.
#pragma once

#include "host/io/obj_document.h"

#include <cstdint>
#include <vector>

namespace app {

struct ImportedMesh {
    std::vector<float> positions;       ///< 3 per vertex: the file's, then the added ones
    std::vector<uint32_t> corner_begin; ///< polygons + 1 entries
    std::vector<uint32_t> corner_vertex;
    std::vector<uint32_t> copy_of; ///< for each added vertex, the file's vertex it stands for
    uint64_t split_polygons = 0;   ///< polygons that got added vertices
};

/// Cost: O(vertices + corners).
ImportedMesh import_mesh(const host::ObjDocument& document);

} // namespace app
