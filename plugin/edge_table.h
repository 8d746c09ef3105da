/// The edges of a mesh, looked up by their two vertices.
///
/// The host finds an edge by walking all edges of one of its vertices; done for every triangle edge
/// that is quadratic in the valence. This table reads every edge from the host once and finds edges
/// in logarithmic time. It is a snapshot: the mesh must not change while the table is in use.
#pragma once

#include "plugin/work_buffer.h"

#include <maya/MObject.h>
#include <maya/MStatus.h>

#include <cstdint>

/// One edge: its two end vertices and, if it has exactly two faces, their ids.
struct MeshEdge {
    int32_t ends[2];
    int32_t face_count;
    int32_t faces[2]; ///< in the host's order
};

class EdgeTable {
public:
    /// An edge at one of its two end vertices.
    struct Spoke {
        int32_t other; ///< the vertex at the other end
        int32_t edge;
    };
    struct Spokes {
        const Spoke* first;
        const Spoke* last;
        const Spoke* begin() const { return first; }
        const Spoke* end() const { return last; }
    };

    /// Reads all edges. An edge with an end outside 0 to `vertex_count` - 1 is never found.
    /// Errors: the host's status, or kInsufficientMemory.
    MStatus build(MObject& mesh, uint32_t vertex_count);

    size_t count() const { return edges_.count(); }
    const MeshEdge& edge(int32_t id) const { return edges_[static_cast<size_t>(id)]; }

    /// The edges between two vertices; all edges of `vertex` if both are the same.
    Spokes between(int32_t vertex, int32_t other) const;

private:
    bool has_vertex(int32_t vertex) const {
        return vertex >= 0 && static_cast<size_t>(vertex) + 1 < starts_.count();
    }
    bool has_valid_ends(const MeshEdge& edge) const {
        return has_vertex(edge.ends[0]) && has_vertex(edge.ends[1]);
    }
    /// All edges of `vertex`, sorted by the vertex at the other end, then by edge id; none if there
    /// is no such vertex.
    Spokes around(int32_t vertex) const;
    bool read(MObject& mesh, MStatus& status);
    void fill_spokes(uint32_t vertex_count);

    WorkBuffer<MeshEdge> edges_;  ///< by id
    WorkBuffer<uint32_t> starts_; ///< vertex v has the spokes starts_[v] to starts_[v + 1]
    WorkBuffer<Spoke> spokes_;
};
