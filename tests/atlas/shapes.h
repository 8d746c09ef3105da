/// Small generated meshes, each with one unusual property.
#pragma once

#include "tests/atlas/check_result.h"

namespace atlas_test {

/// A closed cube with n x n unit quads per side.
TestMesh cube_of_quads(uint32_t n);
/// n x n quads in a plane; triangles instead when `quads` is false.
TestMesh flat_grid(uint32_t n, bool quads);
/// `around` x `along` quads on a cylinder of radius 1; closed by fans when `caps`.
TestMesh cylinder(uint32_t around, uint32_t along, bool caps);
/// Latitude-longitude sphere of triangles.
TestMesh sphere(uint32_t rings);
/// A torus whose tube has radius 1; `radius` is that of the circle through the tube's middle.
TestMesh torus(uint32_t around, uint32_t along, double radius = 3);
/// A Moebius strip: the windings of its triangles disagree across one edge.
TestMesh moebius(uint32_t along);
/// Triangles around one vertex; `turns` > 1 lifts the rim so that the angles at the vertex add up
/// to more than 360 degrees.
TestMesh fan(uint32_t count, double turns);
/// A flat square ring (washer) of quads, as one polygon per quad.
TestMesh washer(uint32_t n);
/// A slab with `holes` square holes through it: a closed surface of that genus.
TestMesh pierced_plate(uint32_t holes);
/// `count` triangles without common vertices.
TestMesh loose_triangles(uint32_t count);
/// One planar polygon with a hole, triangulated as a ring; all interior edges are false.
TestMesh ring_polygon(uint32_t sides);

} // namespace atlas_test
