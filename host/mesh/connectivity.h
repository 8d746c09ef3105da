/// Adjacency of a polygon mesh (vertices, edges, polygons, corners) as flat arrays, built once from
/// the polygon list. A corner is one vertex of one polygon; corners are numbered through the whole
/// mesh, polygon after polygon. Lists per X are stored end to end: the list of X has the entries
/// `start[X]` to `start[X + 1] - 1`.
///
/// Edges are numbered, and directed, as corner order first visits them. Any number of polygons may
/// share an edge, and a polygon may visit a vertex or edge repeatedly; each list contains an id
/// once. Lists are in ascending order.
#pragma once

#include "polygon/polygons.h"

#include <maya/MTypes.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace host {

/// A read-only range of one of the arrays.
using tessora::polygon::IndexSpan;

class MHOST_EXPORT Connectivity {
public:
    /// Shape:  counts[np] corners per polygon, vertices[sum of counts].
    /// Limits: the caller has checked that every count is at least 3 and every vertex id is below
    ///         `vertex_count`.
    /// Errors: std::bad_alloc.
    /// Cost:   O(corners + sum of v log v over vertices of valence v).
    Connectivity(std::uint32_t vertex_count, std::vector<std::uint32_t> counts,
                 std::vector<std::uint32_t> vertices);

    std::uint32_t vertex_count() const { return vertex_count_; }
    std::uint32_t edge_count() const { return static_cast<std::uint32_t>(edges_.size()); }
    std::uint32_t polygon_count() const {
        return static_cast<std::uint32_t>(polygon_start_.size() - 1);
    }
    std::uint32_t corner_count() const { return static_cast<std::uint32_t>(vertices_.size()); }

    /// Valid as long as this object.
    tessora::polygon::Polygons polygons() const {
        return {polygon_start_.data(), polygon_count(), vertices_.data()};
    }
    std::uint32_t first_corner(std::uint32_t polygon) const { return polygon_start_[polygon]; }
    std::uint32_t corners_of(std::uint32_t polygon) const {
        return polygon_start_[polygon + 1] - polygon_start_[polygon];
    }
    /// Vertex ids of a polygon in winding order; and its edges, where edge i runs from corner i to
    /// the next.
    IndexSpan polygon_vertices(std::uint32_t polygon) const {
        return span(polygon_start_, vertices_, polygon);
    }
    IndexSpan polygon_edges(std::uint32_t polygon) const {
        return span(polygon_start_, corner_edges_, polygon);
    }
    std::uint32_t corner_vertex(std::uint32_t corner) const { return vertices_[corner]; }
    std::uint32_t corner_polygon(std::uint32_t corner) const { return corner_polygons_[corner]; }

    /// The two vertices of an edge.
    const std::pair<std::uint32_t, std::uint32_t>& edge(std::uint32_t edge) const {
        return edges_[edge];
    }
    IndexSpan edge_polygons(std::uint32_t edge) const {
        return span(edge_start_, edge_polygons_, edge);
    }
    IndexSpan vertex_edges(std::uint32_t vertex) const {
        return span(vertex_edge_start_, vertex_edges_, vertex);
    }
    /// Corners at a vertex. A polygon that visits the vertex twice has two of them.
    IndexSpan vertex_corners(std::uint32_t vertex) const {
        return span(vertex_corner_start_, vertex_corners_, vertex);
    }

private:
    static IndexSpan span(const std::vector<std::uint32_t>& start,
                          const std::vector<std::uint32_t>& items, std::uint32_t index) {
        return IndexSpan(items.data() + start[index], items.data() + start[index + 1]);
    }
    std::uint32_t next_corner(std::uint32_t corner) const;
    void list_vertex_corners();
    void find_edges();
    void list_edge_polygons();
    void list_vertex_edges();

    std::uint32_t vertex_count_;
    std::vector<std::uint32_t> polygon_start_;
    std::vector<std::uint32_t> vertices_;
    std::vector<std::uint32_t> corner_polygons_;
    std::vector<std::uint32_t> corner_edges_;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> edges_;
    std::vector<std::uint32_t> edge_start_;
    std::vector<std::uint32_t> edge_polygons_;
    std::vector<std::uint32_t> vertex_edge_start_;
    std::vector<std::uint32_t> vertex_edges_;
    std::vector<std::uint32_t> vertex_corner_start_;
    std::vector<std::uint32_t> vertex_corners_;
};

} // namespace host
