/// Triangulation by a sweep from top to bottom. The inside between two neighbouring edges crossed
/// by the sweep line is a strip. A strip keeps the lower boundary of the part triangulated so far
/// (its rim) as a chain of links from its left to its right edge. A new corner is joined to the rim
/// corners that it sees. The rim is convex downwards, so the visible corners are always at its
/// ends.
/// Source: S. Hertel, K. Mehlhorn, "Fast Triangulation of Simple Polygons" (1983).
#include "polygon/outline.h"

#include <algorithm>
#include <set>

namespace tessora::polygon {

namespace {

constexpr uint32_t k_none = 0xFFFFFFFFu;

class Sweep {
public:
    explicit Sweep(Outline& outline)
        : outline_(outline), order_(outline.size()), rank_(outline.size()),
          strip_of_left_(outline.size(), k_none), strip_of_right_(outline.size(), k_none),
          open_(LeftToRight{this}) {}

    bool run() {
        if (!sort_corners())
            return false;
        for (const uint32_t corner : order_)
            if (!visit(corner))
                return false;
        return open_.empty() && outline_.triangles.size() == 3 * (size_t{outline_.size()} - 2);
    }

private:
    /// Edges are identified by their start corner. Left edges run down, right edges run up.
    struct Strip {
        uint32_t left_edge;
        uint32_t right_edge;
        uint32_t front; ///< link at the left end of the rim
        uint32_t back;  ///< link at the right end
        uint32_t last;  ///< link of the corner visited last, the lowest of the rim
    };
    struct Link {
        uint32_t corner;
        uint32_t before;
        uint32_t after;
    };
    struct LeftToRight {
        using is_transparent = void;
        struct Corner {
            uint32_t id;
        };
        Sweep* sweep;
        bool operator()(uint32_t a, uint32_t b) const { return sweep->is_left_of(a, b); }
        bool operator()(uint32_t strip, Corner corner) const {
            return sweep->side(sweep->strips_[strip].left_edge, corner.id) > 0;
        }
        bool operator()(Corner corner, uint32_t strip) const {
            return sweep->side(sweep->strips_[strip].left_edge, corner.id) < 0;
        }
    };

    bool sort_corners();
    bool visit(uint32_t corner);
    bool start(uint32_t corner);
    bool split(uint32_t corner);
    bool merge(uint32_t corner);
    bool end(uint32_t corner);
    bool pass_left(uint32_t corner);
    bool pass_right(uint32_t corner);

    /// +1: the corner is to the right of a left edge, 0: on it.
    int side(uint32_t left_edge, uint32_t corner) {
        return outline_.turn(left_edge, outline_.next(left_edge), corner);
    }
    /// Compares at the height of the lower start point of the two edges.
    bool is_left_of(uint32_t a, uint32_t b) {
        const uint32_t edge_a = strips_[a].left_edge;
        const uint32_t edge_b = strips_[b].left_edge;
        if (rank_[edge_a] < rank_[edge_b])
            return side(edge_a, edge_b) > 0;
        return rank_[edge_b] < rank_[edge_a] && side(edge_b, edge_a) < 0;
    }

    uint32_t new_link(uint32_t corner) {
        links_.push_back(Link{corner, k_none, k_none});
        return static_cast<uint32_t>(links_.size() - 1);
    }
    void join(uint32_t before, uint32_t after) {
        links_[before].after = after;
        links_[after].before = before;
    }
    uint32_t new_strip(uint32_t left_edge, uint32_t right_edge);
    void add_front(Strip& strip, uint32_t link);
    void add_back(Strip& strip, uint32_t link);

    Outline& outline_;
    std::vector<uint32_t> order_; ///< corners from top to bottom
    std::vector<uint32_t> rank_;  ///< position of each corner in `order_`
    std::vector<Strip> strips_;
    std::vector<Link> links_;
    std::vector<uint32_t> strip_of_left_;  ///< strip bounded by each edge on its left
    std::vector<uint32_t> strip_of_right_; ///< strip bounded by each edge on its right
    std::set<uint32_t, LeftToRight> open_; ///< strips under the sweep line, left to right
};

/// Sorts by height, then left to right. Returns false if two corners coincide.
bool Sweep::sort_corners() {
    for (uint32_t i = 0; i < outline_.size(); ++i)
        order_[i] = i;
    const std::vector<Point2>& flat = outline_.flat;
    std::sort(order_.begin(), order_.end(), [&](uint32_t a, uint32_t b) {
        if (flat[a].y != flat[b].y)
            return flat[a].y > flat[b].y;
        return flat[a].x != flat[b].x ? flat[a].x < flat[b].x : a < b;
    });
    for (uint32_t i = 0; i < outline_.size(); ++i) {
        rank_[order_[i]] = i;
        if (i > 0 && flat[order_[i]] == flat[order_[i - 1]])
            return false;
    }
    return true;
}

bool Sweep::visit(uint32_t corner) {
    const uint32_t before = outline_.previous(corner);
    const uint32_t after = outline_.next(corner);
    const bool before_is_above = rank_[before] < rank_[corner];
    const bool after_is_above = rank_[after] < rank_[corner];
    if (before_is_above != after_is_above)
        return before_is_above ? pass_left(corner) : pass_right(corner);
    const int turn = outline_.turn(before, corner, after);
    if (turn == 0) // the edges overlap
        return false;
    if (before_is_above)
        return turn > 0 ? end(corner) : merge(corner);
    return turn > 0 ? start(corner) : split(corner);
}

uint32_t Sweep::new_strip(uint32_t left_edge, uint32_t right_edge) {
    const uint32_t strip = static_cast<uint32_t>(strips_.size());
    strips_.push_back(Strip{left_edge, right_edge, k_none, k_none, k_none});
    strip_of_left_[left_edge] = strip;
    strip_of_right_[right_edge] = strip;
    return strip;
}

/// Joins a corner to the left end of the rim and adds the triangles it sees from there.
void Sweep::add_front(Strip& strip, uint32_t link) {
    const uint32_t corner = links_[link].corner;
    uint32_t end = strip.front;
    while (links_[end].after != k_none) {
        const uint32_t second = links_[end].after;
        if (outline_.turn(corner, links_[second].corner, links_[end].corner) <= 0)
            break;
        outline_.emit(corner, links_[second].corner, links_[end].corner);
        end = second;
    }
    join(link, end);
    strip.front = link;
    if (links_[end].after == k_none)
        strip.back = end;
}

/// Joins a corner to the right end of the rim and adds the triangles it sees from there.
void Sweep::add_back(Strip& strip, uint32_t link) {
    const uint32_t corner = links_[link].corner;
    uint32_t end = strip.back;
    while (links_[end].before != k_none) {
        const uint32_t second = links_[end].before;
        if (outline_.turn(corner, links_[end].corner, links_[second].corner) <= 0)
            break;
        outline_.emit(corner, links_[end].corner, links_[second].corner);
        end = second;
    }
    join(end, link);
    strip.back = link;
    if (links_[end].before == k_none)
        strip.front = end;
}

bool Sweep::start(uint32_t corner) {
    const uint32_t strip = new_strip(corner, outline_.previous(corner));
    const uint32_t link = new_link(corner);
    strips_[strip].front = strips_[strip].back = strips_[strip].last = link;
    return open_.insert(strip).second;
}

bool Sweep::pass_left(uint32_t corner) {
    const uint32_t found = strip_of_left_[outline_.previous(corner)];
    if (found == k_none)
        return false;
    const uint32_t link = new_link(corner);
    Strip& strip = strips_[found];
    add_front(strip, link);
    strip.left_edge = corner;
    strip.last = link;
    strip_of_left_[corner] = found;
    return true;
}

bool Sweep::pass_right(uint32_t corner) {
    const uint32_t found = strip_of_right_[corner];
    if (found == k_none)
        return false;
    const uint32_t link = new_link(corner);
    Strip& strip = strips_[found];
    add_back(strip, link);
    strip.right_edge = outline_.previous(corner);
    strip.last = link;
    strip_of_right_[strip.right_edge] = found;
    return true;
}

/// Ends a strip: its lowest corner sees the entire rim.
bool Sweep::end(uint32_t corner) {
    const uint32_t found = strip_of_left_[outline_.previous(corner)];
    if (found == k_none || found != strip_of_right_[corner])
        return false;
    const Strip& strip = strips_[found];
    for (uint32_t link = strip.front; links_[link].after != k_none; link = links_[link].after) {
        const uint32_t a = links_[link].corner;
        const uint32_t b = links_[links_[link].after].corner;
        if (outline_.turn(corner, b, a) < 0)
            return false;
        outline_.emit(corner, b, a);
    }
    return open_.erase(found) == 1;
}

/// Splits a strip at a corner inside it, which sees the strip's lowest corner.
bool Sweep::split(uint32_t corner) {
    const auto above = open_.lower_bound(LeftToRight::Corner{corner});
    if (above == open_.begin())
        return false;
    const uint32_t found = *std::prev(above);
    const uint32_t right_edge = strips_[found].right_edge;
    if (outline_.turn(right_edge, outline_.next(right_edge), corner) <= 0)
        return false;
    const uint32_t apart = strips_[found].last;
    const uint32_t apart_again = new_link(links_[apart].corner);
    const uint32_t old_back = strips_[found].back;
    const uint32_t right = new_strip(corner, right_edge);
    if (links_[apart].after != k_none) {
        join(apart_again, links_[apart].after);
        links_[apart].after = k_none;
    }
    const uint32_t left_link = new_link(corner);
    const uint32_t right_link = new_link(corner);
    strips_[found].back = apart;
    strips_[found].right_edge = outline_.previous(corner);
    strip_of_right_[outline_.previous(corner)] = found;
    strips_[right].front = apart_again;
    strips_[right].back = old_back == apart ? apart_again : old_back;
    add_back(strips_[found], left_link);
    add_front(strips_[right], right_link);
    strips_[found].last = left_link;
    strips_[right].last = right_link;
    return open_.insert(right).second;
}

/// Merges two strips; the corner between them is the lowest of the common rim.
bool Sweep::merge(uint32_t corner) {
    const uint32_t left = strip_of_right_[corner];
    const uint32_t right = strip_of_left_[outline_.previous(corner)];
    if (left == k_none || right == k_none || left == right || open_.erase(right) != 1)
        return false;
    const uint32_t link = new_link(corner);
    const uint32_t helper = new_link(corner);
    add_back(strips_[left], link);
    add_front(strips_[right], helper);
    join(link, links_[helper].after);
    strips_[left].back = strips_[right].back;
    strips_[left].right_edge = strips_[right].right_edge;
    strips_[left].last = link;
    strip_of_right_[strips_[left].right_edge] = left;
    return true;
}

} // namespace

bool sweep_triangulate(Outline& outline) {
    outline.triangles.clear();
    return Sweep(outline).run();
}

} // namespace tessora::polygon
