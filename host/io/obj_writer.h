/// Writes an OBJ document with other texture coordinates, and changes nothing else in it.
///
/// The result is the document's text with new `vt` lines in place of the old ones (all in one block
/// where the first stood, always ahead of the first face that uses them) and new texture indices in
/// the faces. Line elements, surfaces and faces of fewer than three corners lose theirs, since the
/// coordinates they named are gone. Every other byte stays: comments, order, precision, line ends.
/// Numbers are the shortest that read back to the same single-precision value.
#pragma once

#include "host/io/obj_document.h"

#include <maya/MTypes.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// One UV set: coordinates, and for every corner of the document an index into them or -1.
struct ObjUvs {
    std::vector<float> u, v;
    std::vector<int32_t> corner_uv;
};

/// Coordinates that no corner uses are left out; the others keep their order. A document whose
/// coordinates would not change gives its own text back, byte for byte.
/// Errors: false with a sentence in `error` when the sizes do not fit the document, an index is out
///         of range or a used coordinate is not finite; `text` is then unspecified.
MHOST_EXPORT bool format_obj(const ObjDocument& document, const ObjUvs& uvs, std::string& text,
                             std::string& error);

} // namespace host
