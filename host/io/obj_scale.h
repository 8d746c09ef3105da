/// Moves and scales the positions of an OBJ file so that single precision holds the mesh's shape.
#pragma once

#include "host/io/obj_document.h"

#include <maya/MTypes.h>

#include <cstdint>
#include <vector>

namespace host {

/// Polygons whose shape single precision distorts: an edge changes by more than a tenth of the
/// polygon's longest edge.
struct CoarsePolygons {
    uint64_t count = 0;
    uint32_t first = 0; ///< lowest polygon id, if count > 0
};

/// Sets `unit_positions` and `unit` of a document whose indices are valid. If the mesh is far from
/// the origin for its size, its box is centred on the origin first; `exact` is changed.
/// Shape:  exact[3*vertices], the file's positions in double precision.
/// Cost:   O(vertices + corners). Errors: std::bad_alloc.
MHOST_EXPORT CoarsePolygons fit_to_single_precision(std::vector<double>& exact,
                                                    ObjDocument& document);

} // namespace host
