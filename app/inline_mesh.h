/// Meshes inside requests, and results inside answers (docs/serve.md).
#pragma once

#include "host/io/obj_document.h"
#include "host/io/obj_writer.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace app {

/// Reads {"positions": [x, y, z, ...], "polygons": [[vertex, ...], ...]} and, if they are there,
/// "uvs": [u, v, ...] with "corner_uvs": [[uv, ...], ...], null for a corner without one.
/// Errors: false with a sentence in `error` that names the place.
bool mesh_from_json(const nlohmann::ordered_json& json, host::ObjDocument& document,
                    std::string& error);

/// {"uvs": [u, v, ...], "corner_uvs": [...]}: per corner, polygon after polygon, an index into the
/// coordinates. Numbers are the shortest that read back to the same single-precision value.
std::string uvs_to_json(const host::ObjUvs& uvs);

} // namespace app
