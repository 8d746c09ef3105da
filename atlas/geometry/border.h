/// Exact test whether the outline of a flattened chart crosses or overlaps itself.
///
/// If every triangle is positively oriented and the outline is one positive simple loop with simple
/// holes, the chart does not overlap itself: the winding number of the outline counts how often a
/// point is covered, and it is one inside the loop and zero inside its holes (Lipman, "Bijective
/// mappings of meshes with boundary", 2014; Smith and Schaefer, "Bijective parameterization with
/// free boundaries", 2015). The two sides of a slit may coincide.
#pragma once

#include "atlas/geometry/vec.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace tessora::atlas {

/// Closed polygons, one after another. The inside is on the left of every segment.
struct Outline {
    std::vector<Vec2> point;
    std::vector<uint32_t> loop_end; ///< per loop: one past its last point

    void clear() {
        point.clear();
        loop_end.clear();
    }
};

/// Keeps its memory between calls.
class OutlineTester {
public:
    /// True if no two segments cross, segments that touch do so from outside, and exactly one loop
    /// is counter-clockwise.
    bool simple(const Outline& outline);
    /// The same for an outline that was simple before some of its segments moved, all within this
    /// box: looks only there for crossings.
    bool simple_within(const Outline& outline, Vec2 low, Vec2 high);
    /// Appends the segments, by their first points, that keep an outline from being simple; some
    /// more than once.
    void find_faults(const Outline& outline, std::vector<uint32_t>& segments);

private:
    /// Calls visit(i, j) for pairs of chosen segments that are not legal until it returns false.
    template <class Visit>
    void visit_illegal_pairs(const Outline& outline, Visit visit);
    bool chosen_are_legal(const Outline& outline);
    struct Cell {
        uint32_t begin = 0, count = 0;
    };
    void link_neighbours(const Outline& outline);
    void choose_all();
    void choose_within(const Outline& outline, Vec2 low, Vec2 high);
    double doubled_area_of_loop(const Outline& outline, uint32_t begin, uint32_t end) const;
    bool one_positive_loop(const Outline& outline) const;
    void build_grid(const Outline& outline);
    template <class Visit>
    void visit_cells(Vec2 a, Vec2 b, Visit visit) const;
    bool pair_is_legal(const Outline& outline, uint32_t i, uint32_t j) const;
    bool contact_is_legal(const Outline& outline, uint32_t segment, uint32_t vertex) const;

    std::vector<uint32_t> next_, previous_;
    std::vector<uint32_t> chosen_; ///< the segments in the grid
    std::vector<Cell> cells_;
    std::vector<uint32_t> entries_;
    std::vector<std::pair<uint32_t, uint32_t>> visits_; ///< (cell, segment), by segment
    Vec2 origin_;
    double inverse_size_ = 1;
    int columns_ = 1, rows_ = 1;
};

} // namespace tessora::atlas
