/// Improvement of a triangulation by flipping diagonals.
///
/// Two adjacent triangles form a quadrilateral. Its diagonal is flipped if that increases the
/// smallest angle (the Delaunay criterion), or if it joins vertices that are already joined
/// elsewhere. If no single flip removes such a diagonal, a patch of triangles around it is
/// retriangulated optimally.
/// Sources: C. L. Lawson, "Software for C1 Surface Interpolation" (1977), for flips; G. T.
///         Klincsek, "Minimal Triangulations of Polygonal Domains" (1980), for the optimal
///         triangulation.
#include "polygon/outline.h"
#include "polygon/pair_set.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tessora::polygon {

namespace {

constexpr uint32_t k_none = 0xFFFFFFFFu;
/// Corners of the largest patch that is retriangulated; cost is cubic in this number.
constexpr uint32_t k_patch_corners = 48;
/// Relative differences below this are ignored, so that rounding does not decide between equal
/// diagonals of regular shapes.
constexpr double k_noise = 1e-5;

class Diagonals {
public:
    Diagonals(Outline& outline, const PairSet& taken)
        : outline_(outline), taken_(taken), corners_(outline.triangles),
          across_(outline.triangles.size(), k_none) {}

    bool run() {
        if (!find_neighbours() || !is_connected())
            return false;
        exchange_all();
        const uint64_t limit = outline_.steps + 1000 * uint64_t{outline_.size()} + 100000;
        for (uint32_t side = 0; side < across_.size() && outline_.steps < limit; ++side)
            if (is_diagonal(side) && is_taken(side))
                remake_patch(side);
        return true;
    }

private:
    // Side 3 t + k is the edge of triangle t from its corner k to the next.
    static uint32_t next_side(uint32_t side) { return side % 3 == 2 ? side - 2 : side + 1; }
    static uint32_t last_side(uint32_t side) { return side % 3 == 0 ? side + 2 : side - 1; }
    uint32_t from(uint32_t side) const { return corners_[side]; }
    uint32_t to(uint32_t side) const { return corners_[next_side(side)]; }
    uint32_t tip(uint32_t side) const { return corners_[last_side(side)]; }
    bool is_diagonal(uint32_t side) const {
        return across_[side] != k_none && side < across_[side];
    }
    bool joined(uint32_t a, uint32_t b) const {
        const uint32_t id_a = outline_.ids[a];
        const uint32_t id_b = outline_.ids[b];
        return id_a == id_b || taken_.contains(id_a, id_b);
    }
    bool is_taken(uint32_t side) const { return joined(from(side), to(side)); }

    bool find_neighbours();
    bool is_connected() const;
    void link(uint32_t a, uint32_t b);
    void exchange_all();
    bool wants_exchange(uint32_t side);
    void exchange(uint32_t side);
    double angle_excess(uint32_t side) const;

    struct Patch {
        std::vector<uint32_t> triangles;
        std::vector<uint32_t> outer; ///< sides on the patch's boundary, in cyclic order
    };
    Patch gather(uint32_t side, uint32_t corner_count) const;
    void remake_patch(uint32_t side);
    static std::vector<uint32_t> trace(const std::vector<uint32_t>& choice, uint32_t n);
    bool solve(const Patch& patch, std::vector<uint32_t>& best);
    void replace(const Patch& patch, const std::vector<uint32_t>& best);

    Outline& outline_;
    const PairSet& taken_;
    std::vector<uint32_t>& corners_;
    std::vector<uint32_t> across_; ///< per side: the same edge's side in the adjacent triangle
};

void Diagonals::link(uint32_t a, uint32_t b) {
    if (a != k_none)
        across_[a] = b;
    if (b != k_none)
        across_[b] = a;
}

/// Pairs up the two sides of every diagonal by sorting. Returns false unless every edge of the
/// outline occurs once and all other sides form oppositely directed pairs.
bool Diagonals::find_neighbours() {
    struct Entry {
        uint32_t low;
        uint32_t high;
        uint32_t side;
        bool is_same_edge(const Entry& other) const {
            return low == other.low && high == other.high;
        }
    };
    std::vector<Entry> entries;
    entries.reserve(corners_.size());
    for (uint32_t side = 0; side < corners_.size(); ++side) {
        const uint32_t a = from(side);
        const uint32_t b = to(side);
        entries.push_back(Entry{std::min(a, b), std::max(a, b), side});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.low != b.low)
            return a.low < b.low;
        return a.high != b.high ? a.high < b.high : a.side < b.side;
    });
    for (size_t i = 0; i < entries.size(); ++i) {
        const Entry& here = entries[i];
        if (i + 1 == entries.size() || !here.is_same_edge(entries[i + 1])) {
            if (to(here.side) != outline_.next(from(here.side)))
                return false;
            continue;
        }
        const Entry& other = entries[++i];
        if (from(here.side) != to(other.side) ||
            (i + 1 < entries.size() && here.is_same_edge(entries[i + 1])))
            return false;
        link(here.side, other.side);
    }
    return true;
}

/// Whether the triangles form one connected piece.
bool Diagonals::is_connected() const {
    std::vector<uint8_t> is_seen(corners_.size() / 3, 0);
    std::vector<uint32_t> open = {0};
    is_seen[0] = 1;
    size_t seen = 0;
    while (!open.empty()) {
        const uint32_t triangle = open.back();
        open.pop_back();
        seen += 1;
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t beyond = across_[3 * triangle + k];
            if (beyond != k_none && is_seen[beyond / 3] == 0) {
                is_seen[beyond / 3] = 1;
                open.push_back(beyond / 3);
            }
        }
    }
    return seen == is_seen.size();
}

/// Scaled sine of the sum of the two angles opposite the diagonal: negative if the sum exceeds 180
/// degrees, in which case a flip improves the angles. Values within rounding noise become zero.
double Diagonals::angle_excess(uint32_t side) const {
    const Vector& a = outline_.space[from(side)];
    const Vector& b = outline_.space[to(side)];
    const Vector& c = outline_.space[tip(side)];
    const Vector& d = outline_.space[tip(across_[side])];
    const double sine_c = cross(a - c, b - c).length();
    const double cosine_c = dot(a - c, b - c);
    const double sine_d = cross(a - d, b - d).length();
    const double cosine_d = dot(a - d, b - d);
    const double size =
        ((a - c).length() * (b - c).length()) * ((a - d).length() * (b - d).length());
    const double excess = sine_c * cosine_d + cosine_c * sine_d;
    return std::fabs(excess) <= k_noise * size ? 0.0 : excess;
}

bool Diagonals::wants_exchange(uint32_t side) {
    const uint32_t c = tip(side);
    const uint32_t d = tip(across_[side]);
    const bool is_bad = is_taken(side);
    const bool would_be_bad = joined(c, d);
    if (is_bad == would_be_bad ? !(angle_excess(side) < 0.0) : would_be_bad)
        return false;
    return outline_.turn(c, from(side), d) > 0 && outline_.turn(d, to(side), c) > 0;
}

/// Flips a diagonal: triangles (a, b, c) and (b, a, d) become (d, c, a) and (c, d, b).
void Diagonals::exchange(uint32_t side) {
    const uint32_t other = across_[side];
    const uint32_t a = from(side);
    const uint32_t b = to(side);
    const uint32_t c = tip(side);
    const uint32_t d = tip(other);
    const uint32_t bc = across_[next_side(side)];
    const uint32_t ca = across_[last_side(side)];
    const uint32_t ad = across_[next_side(other)];
    const uint32_t db = across_[last_side(other)];
    corners_[side] = d;
    corners_[next_side(side)] = c;
    corners_[last_side(side)] = a;
    corners_[other] = c;
    corners_[next_side(other)] = d;
    corners_[last_side(other)] = b;
    link(side, other);
    across_[next_side(side)] = across_[last_side(side)] = k_none;
    across_[next_side(other)] = across_[last_side(other)] = k_none;
    link(next_side(side), ca);
    link(last_side(side), ad);
    link(next_side(other), db);
    link(last_side(other), bc);
}

/// Flips diagonals from a work list; each flip adds the quadrilateral's four sides to it. The step
/// limit prevents endless flips between corners that are not coplanar.
void Diagonals::exchange_all() {
    std::vector<uint32_t> pending;
    for (uint32_t side = static_cast<uint32_t>(across_.size()); side-- > 0;)
        if (is_diagonal(side))
            pending.push_back(side);
    size_t limit = 12 * size_t{outline_.size()} + 64;
    while (!pending.empty() && limit > 0) {
        const uint32_t side = pending.back();
        pending.pop_back();
        outline_.steps += 1;
        if (across_[side] == k_none || !wants_exchange(side))
            continue;
        exchange(side);
        limit -= 1;
        const uint32_t other = across_[side];
        for (const uint32_t outer :
             {next_side(side), last_side(side), next_side(other), last_side(other)})
            if (across_[outer] != k_none)
                pending.push_back(outer);
    }
}

/// Collects triangles around a diagonal, breadth first, until the patch has `corner_count` corners.
Diagonals::Patch Diagonals::gather(uint32_t side, uint32_t corner_count) const {
    Patch patch;
    std::vector<uint32_t>& triangles = patch.triangles;
    triangles = {side / 3, across_[side] / 3};
    const auto has = [&](uint32_t triangle) {
        return std::find(triangles.begin(), triangles.end(), triangle) != triangles.end();
    };
    for (size_t i = 0; i < triangles.size(); ++i)
        for (uint32_t k = 0; k < 3 && triangles.size() + 2 < corner_count; ++k) {
            const uint32_t beyond = across_[3 * triangles[i] + k];
            if (beyond != k_none && !has(beyond / 3))
                triangles.push_back(beyond / 3);
        }
    // Walks around the boundary: from a side's end, turns through the patch to the next outer side.
    const auto is_outer = [&](uint32_t s) { return across_[s] == k_none || !has(across_[s] / 3); };
    uint32_t first = 3 * triangles[0];
    while (!is_outer(first))
        first = next_side(across_[first]);
    uint32_t here = first;
    do {
        patch.outer.push_back(here);
        here = next_side(here);
        while (!is_outer(here))
            here = next_side(across_[here]);
    } while (here != first);
    return patch;
}

/// Tries growing patches until one has a triangulation without joined diagonals.
void Diagonals::remake_patch(uint32_t side) {
    for (uint32_t size = 6;; size *= 2) {
        const Patch patch = gather(side, std::min(size, k_patch_corners));
        std::vector<uint32_t> best;
        if (solve(patch, best)) {
            replace(patch, best);
            return;
        }
        if (size >= k_patch_corners || patch.triangles.size() + 2 < size)
            return;
    }
}

/// Reconstructs the triangles from the third corners chosen for each stretch of the boundary.
std::vector<uint32_t> Diagonals::trace(const std::vector<uint32_t>& choice, uint32_t n) {
    std::vector<uint32_t> triangles;
    std::vector<std::pair<uint32_t, uint32_t>> open = {{0, n - 1}};
    while (!open.empty()) {
        const auto [i, j] = open.back();
        open.pop_back();
        if (j - i < 2)
            continue;
        const uint32_t k = choice[size_t{i} * n + j];
        triangles.insert(triangles.end(), {i, k, j});
        open.emplace_back(i, k);
        open.emplace_back(k, j);
    }
    return triangles;
}

/// Optimal triangulation of a patch: avoids diagonals that are joined elsewhere, then minimizes the
/// number of degenerate triangles, then the total length of diagonals. Dynamic programming over
/// stretches of the boundary: stretch i..j is closed by diagonal ij, and its third corner k is
/// chosen. Returns false if every triangulation uses a joined diagonal.
bool Diagonals::solve(const Patch& patch, std::vector<uint32_t>& best) {
    const uint32_t n = static_cast<uint32_t>(patch.outer.size());
    const auto corner = [&](uint32_t i) { return from(patch.outer[i]); };
    const double k_impossible = std::numeric_limits<double>::infinity();
    double scale = 0.0;
    for (uint32_t i = 0; i < n; ++i)
        scale += (outline_.space[corner(i)] - outline_.space[corner((i + 1) % n)]).length();
    std::vector<double> cost(size_t{n} * n, 0.0);
    std::vector<uint32_t> choice(size_t{n} * n, k_none);
    for (uint32_t width = 2; width < n; ++width)
        for (uint32_t i = 0; i + width < n; ++i) {
            const uint32_t j = i + width;
            double& best_cost = cost[size_t{i} * n + j];
            best_cost = k_impossible;
            const bool is_rim = i == 0 && j == n - 1;
            if (!is_rim && joined(corner(i), corner(j)))
                continue;
            const double own =
                is_rim ? 0.0 : (outline_.space[corner(i)] - outline_.space[corner(j)]).length();
            for (uint32_t k = i + 1; k < j; ++k) {
                const int turn = outline_.turn(corner(i), corner(k), corner(j));
                const double flat = turn == 0 ? 1e3 * scale : 0.0;
                const double total = cost[size_t{i} * n + k] + cost[size_t{k} * n + j] + own + flat;
                if (turn >= 0 && total < best_cost) {
                    best_cost = total;
                    choice[size_t{i} * n + j] = k;
                }
            }
        }
    if (!(cost[n - 1] < k_impossible))
        return false;
    best = trace(choice, n);
    return true;
}

/// Replaces the patch's triangles by new ones given as boundary positions.
void Diagonals::replace(const Patch& patch, const std::vector<uint32_t>& best) {
    const uint32_t n = static_cast<uint32_t>(patch.outer.size());
    std::vector<uint32_t> ring(n);
    std::vector<uint32_t> beyond(n);
    for (uint32_t i = 0; i < n; ++i) {
        ring[i] = from(patch.outer[i]);
        beyond[i] = across_[patch.outer[i]];
    }
    std::vector<uint32_t> inner(size_t{n} * n, k_none);
    for (size_t i = 0; i < best.size(); ++i) {
        const uint32_t side = 3 * patch.triangles[i / 3] + static_cast<uint32_t>(i % 3);
        corners_[side] = ring[best[i]];
        across_[side] = k_none;
    }
    for (size_t i = 0; i < best.size(); ++i) {
        const uint32_t side = 3 * patch.triangles[i / 3] + static_cast<uint32_t>(i % 3);
        const uint32_t a = best[i];
        const uint32_t b = best[i % 3 == 2 ? i - 2 : i + 1];
        if (b == (a + 1) % n)
            link(side, beyond[a]);
        else if (inner[size_t{b} * n + a] != k_none)
            link(side, inner[size_t{b} * n + a]);
        else
            inner[size_t{a} * n + b] = side;
    }
}

} // namespace

bool improve_diagonals(Outline& outline, const PairSet& taken) {
    return Diagonals(outline, taken).run();
}

} // namespace tessora::polygon
