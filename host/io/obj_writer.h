/// Writes an OBJ document with new texture coordinates, leaving everything else unchanged.
///
/// The result is the document's text with new texture indices in the faces and the `vt` lines
/// replaced by one block of new ones, at the first old `vt` line but before the first face. Lines,
/// surfaces and faces with fewer than three corners lose their texture indices, because the
/// coordinates they referred to are removed. All other bytes are kept: comments, order, precision,
/// line ends. Numbers are the shortest that read back to the same single-precision value.
#pragma once

#include "host/io/obj_document.h"

#include <maya/MTypes.h>

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// A UV set: coordinates, and per corner of the document an index into them or -1.
struct ObjUvs {
    std::vector<float> u, v;
    std::vector<int32_t> corner_uv;
};

/// Unused coordinates are omitted; the others keep their order. If no coordinate changes, `text` is
/// the document's text, byte for byte.
/// Errors: false with a message in `error` if the sizes do not fit the document, an index is out of
///         range or a used coordinate is not finite; `text` is then unspecified.
MHOST_EXPORT bool format_obj(const ObjDocument& document, const ObjUvs& uvs, std::string& text,
                             std::string& error);

} // namespace host
