/// Seams of a mesh, found independently of the plug-in.
#pragma once

#include "host/mesh/mesh.h"

#include <set>

namespace plugin_in_host {

using Edges = std::set<uint32_t>;

/// Edges whose two faces do not share the UVs at both ends.
inline Edges seams_of(const host::Mesh& mesh) {
    const host::Connectivity& faces = mesh.connectivity();
    const host::UvSet& set = mesh.uv_set(uint32_t(mesh.find_uv_set("map1")));
    const auto uv_at = [&](uint32_t polygon, uint32_t vertex) {
        for (uint32_t i = 0; i < faces.corners_of(polygon); ++i)
            if (faces.polygon_vertices(polygon)[i] == vertex)
                return set.corner_uvs[faces.first_corner(polygon) + i];
        return -1;
    };
    Edges seams;
    for (uint32_t e = 0; e < faces.edge_count(); ++e) {
        const host::IndexSpan sides = faces.edge_polygons(e);
        if (sides.size() != 2)
            continue;
        for (const uint32_t vertex : {faces.edge(e).first, faces.edge(e).second})
            if (uv_at(sides[0], vertex) != uv_at(sides[1], vertex))
                seams.insert(e);
    }
    return seams;
}

} // namespace plugin_in_host
