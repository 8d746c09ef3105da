/// Moving UVs: shells, moving shells together to sew them, normalization, projection.
#pragma once

#include "host/mesh/mesh.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace host {

inline constexpr std::uint32_t k_no_shell = 0xFFFFFFFFu;

/// The shells of a UV set: polygons that are connected by UVs they share.
struct UvShells {
    std::vector<std::uint32_t> of_uv;      ///< k_no_shell: no polygon has the UV
    std::vector<std::uint32_t> of_polygon; ///< k_no_shell: no corner has a UV
    std::uint32_t count = 0;               ///< shells are numbered by their first polygons
};
MHOST_EXPORT UvShells uv_shells(const Mesh& mesh, std::uint32_t set);

/// Sews along edges as sew_uvs does, after moving the shell with fewer polygons to the other one:
/// it is moved, turned and scaled so that the edges between the two meet as well as they can (least
/// squares), and turned over if it is wound against the other. Edges of a shell that would have to
/// move but has more than `most_polygons` are not sewn. Returns the number of UVs that were merged.
/// Source: the closed form of the planar similarity between two point sets, as in Horn,
/// "Closed-form solution of absolute orientation using unit quaternions", 1987, section 2.
std::uint32_t
move_and_sew_uvs(Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& edges,
                 std::uint32_t most_polygons = std::numeric_limits<std::uint32_t>::max());

struct UvNormalization {
    bool each_polygon = false; ///< every polygon by itself, cut free from others; else all together
    bool keeps_aspect = true;  ///< one scale for both directions
    bool is_centred = false;   ///< in the unit square, if the aspect is kept; else at its origin
    enum Direction { both, u, v } direction = both;
};
/// Moves and scales the UVs of polygons so that they fill the unit square. Ids that are no polygons
/// are skipped.
void normalize_uvs(Mesh& mesh, std::uint32_t set, const std::vector<std::uint32_t>& polygons,
                   const UvNormalization& how);

/// Gives every vertex one UV: its place, seen along the shortest side of the mesh's box, which
/// fills the unit square in its longer direction.
void project_uvs(Mesh& mesh, std::uint32_t set);

} // namespace host
