/// UV seams: where they are, and which of them are new.
///
/// A seam list is flat: entries 2i and 2i+1 are the two mesh vertices of one edge.
#pragma once

#include "corelib/array.h"

#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MString.h>

#include <cstdint>

/// The ids of the edges at which the UV set `uv_set` is torn, in edge order.
/// An edge with two faces is a seam unless at both its ends the two faces share a UV; an unmapped
/// face shares none. An edge with one face is an open border and no seam; any other edge is one.
/// Errors: the host's status or kInsufficientMemory, and an empty list.
/// Cost:   O(corners log valence).
MIntArray find_seam_edges(MObject& mesh, const MString& uv_set, MStatus* return_status = nullptr);

/// One edge by its two vertices, the smaller id first.
struct SeamPair {
    int32_t low;
    int32_t high;
};

template <>
struct array_element_name<SeamPair> {
    static constexpr const char* text = "struct SeamPair";
};

inline bool operator==(const SeamPair& a, const SeamPair& b) {
    return a.low == b.low && a.high == b.high;
}
inline bool operator<(const SeamPair& a, const SeamPair& b) {
    return a.low != b.low ? a.low < b.low : a.high < b.high;
}

/// The pairs of a seam list in ascending order, duplicates included.
array<SeamPair> seam_pairs_sorted(const MIntArray& pairs);

/// Takes every edge of `existing_seams` out of `new_seams` and leaves the rest sorted, each edge
/// once, its smaller vertex id first. A pair of vertex 0 with itself, which names no edge, goes too
/// where it would come first.
void subtract_seams(MIntArray& new_seams, const MIntArray& existing_seams);
