/// The triangles of a glTF file as one mesh, and new texture coordinates for them.
///
/// All triangles of all meshes are one mesh, in the meshes' own coordinates: they get places in one
/// texture. A glTF vertex is split where any of its attributes has a seam; corners of one glTF mesh
/// that have bit-equal positions are one vertex of the document. Points and lines are left as they
/// are.
#pragma once

#include "formats/gltf_file.h"
#include "host/io/obj_document.h"
#include "host/io/obj_reader.h"
#include "host/io/obj_writer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace formats {

/// A primitive made of triangles.
struct GltfPrimitive {
    size_t mesh = 0, number = 0;   ///< meshes[mesh].primitives[number]
    std::vector<uint32_t> corners; ///< vertices of its triangles, three each
    size_t first_corner = 0;       ///< of the document
    size_t group = 0;
};

/// The vertices that several primitives may share: one set of attributes.
struct GltfGroup {
    Json attributes, targets; ///< accessor numbers, as in the primitives
    size_t vertex_count = 0;
};

struct GltfMesh {
    GltfFile file;
    int set = 0; ///< TEXCOORD_n that receives the result
    std::vector<GltfPrimitive> primitives;
    std::vector<GltfGroup> groups;
};

/// What a file may have at most.
struct GltfLimits {
    uint64_t bytes;   ///< of all buffers together
    uint64_t corners; ///< `k_max_corners` or less
};

/// Reads the file's bytes. `set` is the n of TEXCOORD_n whose present values the document gets and
/// which the result replaces.
/// Errors: false with `error` set, "file: what: reason".
bool read_gltf_mesh(const std::string& name, const std::string& bytes, int set,
                    const GltfLimits& limits, GltfMesh& mesh, host::ObjDocument& document,
                    host::IoError& error);

/// The file with new texture coordinates. Vertices are split where a corner's coordinate differs;
/// then all attributes and morph targets of their primitives get new accessors. Everything else
/// stays: the old bytes keep their places, new ones follow them. Errors: false with a reason in
/// `error` if the coordinates do not fit the mesh.
bool patch_gltf(const GltfMesh& mesh, const host::ObjUvs& uvs, GltfFile& result,
                std::string& error);

} // namespace formats
