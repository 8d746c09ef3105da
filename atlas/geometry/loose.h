/// Triangles that are laid out along an edge of a neighbour instead of for themselves: those that
/// name a vertex twice, or have no area and connect nothing.
#pragma once

#include "atlas/geometry/surface.h"

#include <functional>
#include <vector>

namespace tessora::atlas {

/// What decides where triangles without area are hung.
struct LooseHints {
    std::vector<uint8_t> point; ///< per triangle: 1 when all its corners are in one place
    /// Per half-edge of triangles without area: its mate across a false edge, or k_none.
    std::vector<uint32_t> inner_mate;
};

/// A triangle hung on another. Both half-edges run between the same two vertices; for a triangle
/// that is a point they merely start at the same vertex.
struct Attachment {
    uint32_t own, host;
};

/// Hangs the `loose` triangles, one after the other, on placed ones: on one of the same polygon,
/// else rather where the two are wound alike, else on the nearest in number. One that has no
/// neighbour which is placed or can be is kept where it is: `keep` says what is placed with it.
/// Shape:  vertex[3*faces]; placed[faces], 1 when placed and 1 for all of `loose` afterwards.
std::vector<Attachment>
attach_loose(Span<uint32_t> vertex, const LooseHints& hints, const std::vector<uint32_t>& loose,
             std::vector<uint8_t>& placed,
             const std::function<std::vector<uint32_t>(uint32_t triangle)>& keep);

} // namespace tessora::atlas
