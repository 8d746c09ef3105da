/// Reads Wavefront OBJ files exactly and trusts nothing in them.
///
/// Any polygon size, relative indices, corner forms v, v/vt, v//vn, v/vt/vn mixed at will, faces
/// ahead of their vertices, unknown statements skipped. A file with a number that is no number, a
/// position that is not finite, an index that points at nothing, or no polygon at all is refused:
/// the message is "file:line: reason". A texture coordinate that is not finite counts as none, with
/// a warning; so does a bad normal index, since normals stay in the text and are never read.
#pragma once

#include "host/io/obj_document.h"

#include <maya/MTypes.h>

#include <string>

namespace host {

/// Why a file could not be had.
struct IoError {
    enum Kind {
        none,
        unreadable, ///< missing, a directory, no permission, a device error
        malformed,  ///< the text is not a mesh
        too_large   ///< beyond 32-bit counts, or memory ran out
    };
    Kind kind = none;
    std::string message;
};

/// Reads all of a file, a pipe, or standard input (path "-").
/// Errors: false with `error` set; `text` is then unspecified.
MHOST_EXPORT bool read_text(const std::string& path, std::string& text, IoError& error);

/// Parses `text`, which the document takes over; `name` stands in messages.
/// Errors: false with `error` set; the document is then unspecified.
/// Cost: one pass; memory about twice the text.
MHOST_EXPORT bool parse_obj(const std::string& name, std::string text, ObjDocument& document,
                            IoError& error);

} // namespace host
