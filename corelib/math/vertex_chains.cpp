#include "corelib/math/vertex_chains.h"

bool VertexChains::reserve(uint32_t vertices, uint32_t max_lists) {
    if (!parents_.alloc(max_lists) || !stamps_.alloc(vertices) || !lists_.alloc(vertices))
        return false;
    for (uint32_t v = 0; v < vertices; ++v)
        stamps_.data()[v] = k_no_list;
    return true;
}

void VertexChains::start(uint32_t polygon) {
    polygon_ = polygon;
    lists_made_ = 0;
    list_count_ = 0;
    extra_count_ = 0;
}

uint32_t VertexChains::find_vertex_list(uint32_t vertex) {
    if (stamps_.get(vertex) != polygon_)
        return k_no_list;
    uint32_t first = root(lists_.get(vertex));
    for (uint32_t i = 0; i < extra_count_; ++i) {
        const uint32_t other = extras_[i].vertex == vertex ? root(extras_[i].list) : first;
        first = other < first ? other : first;
    }
    return first;
}

void VertexChains::new_list(uint32_t vertex) {
    const uint32_t list = lists_made_++;
    parents_.data()[list] = list;
    ++list_count_;
    add(list, vertex);
}

void VertexChains::add(uint32_t list, uint32_t vertex) {
    if (stamps_.get(vertex) != polygon_) {
        stamps_.data()[vertex] = polygon_;
        lists_.data()[vertex] = list;
    } else if (root(lists_.get(vertex)) != list) {
        extras_[extra_count_++] = Extra{vertex, list};
    }
}

void VertexChains::merge_vertex_lists(uint32_t a, uint32_t b) {
    parents_.data()[b] = a;
    --list_count_;
}

bool VertexChains::has_vertex_in_two_lists() {
    for (uint32_t i = 0; i < extra_count_; ++i)
        if (root(extras_[i].list) != root(lists_.get(extras_[i].vertex)))
            return true;
    return false;
}

/// Find with path halving.
uint32_t VertexChains::root(uint32_t list) {
    uint32_t* const parents = parents_.data();
    while (parents[list] != list) {
        parents[list] = parents[parents[list]];
        list = parents[list];
    }
    return list;
}
