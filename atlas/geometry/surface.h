/// The input mesh, checked and made manifold.
///
/// Whatever the caller's adjacency says, two half-edges are mates only if they name each other and
/// run between the same two vertices in opposite directions, and a triangle that names a vertex
/// twice has none. So every half-edge has one mate at most, and every set of triangles joined over
/// mates is an oriented manifold; nothing behind this file ever meets a non-manifold edge, however
/// many triangles use it.
///
/// Half-edge 3t+k runs from corner k to corner (k+1)%3 of triangle t; a corner has the
/// number of the half-edge that starts there. Lengths are in units of sqrt(mean triangle area).
#pragma once

#include "atlas/atlas.h"
#include "atlas/geometry/vec.h"

namespace tessora::atlas {

inline uint32_t next_corner(uint32_t h) { return h % 3 == 2 ? h - 2 : h + 1; }
inline uint32_t previous_corner(uint32_t h) { return h % 3 == 0 ? h + 2 : h - 1; }

/// A triangle's shape in its own plane, which distortion is measured against.
/// Corner 0 lies at the origin, corner 1 at (x1, 0), corner 2 at (x2, y2); x1 > 0, y2 > 0.
struct Frame {
    double x1, x2, y2;
    double area() const { return 0.5 * x1 * y2; }
};

struct Surface {
    uint32_t face_count = 0;
    uint32_t vertex_count = 0;
    std::vector<uint32_t> vertex;    ///< 3 per triangle
    std::vector<Vec3> position;      ///< per vertex
    std::vector<uint32_t> mate;      ///< 3 per triangle; k_none on a border
    std::vector<uint8_t> false_edge; ///< 3 per triangle; 1 only where there is a mate
    std::vector<Frame> frame;        ///< per triangle; tiny for degenerate ones
    std::vector<Vec3> normal;        ///< per triangle, from normal_of; empty once regions are made
    std::vector<uint8_t> degenerate; ///< 1 for triangles without measurable area
    double total_area = 0;
    double unit = 1; ///< a length of 1 in the mesh's own unit

    /// Length of a half-edge in space.
    double edge_length(uint32_t h) const {
        return length(position[vertex[next_corner(h)]] - position[vertex[h]]);
    }
    /// A triangle's unit normal; zero when degenerate.
    Vec3 normal_of(uint32_t t) const {
        const Vec3 a = position[vertex[3 * size_t(t)]];
        const Vec3 n =
            cross(position[vertex[3 * size_t(t) + 1]] - a, position[vertex[3 * size_t(t) + 2]] - a);
        return degenerate[t] ? Vec3{} : n * (1 / length(n));
    }
};

/// The frame of a triangle. Slivers are fattened: the height is at least a millionth of the longest
/// edge, which costs no stretch, since only shrinking does.
Frame frame_of(Vec3 a, Vec3 b, Vec3 c);

/// Checks the caller's arrays and builds the surface. On failure `surface` is unspecified.
Failure build_surface(const Mesh& mesh, Surface& surface, ParallelFor executor = nullptr);

/// Leaves of a surface of `mesh` only the triangles of `kept`, in that order; `number` gives the
/// place of each there. No mate of a kept triangle is dropped.
void restrict_surface(const Mesh& mesh, const std::vector<uint32_t>& kept,
                      const std::vector<uint32_t>& number, Surface& surface,
                      ParallelFor executor = nullptr);

} // namespace tessora::atlas
