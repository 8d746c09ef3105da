/// Exact comparison of meshes.
#pragma once

#include "host/mesh/mesh.h"

#include <string>

namespace plugin_in_host {

/// Points, faces and every UV set, as bytes: equal strings are equal meshes, bit for bit.
inline std::string bytes_of(const host::Mesh& mesh) {
    std::string bytes;
    const auto add = [&](const void* data, size_t size) {
        bytes.append(static_cast<const char*>(data), size);
    };
    add(mesh.points().data(), mesh.points().size() * sizeof(host::Float3));
    const host::Connectivity& faces = mesh.connectivity();
    for (uint32_t corner = 0; corner < faces.corner_count(); ++corner) {
        const uint32_t ids[] = {faces.corner_polygon(corner), faces.corner_vertex(corner)};
        add(ids, sizeof(ids));
    }
    for (uint32_t s = 0; s < mesh.uv_set_count(); ++s) {
        const host::UvSet& set = mesh.uv_set(s);
        bytes += set.name.asChar();
        add(set.u.data(), set.u.size() * sizeof(float));
        add(set.v.data(), set.v.size() * sizeof(float));
        add(set.corner_uvs.data(), set.corner_uvs.size() * sizeof(int32_t));
    }
    return bytes;
}

} // namespace plugin_in_host
