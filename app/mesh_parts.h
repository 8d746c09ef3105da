/// The meshes that a file has by name: objects of an OBJ file (or groups, if it has no objects),
/// solids of an STL file, meshes of the other formats.
#pragma once

#include "formats/mesh_file.h"

#include <string>
#include <vector>

namespace app {

/// One of them as a document of its own.
struct MeshPart {
    std::string name;
    host::ObjDocument document;
    std::vector<uint32_t> polygons, corners; ///< their numbers in the file's document
};

/// The meshes with polygons, in the order of the file. One without a name is called "mesh N", from
/// 1; a name that several have gets " (2)", " (3)" and so on behind it.
/// Errors: false with a reason in `error`.
bool split_meshes(const formats::MeshFile& file, std::vector<MeshPart>& parts, std::string& error);

} // namespace app
