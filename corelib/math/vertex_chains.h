/// The vertex lists (chains) of one polygon at a time, for the false-edge repair. Only the
/// membership, order and number of the lists matter, so a list is a node of a union-find forest.
#pragma once

#include "corelib/array.h"

#include <cstdint>

/// A list's name is its index in the order of creation. A merged list keeps the name, and so the
/// position, of the list that received the other.
class VertexChains {
public:
    static constexpr uint32_t k_no_list = 0xFFFFFFFFu;

    /// Allocates for `vertices` mesh vertices and `max_lists` lists of one polygon. False if memory
    /// runs out; no other function may then be called.
    bool reserve(uint32_t vertices, uint32_t max_lists);

    /// Drops all lists and starts a polygon, which is identified by its first face.
    void start(uint32_t polygon);

    uint32_t list_count() const { return list_count_; }

    /// The first list that holds `vertex`, or k_no_list.
    uint32_t find_vertex_list(uint32_t vertex);

    void new_list(uint32_t vertex);
    void add(uint32_t list, uint32_t vertex);

    /// Appends list `b` to list `a`; `b` no longer exists.
    void merge_vertex_lists(uint32_t a, uint32_t b);

    /// Whether any vertex is in two lists. If none is, two vertices in the same list stay in the
    /// same list whatever is merged later.
    bool has_vertex_in_two_lists();

private:
    struct Extra {
        uint32_t vertex;
        uint32_t list;
    };

    uint32_t root(uint32_t list);

    uint32_t polygon_ = k_no_list;
    uint32_t lists_made_ = 0;
    uint32_t list_count_ = 0;
    array<uint32_t> parents_; ///< of lists; a root is its own parent
    array<uint32_t> stamps_;  ///< per vertex: the polygon for which its entry in `lists_` is valid
    array<uint32_t> lists_;   ///< per vertex: the list it was put into first
    // Second and third list of a vertex. Only the corners of a polygon's first face can have them.
    Extra extras_[3];
    uint32_t extra_count_ = 0;
};
