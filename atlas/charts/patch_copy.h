/// A part of the atlas copied into a Patch for solving, with the way back.
#pragma once

#include "atlas/charts/chart_set.h"

namespace tessora::atlas {

/// Usage: clear(), add_node() for every corner or node, patch.add_face() for every triangle, solve
/// `patch`, store(). Keeps its memory between uses.
struct PatchCopy {
    Patch patch;
    std::vector<uint32_t> nodes; ///< node of each patch vertex that add_node() made

    explicit PatchCopy(size_t node_count) : vertex_(node_count, k_none) {}
    void clear() {
        for (uint32_t n : nodes)
            vertex_[n] = k_none;
        nodes.clear();
        patch.clear();
    }
    /// Copies a node unless that was done already; returns its vertex in the patch.
    uint32_t add_node(uint32_t node, Vec2 uv, bool pinned) {
        if (vertex_[node] == k_none) {
            vertex_[node] = patch.add_vertex(uv, pinned);
            nodes.push_back(node);
        }
        return vertex_[node];
    }
    /// Copies a polygon's corner triangle as a guard, with those of its nodes that are missing.
    void add_guard(const Polygons::CornerTriangle& corner, const ChartSet& set, bool pinned) {
        uint32_t v[3];
        for (int k = 0; k < 3; ++k) {
            const uint32_t n = set.node[corner.corner[k]];
            v[k] = add_node(n, set.uv[n], pinned);
        }
        if (!patch.pinned[v[0]] || !patch.pinned[v[1]] || !patch.pinned[v[2]])
            patch.add_guard(corner.frame, v[0], v[1], v[2]);
    }
    /// The patch vertex of a node that was added.
    uint32_t vertex(uint32_t node) const { return vertex_[node]; }
    /// Writes the patch's coordinates back to the nodes.
    void store(ChartSet& set) const {
        for (uint32_t i = 0; i < nodes.size(); ++i)
            set.uv[nodes[i]] = patch.uv[i];
    }

private:
    std::vector<uint32_t> vertex_; ///< per node of the set; k_none if it was not added
};

} // namespace tessora::atlas
