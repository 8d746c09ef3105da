/// The input's polygons and what they guarantee however a renderer divides them into triangles.
///
/// A corner that turns left in space and at which several of the polygon's triangles meet makes,
/// with its two neighbours, a triangle of another division: a corner triangle. While those stay
/// positively oriented, a polygon that is convex in space is convex in the texture, so that every
/// fan of it is free of flips, and no corner of another polygon that turns left comes to turn
/// right. A polygon of n corners has at most n of them.
#pragma once

#include "atlas/charts/clusters.h"
#include "atlas/charts/patch.h"

namespace tessora::atlas {

class Polygons {
public:
    struct CornerTriangle {
        uint32_t corner[3]; ///< one corner each of three neighbouring corners of the polygon
        Frame frame;
    };
    struct Range {
        const CornerTriangle *first, *last;
        const CornerTriangle* begin() const { return first; }
        const CornerTriangle* end() const { return last; }
    };

    Polygons(const Surface& surface, const Atoms& atoms);

    /// No polygon has a corner triangle.
    bool empty() const { return corner_triangles_.empty(); }
    /// The triangle that stands for t's polygon: the first of a polygon with corner triangles.
    /// k_none if t's polygon has none. empty() must be false.
    uint32_t lead(uint32_t t) const { return lead_[t]; }
    /// Makes triangle t one of a polygon without corner triangles; for those that come apart.
    void forget(uint32_t t) { lead_[t] = k_none; }
    /// Of the polygon that `lead` stands for.
    Range corner_triangles(uint32_t lead) const {
        const CornerTriangle* const all = corner_triangles_.data();
        return {all + begin_[slot_[lead]], all + begin_[slot_[lead] + 1]};
    }
    /// The second triangle of a convex quad that `lead` stands for, else k_none. Its two corner
    /// triangles are then the halves across the other diagonal.
    uint32_t other_half(uint32_t lead) const { return other_half_[slot_[lead]]; }

private:
    struct Faces { ///< triangles of one polygon
        const uint32_t *first, *last;
        const uint32_t* begin() const { return first; }
        const uint32_t* end() const { return last; }
    };

    bool add(const Surface& surface, Faces faces, std::vector<uint8_t>& traced);
    size_t add_loop(const Surface& surface, const std::vector<uint32_t>& loop, Vec3 axis);

    std::vector<uint32_t> lead_; ///< per triangle
    std::vector<uint32_t> slot_; ///< per triangle: place of its polygon if it is a lead
    std::vector<uint32_t> begin_, other_half_;
    std::vector<CornerTriangle> corner_triangles_;
};

} // namespace tessora::atlas
