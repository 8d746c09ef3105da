/// Reads Wavefront OBJ files and validates everything in them.
///
/// Accepts polygons of any size, relative indices, corners v, v/vt, v//vn and v/vt/vn in any
/// mixture, and faces before their vertices; skips unknown statements. Malformed numbers, positions
/// that are not finite, indices out of range and files without a polygon are errors with the
/// message "file:line: reason". A texture coordinate that is not finite is treated as absent, with
/// a warning. Normals are not read; an invalid normal index is only a warning.
#pragma once

#include "host/base/read_text.h"
#include "host/io/obj_document.h"

#include <maya/MTypes.h>

#include <string>

namespace host {

/// Parses `text`, which the document keeps; `name` is the file name in messages.
/// Errors: false with `error` set; the document is then unspecified.
/// Cost:   one pass; memory about twice the text.
MHOST_EXPORT bool parse_obj(const std::string& name, std::string text, ObjDocument& document,
                            IoError& error);

} // namespace host
