/// Gives polygons vertices of their own where sharing them would tear the surface.
///
/// * Where a polygon may name a vertex only once, each repeat (a spike, a polygon that touches
///   itself) becomes an added vertex.
/// * If a polygon's diagonal is also an edge, or a diagonal of another polygon that is not on the
///   same vertices, and no other triangulation avoids that, the adjacency might pair its triangles
///   with others across it and tear the polygon. All its vertices become added ones, so that it is
///   laid out as a chart of its own, in one piece.
///
/// Added vertices lie in the place of the one they copy. Number and order of the corners never
/// change, so results per corner apply to the original polygons as they are.
#pragma once

#include "polygon/triangulation.h"

#include <cstdint>
#include <vector>

namespace tessora::polygon {

/// The corners of a mesh whose polygons can be given vertices of their own.
class SeparateCorners {
public:
    /// Errors: std::bad_alloc, here and below.
    SeparateCorners(const Polygons& polygons, uint32_t vertex_count)
        : corner_begin_(polygons.corner_begin), polygons_(polygons.count),
          vertex_count_(vertex_count),
          corner_vertex_(polygons.corner_vertex, polygons.corner_vertex + polygons.corner_count()) {
    }

    /// Adds a vertex for every repeat. Returns the number of polygons that have one.
    uint64_t split_repeats();
    /// Adds a vertex for every corner of the polygon.
    void isolate(uint32_t polygon);

    Polygons polygons() const { return {corner_begin_, polygons_, corner_vertex_.data()}; }
    uint32_t vertex_count() const { return vertex_count_ + static_cast<uint32_t>(copy_of_.size()); }
    /// Per added vertex, numbered from the original count on: the original it is a copy of.
    const std::vector<uint32_t>& copy_of() const { return copy_of_; }

private:
    void add_copy(uint32_t& vertex);

    const uint32_t* corner_begin_;
    uint32_t polygons_;
    uint32_t vertex_count_;
    std::vector<uint32_t> corner_vertex_;
    std::vector<uint32_t> copy_of_;
};

/// Polygons with a diagonal that is also an edge, or a diagonal of another polygon that is not
/// their twin, ascending. Diagonals that only cut off a triangle without area do not count.
/// Shape:  points[3*nv]; `triangulation` is that of the polygons.
/// Errors: std::bad_alloc.
/// Cost:   O(corners).
std::vector<uint32_t> torn_polygons(const Polygons& polygons, const float* points,
                                    const Triangulation& triangulation);

} // namespace tessora::polygon
