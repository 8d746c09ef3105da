/// What of a surface is laid out by itself, and what takes its place from that.
///
/// Three kinds of triangles follow others. A sheet whose polygons are all twins (on the same
/// vertices, wound alike or against each other) of another sheet's is a copy: it gets that sheet's
/// charts. So does one that is congruent to another elsewhere, or to its mirror image. Triangles
/// that name a vertex twice, or have no area and connect nothing, hang on an edge of a neighbour.
/// Neither costs the others anything: no edge is opened for them.
#pragma once

#include "atlas/geometry/surface.h"

#include <functional>

namespace tessora::atlas {

/// What decides where triangles without area are hung.
struct LooseHints {
    std::vector<uint8_t> point; ///< per triangle: 1 when all its corners are in one place
    /// Per half-edge of triangles without area: its mate across a false edge, or k_none.
    std::vector<uint32_t> inner_mate;
};

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

/// A triangle hung on another. Both half-edges run between the same two vertices; for a triangle
/// that is a point they merely start at the same vertex.
struct Attachment {
    uint32_t own, host;
};

/// Hangs the `loose` triangles, one after the other, on placed ones: on one of the same polygon,
/// else rather where the two are wound alike, else on the nearest in number. One that has no
/// neighbour which is placed or can be is kept where it is: `keep` says what is placed with it.
/// Shape:  vertex[3*faces]; placed[faces], 1 when placed and 1 for all of `loose` afterwards.
std::vector<Attachment>
attach_loose(Span<uint32_t> vertex, const LooseHints& hints, const std::vector<uint32_t>& loose,
             std::vector<uint8_t>& placed,
             const std::function<std::vector<uint32_t>(uint32_t triangle)>& keep);

} // namespace tessora::atlas
