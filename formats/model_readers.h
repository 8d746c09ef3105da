/// Models of files that were read.
#pragma once

#include "formats/mesh_file.h"
#include "formats/model.h"

namespace formats {

/// What the file has besides positions, polygons and the replaced texture coordinates; those are as
/// given.
/// Errors: false with a reason in `error`.
bool model_of(const MeshFile& file, const host::ObjUvs& uvs, Model& model, std::string& error);

} // namespace formats
