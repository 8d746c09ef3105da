#include "atlas/geometry/min_cut.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {

MinCut::MinCut(uint32_t nodes)
    : node_count_(nodes), arcs_of_(size_t(nodes) + 2), level_(size_t(nodes) + 2),
      next_(size_t(nodes) + 2) {}

void MinCut::add_edge(uint32_t a, uint32_t b, int64_t capacity) {
    arcs_of_[a].push_back(uint32_t(arc_.size()));
    arc_.push_back({b, capacity});
    arcs_of_[b].push_back(uint32_t(arc_.size()));
    arc_.push_back({a, capacity});
}

/// Numbers the nodes by their distance from the source over arcs with capacity left. False if the
/// sink is not reached.
bool MinCut::find_levels() {
    std::fill(level_.begin(), level_.end(), k_unreached);
    std::fill(next_.begin(), next_.end(), 0);
    path_.assign(1, source());
    level_[source()] = 0;
    for (size_t i = 0; i < path_.size(); ++i)
        for (uint32_t a : arcs_of_[path_[i]])
            if (arc_[a].left > 0 && level_[arc_[a].head] == k_unreached) {
                level_[arc_[a].head] = level_[path_[i]] + 1;
                path_.push_back(arc_[a].head);
            }
    return level_[sink()] != k_unreached;
}

/// Sends flow along one path from level to level and returns how much; 0 if there is no more.
int64_t MinCut::augment() {
    path_.clear();
    for (uint32_t at = source(); at != sink();) {
        if (next_[at] < arcs_of_[at].size()) {
            const uint32_t a = arcs_of_[at][next_[at]];
            if (arc_[a].left > 0 && level_[arc_[a].head] == level_[at] + 1) {
                path_.push_back(a);
                at = arc_[a].head;
            } else {
                ++next_[at];
            }
        } else {
            if (path_.empty())
                return 0;
            at = arc_[path_.back() ^ 1].head; // a dead end: back, and on with the next arc
            path_.pop_back();
            ++next_[at];
        }
    }
    int64_t flow = std::numeric_limits<int64_t>::max();
    for (uint32_t a : path_)
        flow = std::min(flow, arc_[a].left);
    for (uint32_t a : path_) {
        arc_[a].left -= flow;
        arc_[a ^ 1].left += flow;
    }
    return flow;
}

int64_t MinCut::solve() {
    int64_t cut = 0;
    while (find_levels())
        while (const int64_t flow = augment())
            cut += flow;
    return cut;
}

} // namespace tessora::atlas
