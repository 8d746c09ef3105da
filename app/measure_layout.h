/// The program's door to measure/: makes layouts of documents, judges them, words the figures.
#pragma once

#include "host/io/obj_document.h"
#include "host/io/obj_writer.h"
#include "measure/verify.h"

#include <string>
#include <vector>

namespace app {

/// The document's polygons, divided as an unwrap divides them, with its own texture coordinates or,
/// when `uvs` is given, with those. Polygon ids are the document's.
/// Errors: false with a sentence in `error` (the mesh is beyond what the host takes).
bool make_layout(const host::ObjDocument& document, const host::ObjUvs* uvs,
                 measure::Layout& layout, std::string& error);

/// What is known of a layout, and which promises it breaks.
struct Judgement {
    measure::Layout layout;
    measure::Measures measures;
    std::vector<measure::Breach> breaches; ///< empty: it may be published
    measure::OverLimit over_limit;
};

/// Measures a layout and holds it against the promise.
/// Errors: as make_layout; std::bad_alloc.
bool judge_layout(const host::ObjDocument& document, const host::ObjUvs* uvs,
                  const measure::Texture& texture, const measure::Promise& promise,
                  Judgement& judgement, std::string& error);

/// The figures as one JSON object, for reports; every key is in docs/measures.md. With `per_chart`
/// a list of all charts is in it.
std::string measures_json(const Judgement& judgement, bool per_chart);

/// The figures as lines of name and value, for a person.
std::string measures_table(const Judgement& judgement);

/// "SENTENCE: polygons 1, 5, 7 and 12 more", ids from 0 in the order of the file's faces.
std::string breach_text(const measure::Breach& breach);

} // namespace app
