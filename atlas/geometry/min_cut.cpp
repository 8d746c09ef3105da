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

/// Numbers the nodes by their distance to the sink over arcs with capacity left, as far as the
/// source: paths that follow the numbers then have few dead ends. False if that is not reached.
bool MinCut::find_levels() {
    std::copy(begin_.begin(), begin_.end() - 1, next_.begin());
    return spread(sink(), source(), 1);
}

/// Numbers the nodes by their distance from `from`, as far as `to`, over arcs with capacity left:
/// arcs back to `from` if `back` is 1. Returns whether `to` is reached.
bool MinCut::spread(uint32_t from, uint32_t to, uint32_t back) {
    std::fill(level_.begin(), level_.end(), k_unreached);
    path_.assign(1, from);
    level_[from] = 0;
    for (size_t i = 0; i < path_.size(); ++i) {
        const uint32_t node = path_[i];
        for (uint32_t k = begin_[node]; k < begin_[node + 1]; ++k) {
            const uint32_t a = listed_[k], next = arc_[a].head;
            if (level_[next] != k_unreached || arc_[a ^ back].left <= 0)
                continue;
            level_[next] = level_[node] + 1;
            if (next == to)
                return true;
            path_.push_back(next);
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
            if (arc_[a].left > 0 && level_[arc_[a].head] + 1 == level_[at]) {
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
    spread(source(), sink(), 0); // for on_source_side()
    return cut;
}

} // namespace tessora::atlas
