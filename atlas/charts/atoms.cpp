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

/// Groups of triangles that hang together over half-edges h with joined(h).
template <class Joined>
Components label_faces(const Surface& s, Joined joined) {
    std::vector<uint32_t> parent(s.face_count);
    for (uint32_t t = 0; t < s.face_count; ++t)
        parent[t] = t;
    for (uint32_t h = 0; h < 3 * s.face_count; ++h)
        if (joined(h))
            join(parent, h / 3, s.mate[h] / 3);
    Components found;
    found.of_face.assign(s.face_count, k_none);
    for (uint32_t t = 0; t < s.face_count; ++t) {
        const uint32_t root = find(parent, t);
        found.of_face[t] = root == t ? found.count++ : found.of_face[root];
    }
    return found;
}

void number_atoms(const Surface& s, Atoms& atoms) {
    const Components groups = label_faces(s, [&](uint32_t h) { return s.false_edge[h] != 0; });
    atoms.of_face = groups.of_face;
    atoms.count = groups.count;
}

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

std::vector<float> measure_hardness(const Surface& s) {
    // docs/atlas.md, "Hard surfaces", holds the measurements behind these.
    constexpr double k_flat_cosine = 0.9999619230641713;  // of 0.5 degrees: one flat piece
    constexpr double k_sharp_cosine = 0.8660254037844387; // of 30 degrees
    // Share of a piece's bending at sharp edges at which hardness begins, and where it is full.
    constexpr double k_soft_share = 0.2, k_hard_share = 0.6;
    const auto bends = [&](uint32_t h) {
        return s.mate[h] != k_none && !s.degenerate[h / 3] && !s.degenerate[s.mate[h] / 3];
    };
    const auto cosine = [&](uint32_t h) { return dot(s.normal[h / 3], s.normal[s.mate[h] / 3]); };
    const Components pieces = label_faces(s, [&](uint32_t h) {
        return s.mate[h] != k_none && (!bends(h) || cosine(h) > k_flat_cosine);
    });
    std::vector<double> all(pieces.count, 0.0), sharp(pieces.count, 0.0);
    std::vector<uint32_t> size(pieces.count, 0);
    for (uint32_t h = 0; h < 3 * s.face_count; ++h) {
        const uint32_t piece = pieces.of_face[h / 3];
        size[piece] += h % 3 == 0;
        if (!bends(h))
            continue;
        const double bend = s.edge_length(h) * std::sqrt(std::max(0.0, 1 - cosine(h)));
        all[piece] += bend;
        if (cosine(h) < k_sharp_cosine)
            sharp[piece] += bend;
    }
    std::vector<float> hardness(s.face_count);
    for (uint32_t t = 0; t < s.face_count; ++t) {
        const uint32_t piece = pieces.of_face[t];
        const double share = all[piece] > 0 ? sharp[piece] / all[piece] : 1.0;
        const double graded = (share - k_soft_share) / (k_hard_share - k_soft_share);
        // A triangle by itself is always flat: that says nothing about the surface.
        hardness[t] = size[piece] < 2 ? 0.0f : float(std::min(1.0, std::max(0.0, graded)));
    }
    return hardness;
}

double mean_hardness(const Surface& s, const std::vector<float>& hardness, const uint32_t* begin,
                     const uint32_t* end) {
    double area = 0, hard_area = 0;
    for (const uint32_t* t = begin; t != end; ++t) {
        const double a = s.frame[*t].area();
        area += a;
        hard_area += a * double(hardness[*t]);
    }
    return area > 0 ? hard_area / area : 0;
}

Components find_components(const Surface& s) {
    return label_faces(s, [&](uint32_t h) { return s.mate[h] != k_none; });
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
