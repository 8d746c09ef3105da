/// Crowds of triangles around one vertex, told apart by their angles there.
///
/// Thousands of slivers that meet in one point all meet in their boxes, so that comparing boxes
/// compares all pairs. Around the point itself they are intervals of angles, and of those a sweep
/// finds the ones that overlap.
#pragma once

#include "measure/layout.h"

#include <cstdint>
#include <vector>

namespace measure {

class Fans {
public:
    /// Fewer triangles than this are no crowd.
    static constexpr uint32_t k_least = 64;

    /// `takes_part` says per triangle whether it is looked at; such triangles are mapped and have
    /// area in the texture.
    Fans(const Layout& layout, const Texture& texture, const std::vector<uint8_t>& takes_part);

    bool empty() const { return begin_.size() < 2; }
    /// The one fan that the triangle is counted to, or k_none. All members of a fan have a corner
    /// at the same vertex with the same UV.
    uint32_t fan_of(uint32_t triangle) const {
        return fan_.empty() ? uint32_t(k_none) : fan_[triangle];
    }

    /// Calls visit(a, b) once for each two triangles of one fan whose angles overlap, until it
    /// returns false. Cost: O(n log n + pairs).
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
        double start; ///< angle of its clockwise edge at the common point
        double width; ///< its angle there
        uint32_t triangle;
    };

    bool starts_inside(uint32_t first, uint32_t count, uint32_t i, uint32_t other) const;

    std::vector<uint32_t> fan_;
    std::vector<uint32_t> begin_; // of each fan's members, and their end
    std::vector<Member> members_; // by start within a fan
};

} // namespace measure
