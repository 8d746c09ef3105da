#include "atlas/geometry/min_cut.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {

void MinCut::reset(uint32_t nodes) {
    node_count_ = nodes;
    edge_.clear();
    level_.resize(size_t(nodes) + 2);
}

void MinCut::add_edge(uint32_t a, uint32_t b, int64_t capacity) {
    edge_.push_back({a, b, capacity});
}

/// Makes the arcs, each node's in the order in which its edges were added.
void MinCut::make_arcs() {
    begin_.assign(size_t(node_count_) + 3, 0);
    for (const Edge& e : edge_) {
        ++begin_[e.a + 1];
        ++begin_[e.b + 1];
    }
    for (size_t n = 1; n < begin_.size(); ++n)
        begin_[n] += begin_[n - 1];
    next_.assign(begin_.begin(), begin_.end() - 1);
    arc_.resize(2 * edge_.size());
    for (const Edge& e : edge_) {
        const uint32_t there = next_[e.a]++, back = next_[e.b]++;
        arc_[there] = {e.b, back, e.capacity};
        arc_[back] = {e.a, there, e.capacity};
    }
}

/// Numbers the nodes by their distance to the sink over arcs with capacity left, as far as the
/// source: paths that follow the numbers then have few dead ends. False if that is not reached.
bool MinCut::find_levels() {
    std::copy(begin_.begin(), begin_.end() - 1, next_.begin());
    return spread(sink(), source(), [this](const Arc& arc) { return arc_[arc.reverse].left; });
}

/// Numbers the nodes by their distance from `from`, as far as `to`, over arcs for which `residual`
/// is positive. Returns whether `to` is reached.
template <class Residual>
bool MinCut::spread(uint32_t from, uint32_t to, Residual residual) {
    std::fill(level_.begin(), level_.end(), k_unreached);
    path_.resize(level_.size());
    uint32_t* const queue = path_.data();
    uint32_t reached = 1;
    queue[0] = from;
    level_[from] = 0;
    for (uint32_t i = 0; i < reached; ++i) {
        const uint32_t node = queue[i], level = level_[node] + 1;
        for (uint32_t a = begin_[node]; a < begin_[node + 1]; ++a) {
            const uint32_t head = arc_[a].head;
            if (level_[head] != k_unreached || residual(arc_[a]) <= 0)
                continue;
            level_[head] = level;
            if (head == to)
                return true;
            queue[reached++] = head;
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
            at = arc_[arc_[path_[kept]].reverse].head;
            path_.resize(kept);
        } else if (next_[at] < begin_[at + 1]) {
            const uint32_t a = next_[at];
            if (arc_[a].left > 0 && level_[arc_[a].head] + 1 == level_[at]) {
                path_.push_back(a);
                at = arc_[a].head;
            } else {
                ++next_[at];
            }
        } else {
            if (path_.empty())
                return sum;
            at =
                arc_[arc_[path_.back()].reverse].head; // a dead end: back, and on with the next arc
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
        arc_[arc_[a].reverse].left += flow;
    }
    return flow;
}

int64_t MinCut::solve() {
    int64_t cut = 0;
    make_arcs();
    while (find_levels())
        cut += augment();
    spread(source(), sink(), [](const Arc& arc) { return arc.left; }); // for on_source_side()
    return cut;
}

} // namespace tessora::atlas
