/// Minimum cut of an undirected graph between a source and a sink, by augmenting paths of least
/// length: E. Dinic, "Algorithm for solution of a problem of maximum flow in networks with power
/// estimation", 1970. Suits graphs of small diameter, such as the dual of a narrow band of faces.
#pragma once

#include <cstdint>
#include <vector>

namespace tessora::atlas {

class MinCut {
public:
    /// A graph without edges, with the given number of nodes beside source and sink.
    explicit MinCut(uint32_t nodes) { reset(nodes); }
    /// The same, again; keeps the memory.
    void reset(uint32_t nodes);
    /// Edges between two nodes, or between a node and source() or sink(). Capacities are at least 0
    /// and their sum is below 2^63.
    void add_edge(uint32_t a, uint32_t b, int64_t capacity);
    uint32_t source() const { return node_count_; }
    uint32_t sink() const { return node_count_ + 1; }
    /// Finds the cut and returns its capacity. After it, on_source_side() tells the sides: of
    /// several minimum cuts that with the fewest nodes on the side of the source.
    int64_t solve();
    bool on_source_side(uint32_t node) const { return level_[node] != k_unreached; }

private:
    static constexpr uint32_t k_unreached = uint32_t(-1);
    struct Edge {
        uint32_t a, b;
        int64_t capacity;
    };
    /// One direction of an edge.
    struct Arc {
        uint32_t head, reverse; ///< node that it goes to; place of the other direction
        int64_t left;           ///< residual capacity
    };
    void make_arcs();
    bool find_levels();
    template <class Residual>
    bool spread(uint32_t from, uint32_t to, Residual residual);
    int64_t augment();
    int64_t send_along_path();

    uint32_t node_count_ = 0;
    std::vector<Edge> edge_;
    std::vector<Arc> arc_;               ///< by the node that they come from
    std::vector<uint32_t> begin_;        ///< per node: its first arc
    std::vector<uint32_t> level_, next_; ///< per node: edges to the sink; place to try next
    std::vector<uint32_t> path_;         ///< workspace: of arcs, or the queue of find_levels
};

} // namespace tessora::atlas
