/// Hand-made layouts whose figures are known.
#pragma once

#include "measure/layout.h"

#include <array>
#include <cstddef>
#include <vector>

using UvCorners = std::vector<std::array<float, 2>>;

/// Adds a polygon in the plane z = 0 whose corners get vertices of their own, divided as a fan.
/// `places` are its vertices' x and y; `uvs` one per corner.
void add_polygon(measure::Layout& layout, const UvCorners& places, const UvCorners& uvs);

/// The same with any vertices that exist already.
void add_face(measure::Layout& layout, const std::vector<uint32_t>& vertices, const UvCorners& uvs);

/// Four corners of an axis-aligned rectangle, counter-clockwise.
UvCorners rectangle(float left, float bottom, float right, float top);

/// A rectangle whose texture coordinates are those of its plane, fitted to `uvs`.
measure::Layout one_quad(const UvCorners& places, const UvCorners& uvs);

/// A unit cube as a cross of six quads in the texture, edges of 1/4; u from 0 to 3/4, v from 0
/// to 1.
measure::Layout cube_net();

/// A strip of `count` quads, 1 x 1 each, vertices shared, all quads apart by `gap` in u in the
/// texture and 1/16 wide.
measure::Layout strip(int count, float gap);

/// n x n quads on the unit square with identical texture coordinates.
measure::Layout grid(uint32_t n);
