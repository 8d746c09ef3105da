/// Moves and scales positions so that single precision holds the mesh's shape.
#pragma once

#include "polygon/polygons.h"

#include <cstdint>
#include <vector>

namespace tessora::polygon {

/// Rounds positions to single precision after dividing them by a power of ten that brings the
/// largest coordinate to between 1 and 10, so that a mesh in metres and the same mesh in
/// millimetres give equal values. If the mesh is far from the origin for its size, the box of the
/// vertices in use is centred on the origin first; `exact` is changed.
/// Shape:  exact[3*nv], finite -> unit_positions[3*nv]; corner_vertex[corners], every entry < nv.
/// Returns the power of ten.
/// Errors: std::bad_alloc.
double scale_to_unit(std::vector<double>& exact, const uint32_t* corner_vertex, size_t corners,
                     std::vector<float>& unit_positions);

} // namespace tessora::polygon
