/// A Wavefront OBJ file as it stands in memory: the text, byte for byte, and what was read from it.
///
/// One file is one mesh: objects and groups do not divide it. The document keeps the text because
/// the writer changes nothing but texture coordinates (obj_writer.h). Polygons of fewer than three
/// corners are no part of the mesh; their lines stay in the text.
///
/// Invariants after a successful read: every vertex index is below the vertex count, every texture
/// index is below the texture coordinate count or k_obj_none, every position is finite.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// "No texture coordinate at this corner."
inline constexpr uint32_t k_obj_none = 0xFFFFFFFFu;

/// A statement that the writer may have to change.
struct ObjStatement {
    enum Kind : uint32_t {
        texture, ///< a `vt` line
        polygon, ///< a face of three corners or more; the n-th one is polygon n
        bare     ///< names texture coordinates that nobody maps: lines, surfaces, two-corner faces
    };
    uint64_t offset; ///< of the statement's keyword in the text
    Kind kind;
};

struct ObjDocument {
    std::string name;             ///< what messages call the file
    std::string text;             ///< the file's bytes
    std::vector<float> positions; ///< 3 per vertex, object space
    /// The same divided by `unit`, a power of ten that makes the largest of them 1 to 10. They are
    /// rounded to single precision after that, so that a mesh in metres and the same one in
    /// millimetres have the same.
    std::vector<float> unit_positions;
    double unit = 1.0;
    std::vector<float> texture_coords;  ///< 2 per `vt` line (v is 0 where the line has none)
    std::vector<uint32_t> corner_begin; ///< polygons + 1 entries: first corner of each polygon
    std::vector<uint32_t> corner_vertex;
    std::vector<uint32_t> corner_texture;
    std::vector<ObjStatement> statements; ///< in the order of the text
    uint64_t insert_at = 0;               ///< where new `vt` lines go when the text has none
    std::vector<std::string> warnings;    ///< one sentence each, "file:line: ..."

    size_t vertex_count() const { return positions.size() / 3; }
    size_t texture_count() const { return texture_coords.size() / 2; }
    size_t polygon_count() const { return corner_begin.empty() ? 0 : corner_begin.size() - 1; }
    bool has_uvs() const {
        for (uint32_t id : corner_texture)
            if (id != k_obj_none)
                return true;
        return false;
    }
};

} // namespace host
