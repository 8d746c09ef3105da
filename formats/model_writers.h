/// New files of a model, for results in another format than the input's.
/// Errors: false with a reason in `error`.
#pragma once

#include "formats/gltf_file.h"
#include "formats/model.h"
#include "formats/ply_mesh.h"

#include <string>

namespace formats {

/// One mesh in one space: positions, coordinates, normals, objects, material names.
bool model_to_obj(const Model& model, std::string& text, std::string& error);

/// One mesh in one space: positions, coordinates; normals and colours that vertices have.
bool model_to_ply(const Model& model, PlyUvs place, std::string& bytes, std::string& error);

/// Triangles, everything else.
GltfFile model_to_gltf(const Model& model);

/// A text file of version 7.4 with everything. Nodes that are more than moved, turned and scaled
/// are written as one space.
/// Source: the structure of FBX 7.4 text files as Blender's developers describe it, "FBX binary
///         file format specification" (2013), and as Assimp reads it.
bool model_to_fbx(const Model& model, std::string& text, std::string& error);

} // namespace formats
