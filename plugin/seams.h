/// UV seams: finding them, and telling new ones from existing ones.
///
/// A seam list is flat: entries 2i and 2i+1 are the two mesh vertices of one edge.
#pragma once

#include "corelib/array.h"
#include "plugin/edge_table.h"

#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MString.h>

#include <cstdint>

/// The ids of the seam edges of the UV set `uv_set`, in edge order; `edges` are those of `mesh`.
/// An edge with two faces is a seam unless the two faces share a UV id at both its ends; an
/// unmapped face shares no UV. An edge with one face is an open border, not a seam; every other
/// edge is one. Errors: the host's status or kInsufficientMemory, and an empty list. Cost:
/// O(corners log valence).
MIntArray find_seam_edges(MObject& mesh, const MString& uv_set, const EdgeTable& edges,
                          MStatus* return_status = nullptr);

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

/// Removes every edge of `existing_seams` from `new_seams` and leaves the rest sorted, each edge
/// once, its smaller vertex id first. A leading pair (0, 0), which is no edge, is removed too.
void subtract_seams(MIntArray& new_seams, const MIntArray& existing_seams);
