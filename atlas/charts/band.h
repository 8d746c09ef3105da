/// The neighbourhood of a glued arc: the only part of two charts that a merge moves apart from the
/// rigid motion of one of them.
#pragma once

#include "atlas/charts/chart_set.h"

namespace tessora::atlas {

/// Triangles and nodes within a number of rings of an arc. Ring 0 is the arc's own nodes; a node is
/// in ring r + 1 if it shares a triangle with a node of ring r and is in no lower ring.
class Band {
public:
    /// Flags of triangles, 0 outside of every band. Bands of different charts may share them, even
    /// on different threads.
    struct Flags {
        std::vector<uint8_t> has_face;
        std::vector<uint8_t> is_lead; ///< empty without polygons

        explicit Flags(const ChartSet& set);
    };

    Band(const ChartSet& set, Flags& flags) : set_(set), flags_(flags) {}
    /// Collects everything within `rings` of the arc, in breadth-first order, after clearing.
    /// True if that is all of both charts.
    bool grow(const std::vector<uint32_t>& arc_nodes, uint32_t rings);
    /// Adds a triangle without its nodes, if it is not in the band yet.
    void add_face(uint32_t t);
    /// The triangles that stand for the polygons of the band's triangles, in the band or not.
    const std::vector<uint32_t>& leads() const { return leads_; }
    bool has_face(uint32_t t) const { return flags_.has_face[t] != 0; }
    void clear();

    const std::vector<uint32_t>& faces() const { return faces_; }
    const std::vector<uint32_t>& nodes() const { return nodes_; } ///< rings in ascending order
    const std::vector<uint32_t>& rings() const { return ring_; }  ///< per node of nodes()
    bool has_node(uint32_t node) const {
        return set_.place[node] < nodes_.size() && nodes_[set_.place[node]] == node;
    }
    /// Position in nodes() of a node of the band.
    uint32_t place(uint32_t node) const { return set_.place[node]; }
    /// Ring of a node; k_none outside the band.
    uint32_t ring(uint32_t node) const { return has_node(node) ? ring_[place(node)] : k_none; }

private:
    const ChartSet& set_; ///< its places number the nodes
    Flags& flags_;
    std::vector<uint32_t> faces_, nodes_, leads_;
    std::vector<uint32_t> ring_;
};

} // namespace tessora::atlas
