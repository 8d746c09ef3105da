/// Reads Wavefront OBJ files and validates everything in them.
///
/// Accepts polygons of any size, relative indices, corners v, v/vt, v//vn and v/vt/vn in any
/// mixture, and faces before their vertices; skips unknown statements. Malformed numbers, positions
/// that are not finite, indices out of range and files without a polygon are errors with the
/// message "file:line: reason". A texture coordinate that is not finite is treated as absent, with
/// a warning. Normals are not read; an invalid normal index is only a warning.
#pragma once

#include "host/io/obj_document.h"

#include <maya/MTypes.h>

#include <string>

namespace host {

/// Why a file could not be read.
struct IoError {
    enum Kind {
        none,
        unreadable, ///< missing, a directory, no permission, a device error
        malformed,  ///< the text is not a valid mesh
        too_large   ///< exceeds 32-bit counts, available memory or a limit of bytes
    };
    Kind kind = none;
    std::string message;
};

/// Reads a file, pipe, or standard input (path "-") to its end.
/// Errors: false with `error` set; `text` is then unspecified. Files of more than 8 GiB are
/// refused,
///         and more than 256 MiB of anything else, since a device may have no end.
MHOST_EXPORT bool read_text(const std::string& path, std::string& text, IoError& error);

/// As `read_text`, but reads the first `most` bytes and no more, also of pipes. A device with more
/// than 256 MiB is refused.
MHOST_EXPORT bool read_start(const std::string& path, uint64_t most, std::string& text,
                             IoError& error);

/// Parses `text`, which the document keeps; `name` is the file name in messages.
/// Errors: false with `error` set; the document is then unspecified.
/// Cost:   one pass; memory about twice the text.
MHOST_EXPORT bool parse_obj(const std::string& name, std::string text, ObjDocument& document,
                            IoError& error);

} // namespace host
