/// glTF 2.0 files, as text (.gltf) and binary (.glb): the JSON and the buffers.
/// Source: the glTF 2.0 specification, sections "GLB File Format" and "Binary Data Storage".
#pragma once

#include "formats/json_text.h"
#include "formats/limits.h"

#include <string>
#include <vector>

namespace formats {

struct GltfFile {
    Json json;
    bool is_binary = false;
    std::vector<std::string> buffers; ///< the content of every buffer
    std::string other_chunks;         ///< of a binary file, behind the first two; kept as they are
    std::vector<std::string> file_names; ///< files that the buffers were read from
    bool has_files = false;              ///< buffers or images are files of their own
    bool is_too_large = false;           ///< refused because of `most`
};

/// Reads a file's bytes. `name` is the file's path: buffers lie beside it or below its folder, and
/// nowhere else, and have `most` bytes together.
/// Errors: false with "what: reason" in `error`.
bool read_gltf(const std::string& name, const std::string& bytes, uint64_t most, GltfFile& file,
               std::string& error);

/// Whether every value that readers and writers use has the right type, and every number of a node,
/// mesh or accessor is that of one that exists. Buffers, views and accessors are checked where they
/// are read.
/// Errors: false with the place and the reason in `error`.
bool check_gltf(const Json& json, std::string& error);

/// What is said of a member that is used as what it is not. check_gltf finds those of a file with
/// their place, so only a description that was changed after reading can have one.
constexpr char k_wrong_type[] = "JSON: a value has the wrong type";

/// Writes a binary file; all buffers become one.
/// Errors: false with a reason in `error` if the file would exceed `max_size` bytes, at most
///         `k_max_glb`.
bool write_glb(const GltfFile& file, uint64_t max_size, std::string& bytes, std::string& error);

/// Writes a text file. Buffers stay where their URIs say.
std::string write_gltf_text(const GltfFile& file);

/// Standard base64 with padding.
std::string to_base64(const std::string& bytes);

} // namespace formats
