/// The neighbourhood of a glued arc: the only part of two charts that a merge moves apart from the
/// rigid motion of one of them.
#pragma once

#include "atlas/charts/chart_set.h"

namespace tessora::atlas {

/// Triangles and nodes within a number of rings of an arc. Ring 0 is the arc's own nodes; a node is
/// in ring r + 1 if it shares a triangle with a node of ring r and is in no lower ring.
/// Keeps arrays over the whole mesh between uses; clear() resets only the entries in use.
class Band {
public:
    explicit Band(const ChartSet& set);
    /// Collects everything within `rings` of the arc, in breadth-first order, after clearing.
    /// True if that is all of both charts.
    bool grow(const std::vector<uint32_t>& arc_nodes, uint32_t rings);
    /// Adds a triangle without its nodes, if it is not in the band yet.
    void add_face(uint32_t t);
    /// The triangles that stand for the polygons of the band's triangles, in the band or not.
    const std::vector<uint32_t>& leads() const { return leads_; }
    bool has_face(uint32_t t) const { return has_face_[t] != 0; }
    void clear();

    const std::vector<uint32_t>& faces() const { return faces_; }
    const std::vector<uint32_t>& nodes() const { return nodes_; } ///< rings in ascending order
    /// Position of a node in nodes(); k_none outside the band.
    uint32_t place(uint32_t node) const { return place_[node]; }
    /// Ring of a node; k_none outside the band.
    uint32_t ring(uint32_t node) const {
        return place_[node] == k_none ? k_none : ring_[place_[node]];
    }

private:
    const ChartSet& set_;
    std::vector<uint32_t> faces_, nodes_, leads_;
    std::vector<uint32_t> place_;   ///< per node of the mesh: its position in nodes_, or k_none
    std::vector<uint32_t> ring_;    ///< per node of nodes_
    std::vector<uint8_t> has_face_; ///< per triangle; 0 outside the band
    std::vector<uint8_t> is_lead_;  ///< per triangle: 1 if in leads_; empty without polygons
};

} // namespace tessora::atlas
