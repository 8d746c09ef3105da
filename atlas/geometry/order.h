/// An order of triangles that depends on the shape of the surface, not on how the mesh numbers
/// them.
///
/// Stages break ties by number and start from the lowest; numbered like this, a mesh whose
/// triangles are listed in another order gives the same charts. Neighbours get close numbers, which
/// is good for the caches too.
#pragma once

#include "atlas/geometry/surface.h"

namespace tessora::atlas {

/// The triangles of `kept`, which holds whole connected components: the components by their area,
/// each from the tip farthest from its centre, breadth first. Of equal ones the first in space
/// comes first, so the order of `kept` decides only between those in the same place.
std::vector<uint32_t> order_by_shape(const Surface& surface, const std::vector<uint32_t>& kept);

/// Whether half-edge a starts before b in space: with a smaller x, or with the same and a smaller
/// y, and so on; if both start in one place, whether it ends before b.
bool lies_before(const Surface& surface, uint32_t a, uint32_t b);

} // namespace tessora::atlas
