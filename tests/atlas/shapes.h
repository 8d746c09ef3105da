/// Small meshes made by rule, named after what is odd about them.
#pragma once

#include "tests/atlas/check_result.h"

namespace atlas_test {

/// A closed box of n x n x n unit quads per side.
TestMesh cube_of_quads(uint32_t n);
/// n x n quads in a plane; triangles instead when `quads` is false.
TestMesh flat_grid(uint32_t n, bool quads);
/// `around` x `along` quads on a cylinder of radius 1; closed by fans when `caps`.
TestMesh cylinder(uint32_t around, uint32_t along, bool caps);
/// Latitude-longitude sphere of triangles.
TestMesh sphere(uint32_t rings);
TestMesh torus(uint32_t around, uint32_t along);
/// A band with half a twist: the winding clashes along one edge.
TestMesh moebius(uint32_t along);
/// Triangles around one vertex whose angles there add up to `turns` full turns.
TestMesh fan(uint32_t count, double turns);
/// A flat square ring (washer) of quads, as one polygon per quad.
TestMesh washer(uint32_t n);
/// A slab with `holes` square holes right through: genus `holes`.
TestMesh pierced_plate(uint32_t holes);
/// `count` triangles that share nothing.
TestMesh loose_triangles(uint32_t count);
/// One planar polygon with a hole, triangulated as a ring; inner edges are false.
TestMesh ring_polygon(uint32_t sides);

} // namespace atlas_test
