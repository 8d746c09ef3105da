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
    std::vector<uint32_t> loop; // border half-edges in order
    std::vector<Vec3> corners;
    for (uint32_t a = 0; a < atoms.count; ++a) {
        const uint32_t first = faces.begin[a], last = faces.begin[a + 1];
        if (last - first < 2)
            continue;
        const size_t before = corner_triangles_.size();
        bool convex_quad = false;
        Vec3 axis; // the area vector of all loops together
        for (uint32_t i = first; i < last; ++i)
            axis = axis + s.normal[faces.item[i]] * s.frame[faces.item[i]].area();
        for (uint32_t i = first; i < last; ++i)
            for (uint32_t h = 3 * faces.item[i]; h < 3 * faces.item[i] + 3; ++h) {
                if (s.false_edge[h] || traced[h])
                    continue;
                loop.clear();
                corners.clear();
                uint32_t at = h;
                do {
                    traced[at] = 1;
                    loop.push_back(at);
                    corners.push_back(s.position[s.vertex[at]]);
                    at = next_corner(at);
                    while (s.false_edge[at])
                        at = next_corner(s.mate[at]);
                } while (at != h);
                const size_t n = loop.size();
                size_t left = 0;
                for (size_t k = 0; k < n; ++k) {
                    if (!(turn(corners, k, axis) > k_least_turn * dot(axis, axis)))
                        continue;
                    ++left;
                    const uint32_t previous = loop[(k + n - 1) % n], next = loop[(k + 1) % n];
                    if (next_corner(previous) == loop[k]) // one triangle alone has this corner
                        continue;
                    const Frame frame =
                        frame_of(corners[(k + n - 1) % n], corners[k], corners[(k + 1) % n]);
                    corner_triangles_.push_back({{previous, loop[k], next}, frame});
                }
                convex_quad = n == 4 && left == 4 && last - first == 2;
            }
        if (corner_triangles_.size() == before)
            continue;
        const uint32_t lead = faces.item[first];
        for (uint32_t i = first; i < last; ++i)
            lead_[faces.item[i]] = lead;
        slot_[lead] = uint32_t(begin_.size() - 1);
        begin_.push_back(uint32_t(corner_triangles_.size()));
        other_half_.push_back(convex_quad ? faces.item[first + 1] : k_none);
    }
}

} // namespace tessora::atlas
