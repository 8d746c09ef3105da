/// Polygons on the same vertices.
#pragma once

#include "polygon/polygons.h"

#include <cstdint>
#include <vector>

namespace tessora::polygon {

/// Per polygon, the first one with the same vertices in the same cyclic order or its reverse; the
/// polygon itself if there is none before it, if it names a vertex twice, or if it is a triangle.
/// Errors: std::bad_alloc.
/// Cost:   O(n) for n corners, and more only where many different polygons share all vertices.
std::vector<uint32_t> first_twins(const Polygons& polygons);

} // namespace tessora::polygon
