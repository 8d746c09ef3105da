// Minimum cuts, against all cuts of small graphs.
#include "atlas/geometry/min_cut.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <utility>

namespace {

using tessora::atlas::MinCut;

struct Edge {
    uint32_t a, b;
    int64_t capacity;
};

/// The capacity of the cut between the nodes whose bits are set and the others; the source, node
/// `count`, is with the former, the sink, node `count` + 1, with the latter.
int64_t capacity_of(uint32_t nodes, uint32_t count, const std::vector<Edge>& edges) {
    const auto on_source_side = [&](uint32_t n) { return n == count || (nodes >> n & 1) != 0; };
    int64_t sum = 0;
    for (const Edge& e : edges)
        if (on_source_side(e.a) != on_source_side(e.b))
            sum += e.capacity;
    return sum;
}

TEST(MinCutTest, NoCutOfRandomGraphsHasLessCapacityOrAsMuchAndFewerNodesAtTheSource) {
    std::mt19937 random(1);
    for (int run = 0; run < 1000; ++run) {
        const uint32_t count = 1 + random() % 7, edge_count = random() % 20;
        MinCut graph(count);
        std::vector<Edge> edges;
        for (uint32_t i = 0; i < edge_count; ++i) {
            const uint32_t a = random() % (count + 2), b = random() % (count + 2);
            if (a == b)
                continue;
            edges.push_back({a, b, int64_t(random() % 100)});
            graph.add_edge(a, b, edges.back().capacity);
        }
        int64_t least = capacity_of(0, count, edges);
        for (uint32_t nodes = 1; nodes < 1u << count; ++nodes)
            least = std::min(least, capacity_of(nodes, count, edges));
        ASSERT_EQ(graph.solve(), least);
        uint32_t at_source = 0;
        for (uint32_t n = 0; n < count; ++n)
            at_source |= uint32_t(graph.on_source_side(n)) << n;
        EXPECT_EQ(capacity_of(at_source, count, edges), least);
        for (uint32_t nodes = 0; nodes < 1u << count; ++nodes)
            if (capacity_of(nodes, count, edges) == least) {
                EXPECT_EQ(at_source & ~nodes, 0u) << "not in every minimum cut";
            }
    }
}

TEST(MinCutTest, FlowAgainstEarlierFlowCancelsItFirst) {
    // The short path goes from a to b; what comes later has to go from b to a with twice that.
    const uint32_t a = 0, b = 1, c = 2, d = 3, e = 4, f = 5;
    MinCut graph(6);
    for (const auto& [from, to] : {std::pair{graph.source(), a}, {a, b}, {b, graph.sink()}})
        graph.add_edge(from, to, 1);
    for (const auto& [from, to] :
         {std::pair{graph.source(), c}, {c, d}, {d, b}, {a, e}, {e, f}, {f, graph.sink()}})
        graph.add_edge(from, to, 2);
    EXPECT_EQ(graph.solve(), 3);
}

TEST(MinCutTest, WithoutAPathToTheSinkOnlyWhatHangsOnTheSourceIsOnItsSide) {
    MinCut graph(3);
    graph.add_edge(graph.source(), 0, 7);
    graph.add_edge(1, graph.sink(), 7);
    EXPECT_EQ(graph.solve(), 0);
    EXPECT_TRUE(graph.on_source_side(0));
    EXPECT_FALSE(graph.on_source_side(1));
    EXPECT_FALSE(graph.on_source_side(2));
}

} // namespace
