#include "atlas/geometry/min_cut.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {

void MinCut::reset(uint32_t nodes) {
    node_count_ = nodes;
    arc_.clear();
    level_.resize(size_t(nodes) + 2);
}

void MinCut::add_edge(uint32_t a, uint32_t b, int64_t capacity) {
    arc_.push_back({b, capacity});
    arc_.push_back({a, capacity});
}

/// Lists the arcs by the node that they come from, each node's in the order of adding.
void MinCut::sort_arcs() {
    begin_.assign(size_t(node_count_) + 3, 0);
    for (size_t a = 0; a < arc_.size(); ++a)
        ++begin_[arc_[a ^ 1].head + 1];
    for (size_t n = 1; n < begin_.size(); ++n)
        begin_[n] += begin_[n - 1];
    next_.assign(begin_.begin(), begin_.end() - 1);
    listed_.resize(arc_.size());
    for (size_t a = 0; a < arc_.size(); ++a)
        listed_[next_[arc_[a ^ 1].head]++] = uint32_t(a);
}

/// Numbers the nodes by their distance from the source over arcs with capacity left, as far as the
/// sink. False if that is not reached.
bool MinCut::find_levels() {
    std::fill(level_.begin(), level_.end(), k_unreached);
    std::copy(begin_.begin(), begin_.end() - 1, next_.begin());
    path_.assign(1, source());
    level_[source()] = 0;
    for (size_t i = 0; i < path_.size(); ++i) {
        const uint32_t node = path_[i];
        for (uint32_t k = begin_[node]; k < begin_[node + 1]; ++k) {
            const Arc& arc = arc_[listed_[k]];
            if (arc.left <= 0 || level_[arc.head] != k_unreached)
                continue;
            level_[arc.head] = level_[node] + 1;
            if (arc.head == sink())
                return true;
            path_.push_back(arc.head);
        }
    }
    return false;
}

/// Sends flow along paths from level to level until there are no more; returns how much.
int64_t MinCut::augment() {
    int64_t sum = 0;
    path_.clear();
    for (uint32_t at = source();;) {
        if (at == sink()) {
            sum += send_along_path();
            size_t kept = 0; // the path as far as it has capacity left
            while (arc_[path_[kept]].left > 0)
                ++kept;
            at = arc_[path_[kept] ^ 1].head;
            path_.resize(kept);
        } else if (next_[at] < begin_[at + 1]) {
            const uint32_t a = listed_[next_[at]];
            if (arc_[a].left > 0 && level_[arc_[a].head] == level_[at] + 1) {
                path_.push_back(a);
                at = arc_[a].head;
            } else {
                ++next_[at];
            }
        } else {
            if (path_.empty())
                return sum;
            at = arc_[path_.back() ^ 1].head; // a dead end: back, and on with the next arc
            path_.pop_back();
            ++next_[at];
        }
    }
}

int64_t MinCut::send_along_path() {
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
    sort_arcs();
    while (find_levels())
        cut += augment();
    return cut;
}

} // namespace tessora::atlas
