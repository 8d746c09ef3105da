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
/// each from the tip farthest from its centre, breadth first. The order of `kept` decides only
/// between equal shapes.
std::vector<uint32_t> order_by_shape(const Surface& surface, const std::vector<uint32_t>& kept);

} // namespace tessora::atlas
