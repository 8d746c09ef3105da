/// One polygon on its way to triangles: its corners seen along its normal, counter-clockwise.
#pragma once

#include "host/mesh/mesh.h"
#include "host/mesh/orientation.h"

#include <cstdint>
#include <vector>

namespace host {

struct Outline {
    std::vector<Point2> flat;             ///< corners in the plane of projection
    std::vector<MVector> space;           ///< corners as they are
    std::vector<std::uint32_t> ids;       ///< mesh vertex of each corner
    std::vector<std::uint32_t> triangles; ///< result: local corner numbers, counter-clockwise
    std::uint64_t steps = 0;              ///< elementary steps so far

    std::uint32_t size() const { return static_cast<std::uint32_t>(flat.size()); }
    std::uint32_t next(std::uint32_t corner) const { return corner + 1 == size() ? 0 : corner + 1; }
    std::uint32_t previous(std::uint32_t corner) const {
        return corner == 0 ? size() - 1 : corner - 1;
    }
    int turn(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        steps += 1;
        return orientation(flat[a], flat[b], flat[c]);
    }
    void emit(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        triangles.push_back(a);
        triangles.push_back(b);
        triangles.push_back(c);
    }
};

/// Fills in `flat` from `space`. False when that cannot be done: coordinates that are not finite,
/// or no area to look at.
bool project(Outline& outline);

/// Triangulates a simple outline by one sweep. False when it proves not to be simple; `triangles`
/// is then worthless.
/// Cost:   O(n log n).
bool sweep_triangulate(Outline& outline);

/// The same for an outline whose corners touch each other, such as one that reaches a hole by a
/// bridge walked twice: corners in one place are moved apart by a hair before the sweep. False when
/// no corners touch or something crosses all the same.
bool sweep_touching(Outline& outline);

/// Triangulates any outline by cutting off ears. Handles outlines that touch themselves. True when
/// every triangle is sound; an outline that crosses itself still gets n - 2 triangles. Cost: about
/// O(n) for short outlines; the tests against other corners stop after a number
///         proportional to n.
bool clip_ears(Outline& outline);

class PairSet;

/// Exchanges diagonals until none improves the triangles' angles or gets rid of a diagonal whose
/// vertices are joined elsewhere (`taken`). Keeps every triangle turning counter-clockwise. False,
/// with nothing changed, when the triangles do not form one piece bounded by the outline.
/// Cost:   O(n log n), and O(n) exchanges.
bool improve_diagonals(Outline& outline, const PairSet& taken);

} // namespace host
