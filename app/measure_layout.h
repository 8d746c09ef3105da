/// Measures and verifies the layout of a mesh file, and formats the figures as JSON or a table.
#pragma once

#include "host/io/obj_document.h"
#include "host/io/obj_writer.h"
#include "host/mesh/mesh.h"
#include "measure/verify.h"

#include <string>
#include <vector>

namespace app {

/// Builds a layout from the document's polygons, triangulated as `mesh`, which was imported from
/// the document, with `uvs` as texture coordinates or, if null, the document's own. Polygon ids are
/// the document's.
measure::Layout make_layout(const host::ObjDocument& document, const host::Mesh& mesh,
                            const host::ObjUvs* uvs);

/// The measurements of a layout and the guarantees it breaks.
struct Judgement {
    measure::Layout layout;
    measure::Measures measures;
    std::vector<measure::Breach> breaches; ///< empty if every guarantee holds
    measure::OverLimit over_limit;
};

/// Measures a layout and checks it against `promise`; for the arguments see make_layout.
/// Errors: std::bad_alloc.
Judgement judge_layout(const host::ObjDocument& document, const host::Mesh& mesh,
                       const host::ObjUvs* uvs, const measure::Texture& texture,
                       const measure::Promise& promise);

/// Judges each of the document's `count` tiles as a texture of its own; tile i spans the unit
/// square moved by (i % 10, i / 10), as UDIM 1001 + i. Polygons belong to the tile that the centre
/// of their first triangle is nearest to, those without UVs to the first tile.
std::vector<Judgement> judge_tiles(const host::ObjDocument& document, const host::Mesh& mesh,
                                   int count, const measure::Texture& texture,
                                   const measure::Promise& promise);

/// The figures as one JSON object; docs/measures.md defines every key. `per_chart` adds a list of
/// all charts.
std::string measures_json(const Judgement& judgement, bool per_chart);

/// The figures as a table of names and values.
std::string measures_table(const Judgement& judgement);

/// "SENTENCE: polygons 1, 5, 7 and 12 more", ids from 0 in the order of the file's faces.
std::string breach_text(const measure::Breach& breach);

/// Why a result that breaks guarantees is not written: a line for each of `breaches`.
std::string refusal_text(const std::vector<std::string>& breaches);

} // namespace app
