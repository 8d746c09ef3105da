/// Which files the program reads and writes, and what it says about others.
#pragma once

#include <string>
#include <utility>

namespace app {

/// The extension with its dot, in lower case; empty if none. A name that begins with its only dot
/// has none.
std::string lower_extension(const std::string& path);

/// The formats that are read, for messages: "OBJ, GLTF and GLB".
std::string format_names();
/// The same for those that are written.
std::string written_format_names();

/// A file name without its extension, and the extension with its dot; ".gz" counts as a part of the
/// extension before it: "a.obj.gz" is "a" and ".obj.gz".
std::pair<std::string, std::string> split_name(const std::string& path);

/// True if the file's extension is that of a mesh format that can be read.
bool is_mesh_file(const std::string& path);

/// Why a mesh cannot be read from such a file and which tool converts it: a sentence that begins
/// with the path. Empty if the extension may belong to a file that can be read.
std::string input_refusal(const std::string& path);
/// Why a mesh cannot be written to such a file; empty if it can.
std::string output_refusal(const std::string& path);
/// Why a picture cannot be written to such a file: pictures are PNG files. Empty if it can.
std::string picture_refusal(const std::string& path);

} // namespace app
