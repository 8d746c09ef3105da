/// A Wavefront OBJ file in memory: its text, byte for byte, and the mesh parsed from it.
///
/// One file is one mesh: objects and groups do not split it. The text is kept because the writer
/// changes only its texture coordinates (obj_writer.h). Polygons with fewer than three corners are
/// not part of the mesh; their lines stay in the text.
///
/// Invariants after a successful read: every vertex index is below the vertex count, every texture
/// index is below the texture coordinate count or k_obj_none, every position is finite.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// Index of a corner without a texture coordinate.
inline constexpr uint32_t k_obj_none = 0xFFFFFFFFu;

/// A statement that refers to texture coordinates, which the writer may have to change.
struct ObjStatement {
    enum Kind : uint32_t {
        texture, ///< a `vt` line
        polygon, ///< a face with three or more corners; the n-th is polygon n
        bare     ///< an element outside the mesh: line, surface, two-corner face
    };
    uint64_t offset; ///< of the statement's keyword in the text
    Kind kind;
};

struct ObjDocument {
    std::string name;             ///< file name for messages
    std::string text;             ///< the file's bytes
    std::vector<float> positions; ///< 3 per vertex, object space
    /// The positions, with the mesh's box centred on the origin if the mesh is far from it for its
    /// size (obj_scale.h), divided by `unit`, a power of ten that scales the largest coordinate to
    /// between 1 and 10. Rounded to single precision after that, so that a mesh in metres and the
    /// same mesh in millimetres give equal values.
    std::vector<float> unit_positions;
    double unit = 1.0;
    std::vector<float> texture_coords;  ///< 2 per `vt` line; v is 0 if the line has only u
    std::vector<uint32_t> corner_begin; ///< polygons + 1 entries: first corner of each polygon
    std::vector<uint32_t> corner_vertex;
    std::vector<uint32_t> corner_texture;
    std::vector<ObjStatement> statements; ///< in file order
    uint64_t insert_at = 0;               ///< offset for new `vt` lines if the text has none
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
