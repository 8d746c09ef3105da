/// Temporary files beside the file that they will replace, named NAME.tessora-tmp.PROCESS.
#pragma once

#include <maya/MTypes.h>

#include <string>

namespace host {

/// Creates a file beside `target`, and locks it until it is closed, so that
/// `remove_abandoned_files` spares it. A file or link that has the name already is left alone and
/// another name is taken. Returns the descriptor and the path in `path`; on failure a negative
/// number, and the reason in errno.
MHOST_EXPORT int create_temporary(const std::string& target, std::string& path);

/// Removes the temporary files that killed processes left in the folder of `target`. Once per
/// folder, so that writing many files into one does not list it every time. Failures are ignored.
MHOST_EXPORT void remove_abandoned_files(const std::string& target);

} // namespace host
