#include "platform/d3dx9/adjacency.h"

#include <algorithm>
#include <new>
#include <vector>

namespace d3dx9 {

namespace {

using Words = std::vector<uint32_t>;

constexpr uint32_t k_no_edge = 0xFFFFFFFFu;

/// With more faces, edge numbers would not fit into 32 bits.
constexpr uint32_t k_max_faces = 0x55555555u;

struct EdgeEnds {
    uint32_t low;
    uint32_t high;
};

EdgeEnds ends_of(const uint32_t* corners, uint32_t edge) {
    const uint32_t face = edge / 3 * 3;
    const uint32_t a = corners[edge];
    const uint32_t b = corners[face + (edge - face + 1) % 3];
    return a < b ? EdgeEnds{a, b} : EdgeEnds{b, a};
}

/// The face edges grouped by their lower end vertex (counting sort).
struct EdgesByVertex {
    Words first; ///< vertices + 1 positions in `edges`
    Words edges;
};

EdgesByVertex file_edges(const uint32_t* corners, uint32_t edge_count, uint32_t vertices) {
    EdgesByVertex filed;
    filed.first.assign(size_t{vertices} + 1, 0);
    filed.edges.resize(edge_count);
    for (uint32_t edge = 0; edge < edge_count; ++edge)
        ++filed.first[size_t{ends_of(corners, edge).low} + 1];
    for (size_t v = 0; v < vertices; ++v)
        filed.first[v + 1] += filed.first[v];
    // Filling backwards keeps the edges of a vertex in ascending order.
    Words next(filed.first.begin() + 1, filed.first.end());
    for (uint32_t edge = edge_count; edge-- > 0;)
        filed.edges[--next[ends_of(corners, edge).low]] = edge;
    return filed;
}

/// Counts the faces at the edges from one vertex to each higher one. Entries are stamped with the
/// vertex, so that nothing has to be cleared between vertices.
struct Users {
    explicit Users(uint32_t vertices)
        : stamp(vertices, k_no_face), count(vertices), first(vertices), second(vertices) {}

    void add(uint32_t vertex, uint32_t high, uint32_t edge) {
        if (stamp[high] != vertex) {
            stamp[high] = vertex;
            count[high] = 0;
        }
        if (count[high] == 0)
            first[high] = edge;
        else if (count[high] == 1)
            second[high] = edge;
        count[high] = std::min(count[high] + 1, 3u);
    }

    /// The other face edge, if exactly two use the same vertices; else k_no_edge.
    uint32_t partner(uint32_t high, uint32_t edge) const {
        if (count[high] != 2)
            return k_no_edge;
        return first[high] == edge ? second[high] : first[high];
    }

    Words stamp;
    Words count;
    Words first;
    Words second;
};

void connect(const uint32_t* corners, uint32_t faces, uint32_t vertices, uint32_t* adjacency) {
    const EdgesByVertex filed = file_edges(corners, faces * 3, vertices);
    Users users(vertices);
    for (uint32_t v = 0; v < vertices; ++v) {
        for (uint32_t i = filed.first[v]; i < filed.first[v + 1]; ++i)
            users.add(v, ends_of(corners, filed.edges[i]).high, filed.edges[i]);
        for (uint32_t i = filed.first[v]; i < filed.first[v + 1]; ++i) {
            const uint32_t edge = filed.edges[i];
            const uint32_t other = users.partner(ends_of(corners, edge).high, edge);
            // A degenerate face that uses an edge twice is not its own neighbour.
            const bool neighbour = other != k_no_edge && other / 3 != edge / 3;
            adjacency[edge] = neighbour ? other / 3 : k_no_face;
        }
    }
}

} // namespace

AdjacencyResult face_adjacency(const uint32_t* corners, uint32_t faces, uint32_t vertices,
                               uint32_t* adjacency) {
    if (faces > k_max_faces)
        return AdjacencyResult::out_of_memory;
    const uint32_t corner_count = faces * 3;
    if (std::any_of(corners, corners + corner_count, [=](uint32_t id) { return id >= vertices; }))
        return AdjacencyResult::index_out_of_range;
    try {
        connect(corners, faces, vertices, adjacency);
    } catch (const std::bad_alloc&) {
        return AdjacencyResult::out_of_memory;
    }
    return AdjacencyResult::ok;
}

} // namespace d3dx9
