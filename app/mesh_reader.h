/// Reads a mesh file of any format that the program knows; the one way in for all commands.
#pragma once

#include "formats/mesh_file.h"

#include <string>

namespace app {

/// Reads and parses a file; "-" is standard input. Formats of a library run in a process of its
/// own, with limits. `hash` gets the fingerprint of the file's bytes, unless it is null. Errors:
/// false with `error` set, a message that begins with the path.
bool read_mesh(const std::string& path, const formats::ReadOptions& options,
               formats::MeshFile& file, host::IoError& error, std::string* hash = nullptr);

/// Limits of the process that reads a file of this size.
struct ImportLimits {
    unsigned long long memory = 0; ///< bytes of address space
    unsigned seconds = 0;          ///< of processor time; half as many more may pass on the clock
};
ImportLimits import_limits(size_t file_size);

/// Has `importer`, a program like tessora_import, read a file's bytes.
/// Errors: false with `error` set: the program is missing, refuses the file, crashes, exceeds a
///         limit or answers nonsense.
bool import_model(const std::string& importer, const std::string& path, const std::string& bytes,
                  const ImportLimits& limits, formats::MeshFile& file, host::IoError& error);

} // namespace app
