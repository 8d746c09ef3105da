/// Inflating: lets all charts of a layout grow together, pushing each other aside.
///
/// The grids on which layouts are found cost room: a mask holds a part of a cell more than its
/// chart on every side, and what is loose in one place is of no use in another. Here charts are
/// polygons, and all of them move and turn at once, a little at a time.
/// Sources: Z. Li, V. Milenkovic, "Compaction and separation algorithms for non-convex polygons and
///          their applications", 1995: moving all polygons of a layout under linearised conditions
///          of not overlapping; M. Müller, B. Heidelberger, M. Hennix, J. Ratcliff, "Position based
///          dynamics", 2007: solving such conditions one after the other;
///          B. Lubachevsky, F. Stillinger, "Geometric properties of random disk packings", 1990:
///          growing until nothing moves.
#pragma once

#include "atlas/pack/chains.h"
#include "atlas/pack/pack.h"

#include <cstdint>
#include <functional>

namespace tessora::atlas {

/// Raises the scale of a layout, up to `max_scale`, by moving its charts within their tiles; those
/// that do not turn finely keep their angles. The layout must be valid and have no kept charts, and
/// it stays valid: no chart comes closer to another than the gutter or leaves its tile. Nothing
/// happens if the gutter is below half a texel: it is what keeps charts apart while they move.
/// `effort`: about how many conditions are looked at, at some 5 ns each.
/// `goes_on` is called often; if it returns false, the best layout so far is the result.
void inflate(const ChartChains& chains, const PackRoom& room, double max_scale, uint64_t effort,
             const std::function<bool()>& goes_on, Packing& packing);

} // namespace tessora::atlas
