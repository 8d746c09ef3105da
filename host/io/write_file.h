/// Writes a file atomically.
#pragma once

#include <maya/MTypes.h>

#include <string>

namespace host {

/// Writes to a temporary file in the same directory and renames it to `path`, so that the file is
/// complete or, on failure, what it was before.
/// Errors: false if it cannot be written.
MHOST_EXPORT bool write_file(const std::string& path, const std::string& bytes);

} // namespace host
