#include "atlas/geometry/repeats.h"

#include "atlas/geometry/order.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Lengths are equal up to this share, and up to what six decimals of the largest coordinate leave.
constexpr double k_share = 1e-4;
constexpr double k_rounding = 4e-6; // of the largest coordinate, from the centre

constexpr double k_area_share = 1e-2; ///< the same of the areas of corners

/// So many sources of about the same size are tried for a component, the latest first.
constexpr size_t k_most_sources = 4;

struct Component {
    uint32_t begin = 0, end = 0; ///< in the list of triangles
    uint32_t sides = 0, border = 0;
    uint32_t first = 0; ///< of its half-edges the first in space
    double length = 0;  ///< of all sides
};

class RepeatFinder {
public:
    RepeatFinder(const Surface& surface, const std::vector<uint8_t>& candidate)
        : s_(surface), candidate_(candidate) {
        for (uint32_t v : s_.vertex) {
            const Vec3 p = s_.position[v];
            tolerance_ = std::max({tolerance_, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
        }
        tolerance_ *= k_rounding;
    }

    std::vector<Repeat> run() {
        collect_components();
        if (components_.size() < 2)
            return {};
        sort_by_size();
        image_.assign(s_.vertex.size(), k_none);
        taken_.assign(s_.vertex.size(), 0);
        std::vector<Repeat> repeats;
        size_t group = 0; // where components that may be equal to the present one begin
        std::vector<uint32_t> sources;
        for (uint32_t i = 0; i < components_.size(); ++i) {
            if (i > 0 && !same_size(components_[i - 1], components_[i]))
                group = sources.size();
            Repeat repeat;
            if (find_source(components_[i], sources, group, repeat))
                repeats.push_back(std::move(repeat));
            else
                sources.push_back(i);
        }
        return repeats;
    }

private:
    enum class Way { alike, mirrored };

    void collect_components() {
        std::vector<uint8_t> seen(s_.face_count, 0);
        for (uint32_t t = 0; t < s_.face_count; ++t) {
            if (seen[t] || !candidate_[t])
                continue;
            Component c;
            c.begin = uint32_t(faces_.size());
            c.first = 3 * t;
            faces_.push_back(t);
            seen[t] = 1;
            for (uint32_t i = c.begin; i < faces_.size(); ++i)
                for (uint32_t h = 3 * faces_[i]; h < 3 * faces_[i] + 3; ++h) {
                    const uint32_t mate = s_.mate[h];
                    if (lies_before(s_, h, c.first))
                        c.first = h;
                    if (!s_.false_edge[h]) {
                        c.sides++;
                        c.border += mate == k_none;
                        c.length += s_.edge_length(h);
                    }
                    if (mate != k_none && !seen[mate / 3]) {
                        seen[mate / 3] = 1;
                        faces_.push_back(mate / 3);
                    }
                }
            c.end = uint32_t(faces_.size());
            components_.push_back(c);
        }
    }

    void sort_by_size() {
        std::stable_sort(components_.begin(), components_.end(),
                         [&](const Component& a, const Component& b) {
                             if (a.sides != b.sides)
                                 return a.sides > b.sides;
                             if (a.border != b.border)
                                 return a.border > b.border;
                             if (a.end - a.begin != b.end - b.begin)
                                 return a.end - a.begin > b.end - b.begin;
                             // In single precision those that repeat each other are equal.
                             if (float(a.length) != float(b.length))
                                 return a.length > b.length;
                             return lies_before(s_, a.first, b.first);
                         });
    }

    bool same_size(const Component& a, const Component& b) const {
        return a.sides == b.sides && a.border == b.border && a.end - a.begin == b.end - b.begin &&
               std::abs(a.length - b.length) <= k_share * a.length + a.sides * tolerance_;
    }

    bool find_source(const Component& c, const std::vector<uint32_t>& sources, size_t group,
                     Repeat& repeat) {
        if (sources.size() == group)
            return false;
        const uint32_t first = rarest_side(c);
        for (size_t i = sources.size(), tries = 0; i-- > group && tries < k_most_sources; ++tries) {
            const Component& source = components_[sources[i]];
            if (first == k_none || !same_size(c, source))
                return false;
            if (match(c, first, source, repeat))
                return true;
        }
        return false;
    }

    // Polygons and their sides --------------------------------------------------------------------

    /// The side after a side around its polygon.
    uint32_t next_side(uint32_t side) const {
        uint32_t h = next_corner(side);
        while (s_.false_edge[h])
            h = next_corner(s_.mate[h]);
        return h;
    }
    uint32_t previous_side(uint32_t side) const {
        uint32_t h = previous_corner(side);
        while (s_.false_edge[h])
            h = previous_corner(s_.mate[h]);
        return h;
    }
    Vec3 start(uint32_t h) const { return s_.position[s_.vertex[h]]; }

    /// What two corresponding sides have in common whatever the rounding: the sides of the polygons
    /// on both sides of it, and whether it is a border.
    uint32_t kind_of(uint32_t side) const {
        const uint32_t mate = s_.mate[side];
        return 64 * count_sides(side) + (mate == k_none ? 0 : count_sides(mate));
    }
    uint32_t count_sides(uint32_t side) const {
        constexpr uint32_t k_most = 60; // more count as that many
        uint32_t count = 1;
        for (uint32_t h = next_side(side); h != side && count < k_most; h = next_side(h))
            count++;
        return count;
    }

    /// The longest side of the kind that the component has fewest of; k_none if false edges leave
    /// it without any.
    uint32_t rarest_side(const Component& c) const {
        std::vector<std::pair<uint32_t, uint32_t>> sides; // (kind, half-edge)
        for (uint32_t i = c.begin; i < c.end; ++i)
            for (uint32_t h = 3 * faces_[i]; h < 3 * faces_[i] + 3; ++h)
                if (!s_.false_edge[h])
                    sides.push_back({kind_of(h), h});
        std::sort(sides.begin(), sides.end());
        size_t fewest = sides.size() + 1;
        uint32_t best = k_none;
        for (size_t i = 0, j; i < sides.size(); i = j) {
            uint32_t longest = sides[i].second;
            for (j = i; j < sides.size() && sides[j].first == sides[i].first; ++j)
                if (s_.edge_length(sides[j].second) > s_.edge_length(longest))
                    longest = sides[j].second;
            if (j - i < fewest) {
                fewest = j - i;
                best = longest;
            }
        }
        return best;
    }

    // The walk ------------------------------------------------------------------------------------

    bool match(const Component& c, uint32_t first, const Component& source, Repeat& repeat) {
        constexpr size_t k_most_walks = 16; // in steps: as many whole walks
        size_t steps = 0;
        const uint32_t kind = kind_of(first);
        for (const Way way : {Way::alike, Way::mirrored})
            for (uint32_t i = source.begin; i < source.end; ++i)
                for (uint32_t h = 3 * faces_[i]; h < 3 * faces_[i] + 3; ++h) {
                    if (s_.false_edge[h] || !same_length(first, h) || kind_of(h) != kind)
                        continue;
                    const bool same = walk(first, h, way, c.sides) && fill(c, way, repeat);
                    steps += walked_.size() + 1;
                    for (uint32_t side : walked_) {
                        taken_[image_[side]] = 0;
                        image_[side] = k_none;
                    }
                    if (same || steps > k_most_walks * (c.sides + 4))
                        return same;
                }
        return false;
    }

    /// Matches sides with those of the source, polygon by polygon, until all are or one differs.
    bool walk(uint32_t first, uint32_t source, Way way, uint32_t sides) {
        walked_.clear();
        if (!match_polygon(first, source, way))
            return false;
        for (size_t i = 0; i < walked_.size(); ++i) {
            const uint32_t side = walked_[i], other = image_[side];
            const uint32_t mate = s_.mate[side], other_mate = s_.mate[other];
            if ((mate == k_none) != (other_mate == k_none))
                return false;
            if (mate == k_none)
                continue;
            if (image_[mate] == k_none ? !match_polygon(mate, other_mate, way)
                                       : image_[mate] != other_mate)
                return false;
            if (!same_bend(side, other, way))
                return false;
        }
        return walked_.size() == sides;
    }

    bool match_polygon(uint32_t first, uint32_t source, Way way) {
        uint32_t h = first, g = source;
        do {
            if (taken_[g] || image_[h] != k_none || !same_corner(h, g, way))
                return false;
            image_[h] = g;
            taken_[g] = 1;
            walked_.push_back(h);
            h = next_side(h);
            g = way == Way::alike ? next_side(g) : previous_side(g);
        } while (h != first && g != source);
        return h == first && g == source;
    }

    bool same(double a, double b) const {
        return std::abs(a - b) <= k_share * std::max(a, b) + tolerance_;
    }
    bool same_length(uint32_t h, uint32_t g) const {
        return same(s_.edge_length(h), s_.edge_length(g));
    }
    /// A side, and the angle to the next one by what lies across.
    bool same_corner(uint32_t h, uint32_t g, Way way) const {
        if (!same_length(h, g))
            return false;
        const Vec3 side = start(next_side(h)) - start(h);
        const Vec3 across = start(next_side(next_side(h))) - start(h);
        const Vec3 other_side = start(next_side(g)) - start(g);
        const Vec3 other_across = way == Way::alike ? start(next_side(next_side(g))) - start(g)
                                                    : start(next_side(g)) - start(previous_side(g));
        // Corners of needles that turn either way, or not at all, have the same lengths.
        const double area = length(cross(side, across));
        const double other_area = length(cross(other_side, other_across));
        const double longest = std::max({length(side), length(across), 1e-12});
        return same(length(across), length(other_across)) &&
               std::abs(area - other_area) <=
                   k_area_share * std::max(area, other_area) + tolerance_ * longest;
    }
    /// How two polygons meet at a side: by the vertices next to one of its ends, which lie as far
    /// apart there, and on the same side of each other's plane. Diagonals play no part.
    bool same_bend(uint32_t h, uint32_t g, Way way) const {
        const Bend own = bend_at_start(h),
                   there = way == Way::alike ? bend_at_start(g) : bend_at_end(g);
        constexpr double k_flat = 0.05; // of a cube on the three edges
        const double turned = way == Way::alike ? there.volume : -there.volume;
        return same(own.gap, there.gap) &&
               (std::abs(own.volume) < k_flat || std::abs(turned) < k_flat ||
                (own.volume > 0) == (turned > 0));
    }
    struct Bend {
        double gap, volume;
    };
    Bend bend_at_start(uint32_t h) const {
        const uint32_t mate = s_.mate[h];
        return bend(start(h), start(mate), start(previous_side(h)),
                    start(next_side(next_side(mate))));
    }
    Bend bend_at_end(uint32_t h) const {
        const uint32_t mate = s_.mate[h];
        return bend(start(mate), start(h), start(next_side(next_side(h))),
                    start(previous_side(mate)));
    }
    static Bend bend(Vec3 end, Vec3 other_end, Vec3 near, Vec3 far) {
        const Vec3 e = other_end - end, p = near - end, q = far - end;
        const double size = length(e) * length(p) * length(q);
        return {length(far - near), size > 0 ? dot(cross(e, p), q) / size : 0};
    }

    bool fill(const Component& c, Way way, Repeat& repeat) const {
        repeat.mirrored = way == Way::mirrored;
        repeat.faces.assign(faces_.begin() + c.begin, faces_.begin() + c.end);
        for (uint32_t t : repeat.faces)
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
                const uint32_t side = side_at(h);
                if (side == k_none)
                    return false;
                const uint32_t there = image_[side];
                repeat.source_corner.push_back(repeat.mirrored ? next_corner(there) : there);
                repeat.source_edge.push_back(s_.false_edge[h] ? k_none : image_[h]);
                if (!s_.false_edge[h])
                    repeat.difference +=
                        std::abs(s_.edge_length(h) - s_.edge_length(image_[h])) / c.length;
            }
        return true;
    }

    /// The side of its polygon that starts at the vertex where a half-edge starts; k_none inside of
    /// a polygon.
    uint32_t side_at(uint32_t h) const {
        const uint32_t first = h;
        while (s_.false_edge[h]) {
            h = next_corner(s_.mate[h]);
            if (h == first)
                return k_none;
        }
        return h;
    }

    const Surface& s_;
    const std::vector<uint8_t>& candidate_;
    double tolerance_ = 0; ///< of lengths
    std::vector<uint32_t> faces_;
    std::vector<Component> components_;
    std::vector<uint32_t> image_;  ///< per half-edge: its source in the present walk, or k_none
    std::vector<uint8_t> taken_;   ///< per half-edge: 1 when it is the source of one
    std::vector<uint32_t> walked_; ///< half-edges that have a source, in the order of the walk
};

} // namespace

std::vector<Repeat> find_repeats(const Surface& surface, const std::vector<uint8_t>& candidate) {
    return RepeatFinder(surface, candidate).run();
}

} // namespace tessora::atlas
