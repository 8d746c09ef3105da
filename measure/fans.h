/// Vertices with very many triangles, whose overlaps are found by angle.
///
/// The boxes of thousands of slivers around one point all intersect, so box tests would compare all
/// pairs. Around their common point the triangles are angular intervals, and a sweep finds the
/// intervals that overlap.
#pragma once

#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

class Fans {
public:
    /// Minimum number of triangles at a vertex to form a fan.
    static constexpr uint32_t k_min_triangles = 64;

    /// `takes_part`: per triangle, whether to consider it; requires it to have UVs and UV area.
    Fans(const Layout& layout, const Texture& texture, const std::vector<uint8_t>& takes_part);

    bool empty() const { return begin_.size() < 2; }
    /// The fan that the triangle is assigned to (at most one), or k_none. All members of a fan have
    /// a corner at the same vertex with the same UV.
    uint32_t fan_of(uint32_t triangle) const {
        return fan_.empty() ? uint32_t(k_none) : fan_[triangle];
    }

    /// Calls visit(a, b) once for each pair in a fan whose angles overlap, until it returns false.
    /// Cost: O(n log n + pairs).
    template <class Visit>
    void for_each_pair(Visit visit) const {
        for (uint32_t fan = 0; fan + 1 < begin_.size(); ++fan) {
            const uint32_t first = begin_[fan], count = begin_[fan + 1] - first;
            for (uint32_t i = 0; i < count; ++i)
                for (uint32_t step = 1; step < count && starts_inside(first, count, i, i + step);
                     ++step)
                    if (!visit(members_[first + i].triangle,
                               members_[first + (i + step) % count].triangle))
                        return;
        }
    }

private:
    struct Member {
        double start; ///< direction of its clockwise edge at the common point, radians
        double width; ///< its interior angle there, radians
        uint32_t triangle;
    };

    bool starts_inside(uint32_t first, uint32_t count, uint32_t i, uint32_t other) const;

    std::vector<uint32_t> fan_;   // per triangle
    std::vector<uint32_t> begin_; // per fan, first index into members_; one more for the end
    std::vector<Member> members_; // grouped by fan, sorted by start
};

} // namespace measure
