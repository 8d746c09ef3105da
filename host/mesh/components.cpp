#include "host/mesh/components.h"

#include <algorithm>
#include <numeric>

namespace host {
namespace {

/// Calls visit(part) for every part of a kind that a corner belongs to. The edges of a corner are
/// the two of its polygon that meet there.
template <class Visit>
void visit_parts(const Mesh& mesh, std::uint32_t set, MeshPart kind, std::uint32_t corner,
                 Visit visit) {
    const Connectivity& all = mesh.connectivity();
    const std::uint32_t polygon = all.corner_polygon(corner);
    if (kind == MeshPart::vertex)
        visit(all.corner_vertex(corner));
    if (kind == MeshPart::face)
        visit(polygon);
    if (kind == MeshPart::uv && set != k_no_uv_set) {
        const std::int32_t uv = mesh.uv_set(set).corner_uvs[corner];
        if (uv >= 0)
            visit(static_cast<std::uint32_t>(uv));
    }
    if (kind == MeshPart::edge) {
        const std::uint32_t at = corner - all.first_corner(polygon),
                            count = all.corners_of(polygon);
        visit(all.polygon_edges(polygon)[at]);
        visit(all.polygon_edges(polygon)[(at + count - 1) % count]);
    }
}

/// Marks the corners that belong to the parts. An edge has the four corners at its ends.
std::vector<bool> marked_corners(const Mesh& mesh, std::uint32_t set, MeshPart kind,
                                 const std::vector<std::uint32_t>& ids) {
    std::vector<bool> is_given(component_count(mesh, kind, set));
    for (const std::uint32_t id : ids)
        if (id < is_given.size())
            is_given[id] = true;
    const Connectivity& all = mesh.connectivity();
    std::vector<bool> is_marked(all.corner_count());
    for (std::uint32_t polygon = 0; polygon < all.polygon_count(); ++polygon) {
        const std::uint32_t first = all.first_corner(polygon), count = all.corners_of(polygon);
        for (std::uint32_t i = 0; i < count; ++i) {
            if (kind == MeshPart::edge) {
                if (is_given[all.polygon_edges(polygon)[i]])
                    is_marked[first + i] = is_marked[first + (i + 1) % count] = true;
                continue;
            }
            visit_parts(mesh, set, kind, first + i, [&](std::uint32_t part) {
                if (is_given[part])
                    is_marked[first + i] = true;
            });
        }
    }
    return is_marked;
}

} // namespace

std::uint32_t component_count(const Mesh& mesh, MeshPart kind, std::uint32_t set) {
    switch (kind) {
    case MeshPart::vertex:
        return mesh.connectivity().vertex_count();
    case MeshPart::edge:
        return mesh.connectivity().edge_count();
    case MeshPart::face:
        return mesh.connectivity().polygon_count();
    case MeshPart::uv:
        return set == k_no_uv_set ? 0 : static_cast<std::uint32_t>(mesh.uv_set(set).u.size());
    }
    return 0;
}

std::vector<std::uint32_t> all_components(const Mesh& mesh, MeshPart kind, std::uint32_t set) {
    std::vector<std::uint32_t> ids(component_count(mesh, kind, set));
    std::iota(ids.begin(), ids.end(), 0u);
    return ids;
}

std::vector<std::uint32_t> converted_components(const Mesh& mesh, std::uint32_t set, MeshPart from,
                                                const std::vector<std::uint32_t>& ids, MeshPart to,
                                                bool is_internal) {
    if (from == to) {
        std::vector<std::uint32_t> same = ids;
        const std::uint32_t count = component_count(mesh, to, set);
        same.erase(
            std::remove_if(same.begin(), same.end(), [&](std::uint32_t id) { return id >= count; }),
            same.end());
        std::sort(same.begin(), same.end());
        same.erase(std::unique(same.begin(), same.end()), same.end());
        return same;
    }
    const std::vector<bool> is_marked = marked_corners(mesh, set, from, ids);
    // Per part: one of its corners is marked; one of them is not.
    std::vector<bool> is_touched(component_count(mesh, to, set)), is_partial(is_touched.size());
    const Connectivity& all = mesh.connectivity();
    for (std::uint32_t polygon = 0; polygon < all.polygon_count(); ++polygon) {
        const std::uint32_t first = all.first_corner(polygon), count = all.corners_of(polygon);
        for (std::uint32_t i = 0; i < count; ++i)
            visit_parts(mesh, set, to, first + i, [&](std::uint32_t part) {
                (is_marked[first + i] ? is_touched : is_partial)[part] = true;
            });
    }
    std::vector<std::uint32_t> found;
    for (std::uint32_t part = 0; part < is_touched.size(); ++part)
        if (is_touched[part] && !(is_internal && is_partial[part]))
            found.push_back(part);
    return found;
}

} // namespace host
