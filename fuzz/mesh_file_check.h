/// What holds for every reader and writer of mesh files.
#pragma once

#include "formats/mesh_file.h"

#include <cmath>
#include <string>

/// What every document promises (host/io/obj_document.h); "" if it holds.
inline std::string broken_invariant(const host::ObjDocument& document) {
    for (const uint32_t vertex : document.corner_vertex)
        if (vertex >= document.vertex_count())
            return "a corner has a vertex that does not exist";
    for (const uint32_t id : document.corner_texture)
        if (id != host::k_obj_none && id >= document.texture_count())
            return "a corner has a coordinate that does not exist";
    for (const float value : document.positions)
        if (!std::isfinite(value))
            return "a position is not finite";
    if (document.corner_texture.size() != document.corner_vertex.size() ||
        document.corner_begin.back() != document.corner_vertex.size())
        return "the lists do not fit each other";
    return "";
}

/// A different coordinate for every corner.
inline host::ObjUvs split_everywhere(const host::ObjDocument& document) {
    host::ObjUvs uvs;
    for (size_t c = 0; c < document.corner_vertex.size(); ++c) {
        uvs.u.push_back(float(c % 1024) / 1024.0f);
        uvs.v.push_back(float(c / 1024 % 1024) / 1024.0f);
        uvs.corner_uv.push_back(int32_t(c));
    }
    return uvs;
}

/// Reads the bytes as a file of this name, writes it with new coordinates and reads the result.
/// Returns what is wrong; "" if nothing is.
inline std::string check_mesh_file(const std::string& name, const std::string& bytes,
                                   const std::string& output,
                                   const formats::WriteOptions& write_options) {
    formats::MeshFile file, again;
    host::IoError error;
    formats::ReadOptions options;
    options.max_input = 1u << 22;
    if (!formats::parse_mesh(name, bytes, options, file, error))
        return error.message.empty() ? "refused without a reason" : "";
    if (const std::string broken = broken_invariant(file.document); !broken.empty())
        return broken;
    std::string written, reason;
    if (!formats::format_mesh(file, split_everywhere(file.document), output, write_options, written,
                              reason))
        return reason.empty() ? "not written without a reason" : "";
    if (!formats::parse_mesh(output, written, formats::ReadOptions(), again, error))
        return "the result is refused: " + error.message;
    if (again.document.corner_begin != file.document.corner_begin)
        return "the result has other polygons";
    for (size_t c = 0; c < file.document.corner_vertex.size(); ++c)
        for (size_t k = 0; k < 3; ++k)
            if (file.document.positions[3 * size_t(file.document.corner_vertex[c]) + k] !=
                again.document.positions[3 * size_t(again.document.corner_vertex[c]) + k])
                return "the result has other positions";
    return "";
}
