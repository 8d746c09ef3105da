#include "atlas/geometry/adjacency.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <tuple>
#include <vector>

namespace tessora::atlas {

namespace {

using Words = std::vector<uint32_t>;

/// With more faces, edge numbers would not fit into 32 bits.
constexpr uint32_t k_max_faces = 0x55555555u;

struct Vector {
    double x = 0.0, y = 0.0, z = 0.0;
};

double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

struct Faces {
    const uint32_t* corners;
    uint32_t count;
    uint32_t vertices;
    VertexPositions positions;

    uint32_t from(uint32_t edge) const { return corners[edge]; }
    uint32_t to(uint32_t edge) const { return corners[edge % 3 == 2 ? edge - 2 : edge + 1]; }
    uint32_t low(uint32_t edge) const { return std::min(from(edge), to(edge)); }
    uint32_t high(uint32_t edge) const { return std::max(from(edge), to(edge)); }
    bool repeats_a_vertex(uint32_t face) const {
        const uint32_t* const c = corners + size_t{face} * 3;
        return c[0] == c[1] || c[1] == c[2] || c[2] == c[0];
    }
    Vector position(uint32_t vertex) const {
        float p[3];
        std::memcpy(p, positions.first + vertex * positions.stride, sizeof p);
        return {p[0], p[1], p[2]};
    }
    /// Twice the area long.
    Vector normal(uint32_t face) const {
        const uint32_t* const c = corners + size_t{face} * 3;
        const Vector p = position(c[0]), q = position(c[1]), r = position(c[2]);
        const Vector a{q.x - p.x, q.y - p.y, q.z - p.z}, b{r.x - p.x, r.y - p.y, r.z - p.z};
        return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
    }
};

/// The face edges grouped by their lower end vertex (counting sort).
struct EdgesByVertex {
    Words first; ///< vertices + 1 positions in `edges`
    Words edges;
};

EdgesByVertex file_edges(const Faces& faces) {
    EdgesByVertex filed;
    const uint32_t edge_count = faces.count * 3;
    filed.first.assign(size_t{faces.vertices} + 1, 0);
    for (uint32_t edge = 0; edge < edge_count; ++edge)
        ++filed.first[size_t{faces.low(edge)} + 1];
    for (size_t v = 0; v < faces.vertices; ++v)
        filed.first[v + 1] += filed.first[v];
    filed.edges.resize(edge_count);
    // Filling from the back leaves `first` where it belongs and the edges in ascending order.
    Words next(filed.first.begin() + 1, filed.first.end());
    for (uint32_t edge = edge_count; edge-- > 0;)
        filed.edges[--next[faces.low(edge)]] = edge;
    return filed;
}

/// Counts the faces at the edges from one vertex to each higher one. Entries are stamped with the
/// vertex, so that nothing has to be cleared between vertices.
struct Users {
    explicit Users(uint32_t vertices)
        : stamp(vertices, k_none), count(vertices), first(vertices), second(vertices) {}

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

    /// The other face edge, if exactly two use the same vertices; else k_none.
    uint32_t partner(uint32_t high, uint32_t edge) const {
        if (count[high] != 2)
            return k_none;
        return first[high] == edge ? second[high] : first[high];
    }

    Words stamp;
    Words count;
    Words first;
    Words second;
};

/// Edges of more than two faces: runs of face edges between the same two vertices.
struct Crowds {
    Words edges;
    Words begin = {0}; ///< of each run, and the end of the last

    bool empty() const { return edges.empty(); }
};

/// Pairs the faces at edges of exactly two; gives the other edges of more.
Crowds connect_pairs(const Faces& faces, uint32_t* adjacency) {
    const EdgesByVertex filed = file_edges(faces);
    Users users(faces.vertices);
    Crowds crowds;
    for (uint32_t v = 0; v < faces.vertices; ++v) {
        for (uint32_t i = filed.first[v]; i < filed.first[v + 1]; ++i)
            if (!faces.repeats_a_vertex(filed.edges[i] / 3))
                users.add(v, faces.high(filed.edges[i]), filed.edges[i]);
        const size_t crowded = crowds.edges.size();
        for (uint32_t i = filed.first[v]; i < filed.first[v + 1]; ++i) {
            const uint32_t edge = filed.edges[i];
            adjacency[edge] = k_none;
            if (faces.repeats_a_vertex(edge / 3))
                continue;
            const uint32_t high = faces.high(edge), other = users.partner(high, edge);
            if (other != k_none)
                adjacency[edge] = other / 3;
            else if (users.count[high] > 2)
                crowds.edges.push_back(edge);
        }
        const auto first = crowds.edges.begin() + static_cast<std::ptrdiff_t>(crowded);
        std::sort(first, crowds.edges.end(), [&](uint32_t a, uint32_t b) {
            return std::make_pair(faces.high(a), a) < std::make_pair(faces.high(b), b);
        });
        for (size_t i = crowded + 1; i <= crowds.edges.size(); ++i)
            if (i == crowds.edges.size() ||
                faces.high(crowds.edges[i]) != faces.high(crowds.edges[i - 1]))
                crowds.begin.push_back(static_cast<uint32_t>(i));
    }
    return crowds;
}

uint64_t mixed(uint64_t z) {
    z += 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
}

/// Pairs the faces at edges of more than two.
///
/// A patch is what hangs together over edges of two faces; in a doubled mesh it is one polygon,
/// however its copies are divided into triangles. Twins are patches with the same border and no
/// vertex inside.
class SheetPairing {
public:
    SheetPairing(const Faces& faces, uint32_t* adjacency) : faces_(faces), adjacency_(adjacency) {}

    void run(const Crowds& crowds) {
        const auto for_each = [&](auto visit) {
            for (size_t i = 0; i + 1 < crowds.begin.size(); ++i)
                visit(crowds.edges.data() + crowds.begin[i],
                      crowds.edges.data() + crowds.begin[i + 1]);
        };
        find_normals();
        find_trailing(crowds);
        for_each([&](auto first, auto last) {
            pair_two(first, last, [&](uint32_t face) { return has_area(face); });
            pair_two(first, last, [&](uint32_t face) { return !trailing_[face]; });
        });
        find_patches();
        rank_twins();
        for_each([&](auto first, auto last) { pair_crowd(first, last); });
    }

private:
    /// Two face edges that may become neighbours; the least is the best.
    struct Candidate {
        bool trails, lacks_area, other_patch, other_rank;
        int32_t bend; ///< 1 - cosine, in steps too wide for rounding to decide
        uint32_t distance, a, b;

        bool operator<(const Candidate& o) const {
            const auto key = [](const Candidate& c) {
                return std::make_tuple(c.trails, c.lacks_area, c.other_patch, c.other_rank, c.bend,
                                       c.distance, std::min(c.a, c.b), std::max(c.a, c.b));
            };
            return key(*this) < key(o);
        }
    };
    struct Border { ///< of a patch: sums over its edges, which do not depend on their order
        uint64_t forward = 0, backward = 0;
        uint32_t edges = 0, faces = 0;
    };

    bool has_positions() const { return faces_.positions.first != nullptr; }

    /// Unit normals; none for faces without area.
    void find_normals() {
        if (!has_positions())
            return;
        normal_.resize(faces_.count);
        std::vector<double> doubled(faces_.count);
        double sum = 0.0;
        for (uint32_t face = 0; face < faces_.count; ++face) {
            normal_[face] = faces_.normal(face);
            doubled[face] = std::sqrt(dot(normal_[face], normal_[face]));
            sum += doubled[face];
        }
        const double least = 1e-9 * sum / faces_.count;
        for (uint32_t face = 0; face < faces_.count; ++face) {
            Vector& n = normal_[face];
            const double scale = 1.0 / doubled[face];
            n = doubled[face] > least ? Vector{n.x * scale, n.y * scale, n.z * scale} : Vector{};
        }
    }

    bool has_area(uint32_t face) const {
        return !has_positions() || dot(normal_[face], normal_[face]) > 0.0;
    }

    /// Marks faces without area that connect nothing, chains of them from their ends: what others
    /// leave at a crowded edge is enough for them.
    void find_trailing(const Crowds& crowds) {
        trailing_.assign(faces_.count, 0);
        Words todo;
        for (uint32_t face = 0; face < faces_.count; ++face)
            if (!has_area(face))
                todo.push_back(face);
        if (todo.empty())
            return;
        Words crowd_of(size_t{faces_.count} * 3, k_none), users;
        for (uint32_t c = 0; c + 1 < crowds.begin.size(); ++c) {
            users.push_back(crowds.begin[c + 1] - crowds.begin[c]);
            for (uint32_t i = crowds.begin[c]; i < crowds.begin[c + 1]; ++i)
                crowd_of[crowds.edges[i]] = c;
        }
        const auto connects = [&](uint32_t edge) {
            if (crowd_of[edge] != k_none)
                return users[crowd_of[edge]] > 1;
            return adjacency_[edge] != k_none && !trailing_[adjacency_[edge]];
        };
        const auto visit_again = [&](uint32_t face) {
            if (!has_area(face) && !trailing_[face])
                todo.push_back(face);
        };
        while (!todo.empty()) {
            const uint32_t face = todo.back(), edge = 3 * face;
            todo.pop_back();
            if (trailing_[face] || connects(edge) + connects(edge + 1) + connects(edge + 2) > 1)
                continue;
            trailing_[face] = 1;
            for (const uint32_t own : {edge, edge + 1, edge + 2}) {
                const uint32_t c = crowd_of[own];
                if (c == k_none && adjacency_[own] != k_none)
                    visit_again(adjacency_[own]);
                else if (c != k_none && --users[c] == 1)
                    for (uint32_t i = crowds.begin[c]; i < crowds.begin[c + 1]; ++i)
                        visit_again(crowds.edges[i] / 3);
            }
        }
    }

    double cosine(uint32_t face, uint32_t other) const {
        return has_positions() ? dot(normal_[face], normal_[other]) : 1.0;
    }

    /// Whether the patch goes on across an edge of two faces. Not where the surface folds back onto
    /// itself: there front and back of a doubled sheet meet.
    bool goes_on(uint32_t edge) const {
        constexpr double k_folded = -0.8;
        const uint32_t face = edge / 3, other = adjacency_[edge];
        if (other == k_none || cosine(face, other) < k_folded)
            return false;
        for (uint32_t across = other * 3; across < other * 3 + 3; ++across)
            if (faces_.from(across) == faces_.to(edge) && faces_.to(across) == faces_.from(edge))
                return true;
        return false;
    }

    uint32_t find(uint32_t face) {
        while (patch_[face] != face)
            face = patch_[face] = patch_[patch_[face]];
        return face;
    }

    /// A patch has the number of its first face.
    void find_patches() {
        patch_.resize(faces_.count);
        for (uint32_t face = 0; face < faces_.count; ++face)
            patch_[face] = face;
        for (uint32_t edge = 0; edge < faces_.count * 3; ++edge)
            if (goes_on(edge)) {
                const uint32_t a = find(edge / 3), b = find(adjacency_[edge]);
                patch_[std::max(a, b)] = std::min(a, b);
            }
        for (uint32_t face = 0; face < faces_.count; ++face)
            patch_[face] = find(face);
    }

    void rank_twins() {
        border_.resize(faces_.count);
        for (uint32_t edge = 0; edge < faces_.count * 3; ++edge) {
            if (goes_on(edge) || faces_.repeats_a_vertex(edge / 3))
                continue;
            Border& border = border_[patch_[edge / 3]];
            border.forward += mixed(uint64_t{faces_.from(edge)} << 32 | faces_.to(edge));
            border.backward += mixed(uint64_t{faces_.to(edge)} << 32 | faces_.from(edge));
            ++border.edges;
        }
        for (uint32_t face = 0; face < faces_.count; ++face)
            ++border_[patch_[face]].faces;
        Words polygons;
        for (uint32_t face = 0; face < faces_.count; ++face)
            if (is_polygon(face))
                polygons.push_back(face);
        std::sort(polygons.begin(), polygons.end(), [&](uint32_t a, uint32_t b) {
            return std::make_pair(border_[a].forward, a) < std::make_pair(border_[b].forward, b);
        });
        rank_.assign(faces_.count, 0);
        for (size_t i = 1; i < polygons.size(); ++i)
            if (border_[polygons[i]].forward == border_[polygons[i - 1]].forward)
                rank_[polygons[i]] = rank_[polygons[i - 1]] + 1;
    }

    /// Whether the face is the first of a patch that is a disk without a vertex inside.
    bool is_polygon(uint32_t face) const {
        return patch_[face] == face && border_[face].faces + 2 == border_[face].edges;
    }

    bool twins(uint32_t face, uint32_t other) const {
        const uint32_t a = patch_[face], b = patch_[other];
        return is_polygon(a) && is_polygon(b) && border_[a].forward == border_[b].backward;
    }

    bool same_direction(uint32_t edge, uint32_t other) const {
        return faces_.from(edge) == faces_.from(other);
    }

    void join(uint32_t edge, uint32_t other) {
        adjacency_[edge] = other / 3;
        adjacency_[other] = edge / 3;
    }

    /// Joins the two faces at an edge that count, where there are two.
    template <class Counts>
    void pair_two(const uint32_t* first, const uint32_t* last, Counts counts) {
        const auto is_one = [&](uint32_t edge) { return counts(edge / 3); };
        if (std::count_if(first, last, is_one) != 2)
            return;
        const uint32_t* const a = std::find_if(first, last, is_one);
        const uint32_t* const b = std::find_if(a + 1, last, is_one);
        if (adjacency_[*a] == k_none && adjacency_[*b] == k_none)
            join(*a, *b);
    }

    void pair_crowd(const uint32_t* first, const uint32_t* last) {
        list_candidates(first, last);
        std::sort(candidates_.begin(), candidates_.end());
        for (const Candidate& c : candidates_)
            if (adjacency_[c.a] == k_none && adjacency_[c.b] == k_none)
                join(c.a, c.b);
    }

    void list_candidates(const uint32_t* first, const uint32_t* last) {
        constexpr size_t k_most = 64; // each way
        candidates_.clear();
        ways_[0].clear();
        ways_[1].clear();
        for (const uint32_t* edge = first; edge != last; ++edge)
            ways_[same_direction(*edge, *first) ? 0 : 1].push_back(*edge);
        const auto rank = [&](uint32_t edge) { return rank_[patch_[edge / 3]]; };
        if (std::max(ways_[0].size(), ways_[1].size()) <= k_most) {
            for (const uint32_t a : ways_[0])
                for (const uint32_t b : ways_[1])
                    add_candidate(a, b);
            return;
        }
        for (Words& way : ways_)
            std::stable_sort(way.begin(), way.end(),
                             [&](uint32_t a, uint32_t b) { return rank(a) < rank(b); });
        size_t j = 0;
        for (const uint32_t a : ways_[0]) {
            while (j < ways_[1].size() && rank(ways_[1][j]) < rank(a))
                ++j;
            for (size_t i = j; i < std::min(j + k_most, ways_[1].size()); ++i)
                if (rank(ways_[1][i]) == rank(a))
                    add_candidate(a, ways_[1][i]);
        }
    }

    void add_candidate(uint32_t a, uint32_t b) {
        const uint32_t face = a / 3, other = b / 3;
        if (twins(face, other))
            return;
        constexpr double k_steps = 1048576.0; // bends closer than a millionth are equal
        candidates_.push_back({trailing_[face] || trailing_[other],
                               !has_area(face) || !has_area(other), patch_[face] != patch_[other],
                               rank_[patch_[face]] != rank_[patch_[other]],
                               static_cast<int32_t>((1.0 - cosine(face, other)) * k_steps + 0.5),
                               face < other ? other - face : face - other, a, b});
    }

    const Faces& faces_;
    uint32_t* const adjacency_;
    std::vector<Vector> normal_;    ///< per face; empty without positions
    std::vector<uint8_t> trailing_; ///< per face: 1 without area and connecting nothing
    Words patch_;                   ///< per face: the first face of its patch
    std::vector<Border> border_;    ///< per patch, at its first face
    Words rank_;                    ///< per patch, at its first face: among twins wound alike
    std::vector<Candidate> candidates_;
    Words ways_[2];
};

} // namespace

AdjacencyResult face_adjacency(const uint32_t* corners, uint32_t faces, uint32_t vertices,
                               const VertexPositions& positions, uint32_t* adjacency) {
    if (faces > k_max_faces)
        return AdjacencyResult::out_of_memory;
    const uint32_t corner_count = faces * 3;
    if (std::any_of(corners, corners + corner_count, [=](uint32_t id) { return id >= vertices; }))
        return AdjacencyResult::index_out_of_range;
    try {
        const Faces all{corners, faces, vertices, positions};
        const Crowds crowds = connect_pairs(all, adjacency);
        if (!crowds.empty())
            SheetPairing(all, adjacency).run(crowds);
    } catch (const std::bad_alloc&) {
        return AdjacencyResult::out_of_memory;
    }
    return AdjacencyResult::ok;
}

} // namespace tessora::atlas
