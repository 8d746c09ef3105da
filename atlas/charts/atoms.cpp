#include "atlas/charts/clusters.h"
#include "atlas/geometry/box.h"
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
    atoms = label_faces(s, [&](uint32_t h) { return s.false_edge[h] != 0; });
}

constexpr double k_flat_cosine = 0.9999619230641713; // of 0.5 degrees: one flat piece

/// Whether an edge has two triangles with area.
bool has_bend(const Surface& s, uint32_t h) {
    return s.mate[h] != k_none && !s.degenerate[h / 3] && !s.degenerate[s.mate[h] / 3];
}

double cosine_at(const Surface& s, uint32_t h) {
    return dot(s.normal[h / 3], s.normal[s.mate[h] / 3]);
}

bool is_flat(const Surface& s, uint32_t h) {
    return s.mate[h] != k_none && (!has_bend(s, h) || cosine_at(s, h) > k_flat_cosine);
}

/// The area of the convex hull of the triangles, seen along their mean normal.
double hull_area(const Surface& s, const uint32_t* begin, const uint32_t* end, Vec3 normal) {
    const Vec3 n = normal * (1 / length(normal));
    const Vec3 u = any_perpendicular(n), v = cross(n, u);
    std::vector<Vec2> points;
    for (const uint32_t* t = begin; t != end; ++t)
        for (uint32_t c = 3 * *t; c < 3 * *t + 3; ++c) {
            const Vec3 p = s.position[s.vertex[c]];
            points.push_back({dot(p, u), dot(p, v)});
        }
    return min_area_box(points).hull;
}

/// Which flat pieces are planes that should stay whole: hard ones that hardly bend and fill their
/// convex hull.
std::vector<uint8_t> choose_planes(const Surface& s, const Components& pieces,
                                   const std::vector<float>& hardness) {
    constexpr float k_hard = 0.5f;
    constexpr double k_least_share = 3e-4; // of the area: some 60 texels in 512 x 512
    constexpr double k_least_fill = 0.5;   // a ring, or a strip along a tube, packs better in parts
    const Buckets faces(pieces.of_face, pieces.count);
    std::vector<uint8_t> chosen(pieces.count, 0);
    for (uint32_t p = 0; p < pieces.count; ++p) {
        const uint32_t* const begin = faces.item.data() + faces.begin[p];
        const uint32_t* const end = faces.item.data() + faces.begin[p + 1];
        if (end - begin < 2 || hardness[*begin] < k_hard)
            continue;
        double area = 0;
        Vec3 normal;
        for (const uint32_t* t = begin; t != end; ++t) {
            area += s.frame[*t].area();
            normal = normal + s.normal[*t] * s.frame[*t].area();
        }
        chosen[p] = area >= k_least_share * s.total_area &&
                    length(normal) >= k_flat_cosine * area &&
                    area >= k_least_fill * hull_area(s, begin, end, normal);
    }
    return chosen;
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

Components find_flat_pieces(const Surface& s) {
    return label_faces(s, [&](uint32_t h) { return is_flat(s, h); });
}

std::vector<float> measure_hardness(const Surface& s, const Components& pieces) {
    // docs/atlas.md, "Hard surfaces", holds the measurements behind these.
    constexpr double k_sharp_cosine = 0.8660254037844387; // of 30 degrees
    // Share of a piece's bending at sharp edges at which hardness begins, and where it is full.
    constexpr double k_soft_share = 0.2, k_hard_share = 0.6;
    std::vector<double> all(pieces.count, 0.0), sharp(pieces.count, 0.0);
    std::vector<uint32_t> size(pieces.count, 0);
    for (uint32_t h = 0; h < 3 * s.face_count; ++h) {
        const uint32_t piece = pieces.of_face[h / 3];
        size[piece] += h % 3 == 0;
        if (!has_bend(s, h))
            continue;
        const double cosine = cosine_at(s, h);
        const double bend = s.edge_length(h) * std::sqrt(std::max(0.0, 1 - cosine));
        all[piece] += bend;
        if (cosine < k_sharp_cosine)
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

Components find_planes(const Surface& s, const Atoms& atoms, const Components& pieces,
                       const std::vector<float>& hardness) {
    const std::vector<uint8_t> is_plane = choose_planes(s, pieces, hardness);
    if (std::find(is_plane.begin(), is_plane.end(), 1) == is_plane.end())
        return atoms;
    // Polygons that are not in one piece stay apart: they would join pieces that bend.
    std::vector<uint32_t> plane_of_atom(atoms.count, k_none);
    std::vector<uint8_t> torn(atoms.count, 0);
    for (uint32_t t = 0; t < s.face_count; ++t) {
        const uint32_t atom = atoms.of_face[t], piece = pieces.of_face[t];
        if (plane_of_atom[atom] != k_none && plane_of_atom[atom] != piece)
            torn[atom] = 1;
        plane_of_atom[atom] = piece;
    }
    return label_faces(s, [&](uint32_t h) {
        if (s.false_edge[h] != 0 || s.mate[h] == k_none)
            return s.mate[h] != k_none;
        const uint32_t a = atoms.of_face[h / 3], b = atoms.of_face[s.mate[h] / 3];
        return plane_of_atom[a] == plane_of_atom[b] && is_plane[plane_of_atom[a]] && !torn[a] &&
               !torn[b] && is_flat(s, h);
    });
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
