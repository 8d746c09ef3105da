/// The flat lists that carry a mesh through one unwrap.
///
/// Triangles are numbered in the order of the host's polygons and, within a polygon, in the host's
/// triangle order. Entry 3t+k of every per-edge list belongs to the edge from corner k to corner
/// (k+1)%3 of triangle t. The lists of `face_corners`, concatenated, have one entry per entry of
/// `indices`, unless a polygon lists a vertex twice.
///
/// An element that finds no memory is left out without a message, as `array` does it.
#pragma once

#include "corelib/array.h"
#include "corelib/vertex.h"

#include <cstdint>

/// Marks an edge in a per-edge list; in an adjacency list it means no neighbour.
inline constexpr uint32_t k_marked = 0xFFFFFFFF;

/// For one polygon: the position of each triangle corner in the polygon's vertex list.
using CornerList = array<uint32_t>;

/// A new empty list; null if memory runs out.
CornerList* new_corner_list();
/// Frees a list and its buffer.
void free_corner_list(CornerList* list);

/// Frees every list in `lists`, and empties `lists`.
void free_corner_lists(array<CornerList*>& lists);

struct MeshData {
    MeshData() = default;
    ~MeshData() { free_corner_lists(face_corners); }
    MeshData(const MeshData&) = delete;
    MeshData& operator=(const MeshData&) = delete;

    array<Vertex> vertices;          ///< entry i is mesh vertex i; u and v are 0
    array<uint32_t> indices;         ///< three mesh vertex ids per triangle
    array<CornerList*> face_corners; ///< one list per polygon, owned
    array<uint32_t> cut_edges;       ///< k_marked: becomes a chart border; else 0
    array<uint32_t> real_edges;      ///< k_marked: an edge of the mesh; 0: a diagonal in a polygon
};
