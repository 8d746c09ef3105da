/// Properties of the OBJ reader and writer that hold for any input, for the mutation test and the
/// fuzz target.
#pragma once

#include "host/io/obj_reader.h"
#include "host/io/obj_writer.h"

#include <cmath>
#include <cstring>
#include <string>

namespace test {

/// Returns the first invariant that `document` violates, or "".
inline std::string violated_invariant(const host::ObjDocument& document) {
    if (document.polygon_count() == 0)
        return "accepted without polygons";
    if (document.corner_begin.front() != 0 ||
        document.corner_begin.back() != document.corner_vertex.size() ||
        document.corner_texture.size() != document.corner_vertex.size())
        return "corner lists do not fit";
    for (size_t p = 0; p < document.polygon_count(); ++p)
        if (document.corner_begin[p + 1] < document.corner_begin[p] + 3)
            return "polygon of fewer than three corners";
    for (const float value : document.positions)
        if (!std::isfinite(value))
            return "position is not finite";
    for (size_t c = 0; c < document.corner_vertex.size(); ++c)
        if (document.corner_vertex[c] >= document.vertex_count() ||
            (document.corner_texture[c] != host::k_obj_none &&
             document.corner_texture[c] >= document.texture_count()))
            return "index out of range";
    return "";
}

/// A UV set with a separate coordinate for each corner, and none for every third corner.
inline host::ObjUvs fresh_uvs(const host::ObjDocument& document) {
    host::ObjUvs uvs;
    for (size_t c = 0; c < document.corner_vertex.size(); ++c) {
        const bool mapped = c % 3 != 2;
        uvs.corner_uv.push_back(mapped ? static_cast<int32_t>(uvs.u.size()) : -1);
        if (mapped) {
            uvs.u.push_back(static_cast<float>(c) / 1024.0f);
            uvs.v.push_back(1.0f / static_cast<float>(c + 1));
        }
    }
    return uvs;
}

/// Reads `text`. If it is valid, writes it with other texture coordinates and reads it again.
/// Returns the first violated property, or "".
inline std::string check_obj_bytes(const std::string& text) {
    host::ObjDocument before, after;
    host::IoError error;
    if (!host::parse_obj("m.obj", text, before, error))
        return error.kind == host::IoError::none || error.message.empty() ? "refused silently" : "";
    const std::string broken = violated_invariant(before);
    if (!broken.empty())
        return broken;
    const host::ObjUvs uvs = fresh_uvs(before);
    std::string written, reason;
    if (!host::format_obj(before, uvs, written, reason))
        return "cannot be written: " + reason;
    if (!host::parse_obj("w.obj", written, after, error))
        return "cannot be read back: " + error.message;
    if (after.positions.size() != before.positions.size() ||
        std::memcmp(after.positions.data(), before.positions.data(),
                    sizeof(float) * before.positions.size()) != 0)
        return "positions changed";
    if (after.corner_begin != before.corner_begin || after.corner_vertex != before.corner_vertex)
        return "polygons changed";
    if (after.texture_count() != uvs.u.size())
        return "number of texture coordinates";
    for (size_t c = 0; c < uvs.corner_uv.size(); ++c)
        if (after.corner_texture[c] != static_cast<uint32_t>(uvs.corner_uv[c]))
            return "texture indices";
    for (size_t i = 0; i < uvs.u.size(); ++i)
        if (after.texture_coords[2 * i] != uvs.u[i] || after.texture_coords[2 * i + 1] != uvs.v[i])
            return "texture coordinates";
    std::string again;
    if (!host::format_obj(after, uvs, again, reason) || again != written)
        return "writing twice gives other bytes";
    return "";
}

} // namespace test
