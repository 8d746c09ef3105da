/// The shapes that the primitive creators make: closed or open grids of quads with texture
/// coordinates, centred on the origin.
///
/// Everything is computed with the four basic operations, so that a primitive has the same bits on
/// every machine. Subdivisions below the smallest sensible count are raised to it.
#pragma once

#include "host/mesh/mesh.h"

namespace host::graph {

/// Cosine and sine of a full turn's k-th part of n.
/// Source: Taylor series after reduction to an eighth of a turn; error below 2e-16.
struct TurnPart {
    double cosine;
    double sine;
};
MHOST_EXPORT TurnPart turn_part(int k, int n);

/// Sizes are lengths along x, y, z. Six sides of w*h, w*d, h*d quads that share their edges.
MHOST_EXPORT Mesh make_cube(double width, double height, double depth, int w, int h, int d);
/// In the xz plane, facing up.
MHOST_EXPORT Mesh make_plane(double width, double height, int w, int h);
/// Around the y axis; triangles at the poles.
MHOST_EXPORT Mesh make_sphere(double radius, int around, int along);
/// Around the y axis. `caps` rings of faces on each end, the innermost of triangles; 0: one
/// polygon.
MHOST_EXPORT Mesh make_cylinder(double radius, double height, int around, int along, int caps);
/// Around the y axis; `section` is the radius of the tube.
MHOST_EXPORT Mesh make_torus(double radius, double section, int around, int along);

} // namespace host::graph
