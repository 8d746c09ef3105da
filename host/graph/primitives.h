/// Meshes of the primitives: grids of quads with UVs, centred on the origin.
///
/// Only the four basic arithmetic operations are used, so that primitives have the same bits on
/// every machine. Subdivision counts below the smallest valid one are raised to it.
#pragma once

#include "host/mesh/mesh.h"

namespace host::graph {

/// Cosine and sine of k/n of a full turn.
/// Source: Taylor series after reduction to an eighth of a turn; error below 2e-16.
struct TurnPart {
    double cosine;
    double sine;
};
MHOST_EXPORT TurnPart turn_part(int k, int n);

/// Sizes are lengths along x, y and z; w, h and d are subdivisions. Six sides of w*h, w*d and h*d
/// quads that share the vertices on the box's edges.
MHOST_EXPORT Mesh make_cube(double width, double height, double depth, int w, int h, int d);
/// In the xz plane, facing +y.
MHOST_EXPORT Mesh make_plane(double width, double height, int w, int h);
/// About the y axis, with triangles at the poles.
MHOST_EXPORT Mesh make_sphere(double radius, int around, int along);
/// About the y axis. `caps` is the number of rings of faces on each end, the innermost made of
/// triangles; 0 closes each end with a single polygon.
MHOST_EXPORT Mesh make_cylinder(double radius, double height, int around, int along, int caps);
/// About the y axis; `section` is the radius of the tube.
MHOST_EXPORT Mesh make_torus(double radius, double section, int around, int along);

} // namespace host::graph
