/// A set of unordered pairs of vertex ids, to test in constant time whether two vertices are
/// joined. Open addressing with linear probing; pairs are never removed.
#pragma once

#include "polygon/polygons.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace tessora::polygon {

class PairSet {
public:
    /// Allocates for `count` pairs.
    explicit PairSet(size_t count) : slots_(table_size(count), k_empty) {}

    bool contains(uint32_t a, uint32_t b) const { return slots_[slot(key(a, b))] != k_empty; }

    void insert(uint32_t a, uint32_t b) {
        uint64_t& place = slots_[slot(key(a, b))];
        if (place != k_empty)
            return;
        place = key(a, b);
        count_ += 1;
        if (2 * count_ > slots_.size())
            grow();
    }

private:
    static constexpr uint64_t k_empty = ~uint64_t{0};

    static size_t table_size(size_t count) {
        size_t size = 16;
        while (size < 2 * count + 2)
            size *= 2;
        return size;
    }

    static uint64_t key(uint32_t a, uint32_t b) {
        return (uint64_t{std::min(a, b)} << 32) | std::max(a, b);
    }

    /// The key's slot, or the free slot where it would be inserted.
    size_t slot(uint64_t key) const {
        const uint64_t mixed = key * 0x9E3779B97F4A7C15u;
        size_t place = static_cast<size_t>(mixed ^ (mixed >> 32)) & (slots_.size() - 1);
        while (slots_[place] != k_empty && slots_[place] != key)
            place = (place + 1) & (slots_.size() - 1);
        return place;
    }

    void grow() {
        std::vector<uint64_t> old(slots_.size() * 2, k_empty);
        old.swap(slots_);
        for (const uint64_t kept : old)
            if (kept != k_empty)
                slots_[slot(kept)] = kept;
    }

    std::vector<uint64_t> slots_;
    size_t count_ = 0;
};

/// The pairs of vertices that an edge of a polygon joins, with memory for a diagonal each.
inline PairSet edge_pairs(const Polygons& polygons) {
    PairSet pairs(polygons.corner_count() / 2 + polygons.diagonal_count());
    for (uint32_t p = 0; p < polygons.count; ++p) {
        const IndexSpan vertices = polygons.vertices(p);
        for (uint32_t i = 0; i < vertices.size(); ++i)
            pairs.insert(vertices[i], vertices[i + 1 == vertices.size() ? 0 : i + 1]);
    }
    return pairs;
}

} // namespace tessora::polygon
