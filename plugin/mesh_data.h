/// The flat lists that carry a mesh through one unwrap.
///
/// Triangles are numbered in the order of the host's polygons and, within a polygon, in the host's
/// triangle order. Entry 3t+k of every per-edge list speaks of the edge from corner k to corner
/// (k+1)%3 of triangle t. Walking `face_corners` polygon by polygon passes the same corners as
/// `indices`, unless a polygon names a vertex twice.
///
/// Lists that cannot grow drop the element and say nothing: the array's rule.
#pragma once

#include "corelib/array.h"
#include "corelib/vertex.h"

#include <cstdint>

/// Marks an edge in a per-edge list; in an adjacency list it means no neighbour.
inline constexpr uint32_t k_marked = 0xFFFFFFFF;

/// Per polygon, the place of each triangle corner in the polygon's vertex list.
using CornerList = array<uint32_t>;

/// A new empty list; null when memory is out.
CornerList* new_corner_list();
/// Frees a list, buffer and all.
void free_corner_list(CornerList* list);

/// Frees every list that `lists` points to, buffer and list, and empties `lists`.
void free_corner_lists(array<CornerList*>& lists);

struct MeshData {
    MeshData() = default;
    ~MeshData() { free_corner_lists(face_corners); }
    MeshData(const MeshData&) = delete;
    MeshData& operator=(const MeshData&) = delete;

    array<Vertex> vertices;          ///< entry i is mesh vertex i; u and v are 0
    array<uint32_t> indices;         ///< three mesh vertex ids a triangle
    array<CornerList*> face_corners; ///< one list a polygon, owned
    array<uint32_t> cut_edges;       ///< k_marked: becomes a chart border; else 0
    array<uint32_t> real_edges;      ///< k_marked: an edge of the mesh; 0: a diagonal in a polygon
};
