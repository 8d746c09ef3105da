/// A part of the atlas copied into a Patch for solving, with the way back.
#pragma once

#include "atlas/charts/chart_set.h"

namespace tessora::atlas {

/// Usage: clear(), add_node() for every corner or node, patch.add_face() for every triangle, solve
/// `patch`, store(). Keeps its memory between uses.
struct PatchCopy {
    Patch patch;
    std::vector<uint32_t> nodes; ///< node of each patch vertex that add_node() made

    explicit PatchCopy(const ChartSet& set) : set_(set) {}
    void clear() {
        nodes.clear();
        patch.clear();
    }
    /// Copies a node unless that was done already; returns its vertex in the patch.
    uint32_t add_node(uint32_t node, Vec2 uv, bool pinned) {
        if (!has_node(node)) {
            set_.place[node] = patch.add_vertex(uv, pinned);
            nodes.push_back(node);
        }
        return vertex(node);
    }
    /// Copies the corner triangles of the polygon that `lead` stands for as guards, with those of
    /// their nodes that are missing.
    void add_guards(uint32_t lead, bool pinned) {
        for (const Polygons::CornerTriangle& corner : set_.polygons->corner_triangles(lead))
            add_guard(corner, pinned);
    }
    /// The patch vertex of a node that was added.
    uint32_t vertex(uint32_t node) const { return set_.place[node]; }
    /// Writes the patch's coordinates back to the nodes.
    void store(ChartSet& set) const {
        for (uint32_t i = 0; i < nodes.size(); ++i)
            set.uv[nodes[i]] = patch.uv[i];
    }

private:
    bool has_node(uint32_t node) const {
        return set_.place[node] < nodes.size() && nodes[set_.place[node]] == node;
    }
    void add_guard(const Polygons::CornerTriangle& corner, bool pinned) {
        uint32_t v[3];
        for (int k = 0; k < 3; ++k) {
            const uint32_t n = set_.node[corner.corner[k]];
            v[k] = add_node(n, set_.uv[n], pinned);
        }
        if (!patch.pinned[v[0]] || !patch.pinned[v[1]] || !patch.pinned[v[2]])
            patch.add_guard(corner.frame, v[0], v[1], v[2]);
    }

    const ChartSet& set_; ///< its places number the nodes
};

} // namespace tessora::atlas
