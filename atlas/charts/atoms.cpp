#include "atlas/charts/clusters.h"
#include "atlas/geometry/buckets.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

uint32_t find(std::vector<uint32_t>& parent, uint32_t x) {
    while (parent[x] != x)
        x = parent[x] = parent[parent[x]];
    return x;
}

/// Union-find: joins the sets of a and b; the smaller root becomes the root of both.
void join(std::vector<uint32_t>& parent, uint32_t a, uint32_t b) {
    a = find(parent, a);
    b = find(parent, b);
    if (a < b)
        parent[b] = a;
    else
        parent[a] = b;
}

void number_atoms(const Surface& s, Atoms& atoms) {
    std::vector<uint32_t> parent(s.face_count);
    for (uint32_t t = 0; t < s.face_count; ++t)
        parent[t] = t;
    for (uint32_t h = 0; h < 3 * s.face_count; ++h)
        if (s.false_edge[h])
            join(parent, h / 3, s.mate[h] / 3);
    atoms.count = 0;
    atoms.of_face.assign(s.face_count, k_none);
    for (uint32_t t = 0; t < s.face_count; ++t) {
        const uint32_t root = find(parent, t);
        if (root == t)
            atoms.of_face[t] = atoms.count++;
        else
            atoms.of_face[t] = atoms.of_face[root];
    }
}

/// Checks whether triangles joined across their false edges can be a polygon, possibly with holes:
/// at least one border loop, no handle, no triangle with two corners glued together.
class PolygonTest {
public:
    explicit PolygonTest(const Surface& s) : s_(s), seen_(3 * size_t(s.face_count), 0) {
        class_.resize(3 * size_t(s.face_count));
    }
    bool can_be_polygon(const std::vector<uint32_t>& faces) {
        int nodes = 0, borders = 0, loops = 0, inner = 0;
        for (uint32_t t : faces)
            for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
                if (!seen_[c]) {
                    mark_corner_fan(c);
                    ++nodes;
                }
                ++(s_.false_edge[c] ? inner : borders);
            }
        for (uint32_t t : faces)
            for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
                if (class_[c] == class_[next_corner(c)])
                    return false;
                if (!s_.false_edge[c] && seen_[c] == 1) {
                    ++loops;
                    trace(c);
                }
            }
        const int characteristic = nodes - (borders + inner / 2) + int(faces.size());
        return loops > 0 && characteristic == 2 - loops;
    }

private:
    /// Assigns the class c to all corners that meet c at its vertex across false edges.
    void mark_corner_fan(uint32_t c) {
        uint32_t first = c; // the clockwise end of the fan; c itself if the fan is closed
        while (s_.false_edge[first]) {
            first = next_corner(s_.mate[first]);
            if (first == c)
                break;
        }
        uint32_t at = first;
        do {
            seen_[at] = 1;
            class_[at] = c;
            const uint32_t in = previous_corner(at);
            if (!s_.false_edge[in])
                break;
            at = s_.mate[in];
        } while (at != first);
    }
    /// Marks the half-edges of h's border loop.
    void trace(uint32_t h) {
        for (uint32_t at = h; seen_[at] == 1;) {
            seen_[at] = 2;
            at = next_corner(at);
            while (s_.false_edge[at])
                at = next_corner(s_.mate[at]);
        }
    }

    const Surface& s_;
    std::vector<uint8_t> seen_; ///< 1: the corner has a class; 2: its half-edge was traced too
    std::vector<uint32_t> class_;
};

} // namespace

std::vector<uint8_t> find_hard_faces(const Surface& s) {
    constexpr double k_sharp_cosine =
        0.8660254037844387;                // of 30 degrees: sharper edges count as sharp
    constexpr double k_sharp_share = 0.66; // docs/atlas.md, "Hard surfaces"
    std::vector<uint32_t> parent(s.face_count);
    for (uint32_t t = 0; t < s.face_count; ++t)
        parent[t] = t;
    for (uint32_t h = 0; h < 3 * s.face_count; ++h)
        if (s.mate[h] != k_none && s.mate[h] > h)
            join(parent, h / 3, s.mate[h] / 3);
    std::vector<double> all(s.face_count, 0.0), sharp(s.face_count, 0.0);
    for (uint32_t h = 0; h < 3 * s.face_count; ++h) {
        const uint32_t t = h / 3, other = s.mate[h] / 3;
        if (s.mate[h] == k_none || s.mate[h] < h || s.degenerate[t] || s.degenerate[other])
            continue;
        const double cosine = dot(s.normal[t], s.normal[other]);
        const double bend = s.edge_length(h) * std::sqrt(std::max(0.0, 1 - cosine));
        const uint32_t component = find(parent, t);
        all[component] += bend;
        if (cosine < k_sharp_cosine)
            sharp[component] += bend;
    }
    std::vector<uint8_t> hard(s.face_count);
    for (uint32_t t = 0; t < s.face_count; ++t) {
        const uint32_t component = find(parent, t);
        hard[t] = sharp[component] > k_sharp_share * all[component];
    }
    return hard;
}

Atoms build_atoms(Surface& s) {
    Atoms atoms;
    number_atoms(s, atoms);
    if (atoms.count == s.face_count)
        return atoms;
    const Buckets faces(atoms.of_face, atoms.count);
    PolygonTest test(s);
    bool changed = false;
    for (uint32_t a = 0; a < atoms.count; ++a) {
        if (faces.begin[a + 1] - faces.begin[a] < 2)
            continue;
        const std::vector<uint32_t> group(faces.item.begin() + faces.begin[a],
                                          faces.item.begin() + faces.begin[a + 1]);
        if (test.can_be_polygon(group))
            continue;
        changed = true;
        for (uint32_t t : group)
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
                s.false_edge[h] = 0;
    }
    if (changed)
        number_atoms(s, atoms);
    return atoms;
}

} // namespace tessora::atlas
