/// Writes a mesh file in another format.
#pragma once

#include <string>
#include <vector>

namespace app {

/// The extensions of formats that hold a mesh with texture coordinates and are written, with their
/// dots; ".obj" is the first.
std::vector<std::string> written_extensions();

/// The extensions of all formats that are read.
std::vector<std::string> read_extensions();

/// Why no mesh is written under this name, a sentence; empty if its format is written.
std::string export_refusal(const std::string& path);

/// Writes the mesh of a file, with its texture coordinates, groups and names of materials, to
/// another one in the format of its name. Errors: false with `error` set; there is no new file
/// then, and an older one stays as it was.
bool convert_mesh(const std::string& from, const std::string& to, std::string& error);

} // namespace app
