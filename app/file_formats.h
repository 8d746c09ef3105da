/// Which files the program reads and writes, and what it says about others.
#pragma once

#include <string>

namespace app {

/// The extension with its dot, in lower case; empty if none. A name that begins with its only dot
/// has none.
std::string lower_extension(const std::string& path);

/// True if the extension names a mesh or scene format other than OBJ.
bool is_other_format(const std::string& path);

/// Why a mesh cannot be read from such a file and which tool converts it: a sentence that begins
/// with the path. Empty if the extension may belong to an OBJ file.
std::string input_refusal(const std::string& path);
/// Why a mesh cannot be written to such a file; empty if it can.
std::string output_refusal(const std::string& path);
/// Why a picture cannot be written to such a file: pictures are PNG files. Empty if it can.
std::string picture_refusal(const std::string& path);

} // namespace app
