/// Small layouts with known measures.
#pragma once

#include "measure/layout.h"

#include <array>
#include <cstddef>
#include <vector>

using UvCorners = std::vector<std::array<float, 2>>;

/// Adds a polygon with new vertices in the plane z = 0, triangulated as a fan.
/// `places`: x and y per vertex; `uvs`: one per corner.
void add_polygon(measure::Layout& layout, const UvCorners& places, const UvCorners& uvs);

/// Adds a polygon of existing vertices, triangulated as a fan.
void add_face(measure::Layout& layout, const std::vector<uint32_t>& vertices, const UvCorners& uvs);

/// Four corners of an axis-aligned rectangle, counter-clockwise.
UvCorners rectangle(float left, float bottom, float right, float top);

/// A rectangle in space that is mapped to the rectangle `uvs`.
measure::Layout one_quad(const UvCorners& places, const UvCorners& uvs);

/// A unit cube unfolded to a cross of six quads with sides of 1/4: u from 0 to 3/4, v from 0 to 1.
measure::Layout cube_net();

/// A strip of `count` unit quads with shared vertices; in the texture each is 1/16 wide, separated
/// by `gap` in u.
measure::Layout strip(int count, float gap);

/// n x n quads on the unit square with identical texture coordinates.
measure::Layout grid(uint32_t n);
