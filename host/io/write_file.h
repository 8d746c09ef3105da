/// Writes files that appear complete or not at all.
#pragma once

#include <maya/MTypes.h>

#include <string>
#include <string_view>

namespace host {

/// What a replaced file must survive.
enum class Durability {
    process, ///< the end of this process at any moment
    power    ///< also a power cut; waits for the disk
};

/// Writes `bytes` to a new file beside `path` and renames it over `path`, with the permissions of
/// the file it replaces. Symbolic links to files are followed and stay. Devices and pipes are
/// written directly. Temporary files: see temporary_file.h. Errors:
/// false with the system's words in `reason`; the old file is unchanged.
MHOST_EXPORT bool write_file(const std::string& path, std::string_view bytes, Durability durability,
                             std::string& reason);

} // namespace host
