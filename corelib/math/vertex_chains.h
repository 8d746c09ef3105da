/// The vertex lists of one polygon at a time, for the false-edge repair. Only membership, order and
/// number of the lists matter, so a list is a node of a union-find forest.
#pragma once

#include "corelib/array.h"

#include <cstdint>

/// Lists are named by their place in the order of creation. A merged list keeps the name, and so
/// the place, of the list that received the other.
class VertexChains {
public:
    static constexpr uint32_t k_no_list = 0xFFFFFFFFu;

    /// Room for the vertices of a mesh and for `max_lists` lists of one polygon. False when memory
    /// runs out; nothing else may then be called.
    bool reserve(uint32_t vertices, uint32_t max_lists);

    /// Forgets all lists and goes on to the polygon that is named by its first face.
    void start(uint32_t polygon);

    uint32_t list_count() const { return list_count_; }

    /// The first list that holds `vertex`, or k_no_list.
    uint32_t find_vertex_list(uint32_t vertex);

    void new_list(uint32_t vertex);
    void add(uint32_t list, uint32_t vertex);

    /// Appends list `b` to list `a`; `b` is gone.
    void merge_vertex_lists(uint32_t a, uint32_t b);

    /// Whether some vertex stands in two lists at once. Without such a vertex, two vertices that
    /// are found in one list stay together for good.
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
    array<uint32_t> stamps_;  ///< per vertex: the polygon for which its entry in `lists_` counts
    array<uint32_t> lists_;   ///< per vertex: the list it was put into first
    // Further lists of a vertex. Only the three corners of a polygon's first face can have any.
    Extra extras_[3];
    uint32_t extra_count_ = 0;
};
