/// What of a surface is laid out by itself, and what takes its place from that.
///
/// Three kinds of triangles follow others. A sheet whose polygons are all twins (on the same
/// vertices, wound alike or against each other) of another sheet's is a copy: it gets that sheet's
/// charts. So does one that is congruent to another elsewhere, or to its mirror image. Triangles
/// that name a vertex twice, or have no area and connect nothing, hang on an edge of a neighbour.
/// Neither costs the others anything: no edge is opened for them.
#pragma once

#include "atlas/geometry/loose.h"
#include "atlas/geometry/surface.h"

namespace tessora::atlas {

struct Sheets {
    std::vector<uint32_t> kept;    ///< triangles that are laid out, ordered by shape (order.h)
    std::vector<uint32_t> number;  ///< per triangle: its place in `kept`, or k_none
    std::vector<uint32_t> copy;    ///< per triangle: the copied sheet it is in, or k_none
    std::vector<uint8_t> mirrored; ///< per copied sheet: 1 when wound against what it copies
    std::vector<uint8_t>
        elsewhere; ///< per copied sheet: 1 when it repeats a part on other vertices; 0 for twins
    std::vector<double>
        difference; ///< per copied sheet: of its lengths from the source's, relative
    /// 3 per triangle, k_none outside copies; empty without copies. A corner's source has the
    /// corresponding vertex; a half-edge's runs between the corresponding two, k_none for a
    /// diagonal.
    std::vector<uint32_t> source_corner, source_edge;
    LooseHints hints; ///< empty when all triangles have area
};

struct SheetOptions {
    std::vector<uint8_t> refused; ///< per triangle, or empty: sheets that hold a 1 are no copies
    bool stack = false;           ///< twins are to share the place of their sheet
};

/// Opens the edges between twins in `s` and finds what follows what.
Sheets find_sheets(Surface& s, const SheetOptions& options);

} // namespace tessora::atlas
