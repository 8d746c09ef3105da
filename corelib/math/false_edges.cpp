#include "corelib/math/false_edges.h"

#include "corelib/math/vertex_chains.h"

namespace {

/// Marks a real edge in `false_edges_` and a missing neighbour in `adjacency_`.
constexpr uint32_t k_none = 0xFFFFFFFFu;

/// A face corner whose vertex is in no chain yet, with the chains of the next and previous corner.
struct NewCorner {
    uint32_t vertex;
    uint32_t next_list;
    uint32_t previous_list;
    bool outgoing_real; ///< the edge to the next corner
    bool incoming_real; ///< the edge from the previous corner
};

class Repair {
public:
    Repair(const uint32_t* corners, uint32_t faces, const uint32_t* adjacency,
           uint32_t* false_edges)
        : corners_(corners), faces_(faces), adjacency_(adjacency), false_edges_(false_edges) {}

    /// Allocates everything, so that lack of memory cannot leave a polygon half done.
    bool prepare(uint32_t vertices) {
        for (uint32_t i = 0; i < faces_ * 3; ++i)
            if (corners_[i] >= vertices)
                return false;
        states_.set_properties(ARRAY_ZERO_FILL);
        // Every face is queued at most once, except the three neighbours of a polygon's first face.
        return states_.alloc(faces_) && check_queue_.resize(faces_ + 3) &&
               cur_poly_faces_.resize(faces_) && chains_.reserve(vertices, faces_ + 3);
    }

    void run() {
        for (uint32_t face = 0; face < faces_; ++face) {
            if (is(face, k_checked))
                continue;
            chains_.start(face);
            cur_poly_faces_.clear();
            if (assemble_polygon(face))
                join_chains();
            else if (chains_.list_count() != 1)
                make_all_edges_real();
        }
    }

private:
    enum State : uint32_t { k_checked = 1, k_waiting = 2 };

    bool is(uint32_t face, State state) const { return (states_.get(face) & state) != 0; }
    bool is_real(uint32_t edge) const { return false_edges_[edge] == k_none; }

    /// Adds every face reachable over false edges. False if `add_face` failed for one.
    bool assemble_polygon(uint32_t cur_face) {
        cur_poly_faces_.append(cur_face);
        seed_polygon(cur_face);
        states_.data()[cur_face] = k_checked;
        for (uint32_t edge = cur_face * 3; edge < cur_face * 3 + 3; ++edge)
            if (!is_real(edge))
                queue(adjacency_[edge]);
        bool placed = true;
        while (queue_length_ != 0) {
            const uint32_t check_face = check_queue_.data()[--queue_length_];
            if (is(check_face, k_checked))
                continue;
            placed = add_face(check_face) && placed;
            cur_poly_faces_.append(check_face);
            for (uint32_t edge = check_face * 3; edge < check_face * 3 + 3; ++edge) {
                const uint32_t neighbor_index = is_real(edge) ? k_none : adjacency_[edge];
                if (neighbor_index < faces_ && !is(neighbor_index, k_waiting))
                    queue(neighbor_index);
            }
            states_.data()[check_face] = k_checked;
        }
        return placed;
    }

    /// Ignores faces that are already done and entries that are no face index.
    void queue(uint32_t face) {
        if (face >= faces_ || is(face, k_checked))
            return;
        states_.data()[face] |= k_waiting;
        check_queue_.data()[queue_length_++] = face;
    }

    void seed_polygon(uint32_t face) {
        const uint32_t a = corners_[face * 3];
        const uint32_t b = corners_[face * 3 + 1];
        const uint32_t c = corners_[face * 3 + 2];
        const bool real_bc = is_real(face * 3 + 1);
        chains_.new_list(a);
        put(b, a, is_real(face * 3));
        if (is_real(face * 3 + 2)) {
            put(c, a, true);
            merge_if_apart(chains_.find_vertex_list(a), chains_.find_vertex_list(b), real_bc);
        } else {
            put(c, b, real_bc);
        }
    }

    /// Adds a vertex to the list of `neighbour` if the edge between them is real, else to a new
    /// one.
    void put(uint32_t vertex, uint32_t neighbour, bool real) {
        if (real)
            chains_.add(chains_.find_vertex_list(neighbour), vertex);
        else
            chains_.new_list(vertex);
    }

    void merge_if_apart(uint32_t a, uint32_t b, bool joined) {
        if (joined && a != b)
            chains_.merge_vertex_lists(a, b);
    }

    /// False if two corners of the face are new.
    bool add_face(uint32_t face) {
        uint32_t lists[3];
        uint32_t new_corners = 0;
        uint32_t x = 0;
        for (uint32_t k = 0; k < 3; ++k) {
            lists[k] = chains_.find_vertex_list(corners_[face * 3 + k]);
            if (lists[k] == VertexChains::k_no_list) {
                ++new_corners;
                x = k;
            }
        }
        if (new_corners == 1) {
            const uint32_t next = (x + 1) % 3;
            const uint32_t previous = (x + 2) % 3;
            add_corner({corners_[face * 3 + x], lists[next], lists[previous], is_real(face * 3 + x),
                        is_real(face * 3 + previous)});
        }
        return new_corners < 2;
    }

    void add_corner(const NewCorner& corner) {
        if (corner.outgoing_real) {
            chains_.add(corner.next_list, corner.vertex);
            merge_if_apart(corner.next_list, corner.previous_list, corner.incoming_real);
        } else if (corner.incoming_real) {
            chains_.add(corner.previous_list, corner.vertex);
        } else {
            chains_.new_list(corner.vertex);
        }
    }

    void make_all_edges_real() {
        for (uint32_t i = 0; i < cur_poly_faces_.count(); ++i) {
            const uint32_t edge = cur_poly_faces_.get(i) * 3;
            for (uint32_t k = 0; k < 3; ++k)
                false_edges_[edge + k] = k_none;
        }
    }

    /// Opens edges between two chains, first found first, until one chain or no such edge is left.
    void join_chains() {
        uint32_t next = 0;
        while (chains_.list_count() > 1 && next < cur_poly_faces_.count()) {
            const uint32_t face = cur_poly_faces_.get(next);
            const uint32_t a = chains_.find_vertex_list(corners_[face * 3]);
            const uint32_t b = chains_.find_vertex_list(corners_[face * 3 + 1]);
            const uint32_t c = chains_.find_vertex_list(corners_[face * 3 + 2]);
            if (a == b && a == c) {
                ++next;
                continue;
            }
            open_edge(face, a != b ? face * 3 : face * 3 + 2);
            // Faces already passed have all corners in one list, unless a vertex is in two lists.
            if (chains_.has_vertex_in_two_lists())
                next = 0;
            chains_.merge_vertex_lists(a, a != b ? b : c);
        }
    }

    /// Deliberate: the edge's entry in `false_edges_` is read as the index of the face across it.
    /// For callers that mark false edges with 0 that is always face 0, so usually only the edge's
    /// own mark changes and the opposite one stays.
    void open_edge(uint32_t face, uint32_t edge) {
        const uint32_t across = false_edges_[edge];
        uint32_t back = k_none;
        for (uint32_t k = 0; across < faces_ && k < 3 && back == k_none; ++k)
            if (false_edges_[across * 3 + k] == face)
                back = across * 3 + k;
        false_edges_[edge] = k_none;
        if (back != k_none)
            false_edges_[back] = k_none;
    }

    const uint32_t* const corners_;
    const uint32_t faces_;
    const uint32_t* const adjacency_;
    uint32_t* const false_edges_;
    array<uint32_t> states_; ///< per face: State bits
    array<uint32_t> check_queue_;
    uint32_t queue_length_ = 0;
    array<uint32_t> cur_poly_faces_;
    VertexChains chains_;
};

} // namespace

void fix_false_edges(const AtlasContext&, ID3DXMesh* mesh, const uint32_t* adjacency,
                     uint32_t* false_edges) {
    void* data = nullptr;
    if (FAILED(mesh->LockIndexBuffer(D3DLOCK_READONLY, &data)) || data == nullptr)
        return;
    Repair repair(static_cast<const uint32_t*>(data), mesh->GetNumFaces(), adjacency, false_edges);
    if (repair.prepare(mesh->GetNumVertices()))
        repair.run();
    mesh->UnlockIndexBuffer();
}
