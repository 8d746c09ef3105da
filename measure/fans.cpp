#include "measure/fans.h"

#include "measure/shape.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace measure {
namespace {

constexpr double k_full_turn = 6.283185307179586;

/// A triangle corner at a vertex with at least k_min_triangles triangles.
struct Corner {
    uint32_t vertex;
    float u, v;
    uint32_t slot; // 3 * triangle + k

    bool is_at(const Corner& other) const {
        return vertex == other.vertex && u == other.u && v == other.v;
    }
    bool operator<(const Corner& other) const {
        if (vertex != other.vertex)
            return vertex < other.vertex;
        if (u != other.u)
            return u < other.u;
        return v != other.v ? v < other.v : slot < other.slot;
    }
};

std::vector<Corner> crowded_corners(const Layout& layout, const std::vector<uint8_t>& takes_part) {
    std::vector<uint32_t> valence(layout.vertex_count(), 0);
    for (const uint32_t corner : layout.triangle_corners)
        ++valence[layout.corner_vertex[corner]];
    std::vector<Corner> corners;
    for (uint32_t slot = 0; slot < layout.triangle_corners.size(); ++slot) {
        const uint32_t corner = layout.triangle_corners[slot];
        const uint32_t vertex = layout.corner_vertex[corner];
        if (!takes_part[slot / 3] || valence[vertex] < Fans::k_min_triangles)
            continue;
        const float* const uv = &layout.uvs[2 * layout.corner_uv[corner]];
        corners.push_back({vertex, uv[0], uv[1], slot});
    }
    std::sort(corners.begin(), corners.end());
    return corners;
}

} // namespace

Fans::Fans(const Layout& layout, const Texture& texture, const std::vector<uint8_t>& takes_part) {
    const std::vector<Corner> corners = crowded_corners(layout, takes_part);
    if (corners.empty())
        return;
    fan_.assign(layout.triangle_count(), k_none);
    begin_.push_back(0);
    for (size_t first = 0, last = 0; first < corners.size(); first = last) {
        while (last < corners.size() && corners[last].is_at(corners[first]))
            ++last;
        if (last - first < k_min_triangles)
            continue;
        for (size_t i = first; i < last; ++i) {
            const uint32_t triangle = corners[i].slot / 3, k = corners[i].slot % 3;
            if (fan_[triangle] != k_none) // already assigned to another fan
                continue;
            fan_[triangle] = static_cast<uint32_t>(begin_.size() - 1);
            const Triangle2 at = texel_triangle(layout, texture, triangle);
            Point2 from = at.p[(k + 1) % 3] - at.p[k], to = at.p[(k + 2) % 3] - at.p[k];
            if (cross(from, to) < 0.0)
                std::swap(from, to);
            members_.push_back(
                {std::atan2(from.y, from.x), std::atan2(cross(from, to), dot(from, to)), triangle});
        }
        std::sort(members_.begin() + begin_.back(), members_.end(),
                  [](const Member& a, const Member& b) {
                      return a.start != b.start ? a.start < b.start : a.triangle < b.triangle;
                  });
        begin_.push_back(static_cast<uint32_t>(members_.size()));
    }
}

bool Fans::starts_inside(uint32_t first, uint32_t count, uint32_t i, uint32_t other) const {
    const Member& member = members_[first + i];
    const double start =
        members_[first + other % count].start + (other >= count ? k_full_turn : 0.0);
    return start - member.start < member.width;
}

} // namespace measure
