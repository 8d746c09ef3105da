#include "atlas/charts/polygons.h"

#include "atlas/geometry/buckets.h"
#include "atlas/geometry/polygon.h"

namespace tessora::atlas {

Polygons::Polygons(const Surface& s, const Atoms& atoms) {
    if (atoms.count == s.face_count)
        return; // triangles only
    const Buckets faces(atoms.of_face, atoms.count);
    lead_.assign(s.face_count, k_none);
    slot_.assign(s.face_count, k_none);
    begin_.push_back(0);
    std::vector<uint8_t> traced(3 * size_t(s.face_count), 0);
    for (uint32_t a = 0; a < atoms.count; ++a) {
        const Faces polygon{faces.item.data() + faces.begin[a],
                            faces.item.data() + faces.begin[a + 1]};
        const size_t before = corner_triangles_.size();
        const bool convex_quad = polygon.end() - polygon.begin() > 1 && add(s, polygon, traced);
        if (corner_triangles_.size() == before)
            continue;
        const uint32_t lead = *polygon.begin();
        for (uint32_t t : polygon)
            lead_[t] = lead;
        slot_[lead] = uint32_t(begin_.size() - 1);
        begin_.push_back(uint32_t(corner_triangles_.size()));
        other_half_.push_back(convex_quad ? polygon.begin()[1] : k_none);
    }
}

/// Appends the corner triangles of one polygon. True if it is a convex quad. `traced` is per
/// half-edge, 0 for the polygon's.
bool Polygons::add(const Surface& s, Faces faces, std::vector<uint8_t>& traced) {
    bool convex_quad = false;
    Vec3 axis; // the area vector of all loops together
    for (uint32_t t : faces)
        axis = axis + s.normal[t] * s.frame[t].area();
    std::vector<uint32_t> loop;
    for (uint32_t t : faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
            if (s.false_edge[h] || traced[h])
                continue;
            loop.clear();
            uint32_t at = h;
            do {
                traced[at] = 1;
                loop.push_back(at);
                at = next_corner(at);
                while (s.false_edge[at])
                    at = next_corner(s.mate[at]);
            } while (at != h);
            const size_t left = add_loop(s, loop, axis);
            convex_quad = loop.size() == 4 && left == 4 && faces.end() - faces.begin() == 2;
        }
    return convex_quad;
}

/// Appends the corner triangles of one loop, given by its half-edges in order. Returns how many of
/// its corners turn left about `axis`.
size_t Polygons::add_loop(const Surface& s, const std::vector<uint32_t>& loop, Vec3 axis) {
    const size_t n = loop.size();
    std::vector<Vec3> corners;
    for (uint32_t h : loop)
        corners.push_back(s.position[s.vertex[h]]);
    size_t left = 0;
    for (size_t k = 0; k < n; ++k) {
        if (!(turn(corners, k, axis) > k_least_turn * dot(axis, axis)))
            continue;
        ++left;
        const size_t before = (k + n - 1) % n, after = (k + 1) % n;
        if (next_corner(loop[before]) == loop[k]) // one triangle alone has this corner
            continue;
        const Frame frame = frame_of(corners[before], corners[k], corners[after]);
        corner_triangles_.push_back({{loop[before], loop[k], loop[after]}, frame});
    }
    return left;
}

} // namespace tessora::atlas
