/// A set of unordered pairs of vertex ids, to test in constant time whether two vertices are
/// joined. Open addressing with linear probing; pairs are never removed.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace host {

class PairSet {
public:
    /// Allocates for `count` pairs.
    explicit PairSet(std::size_t count) : slots_(table_size(count), k_empty) {}

    bool contains(std::uint32_t a, std::uint32_t b) const {
        return slots_[slot(key(a, b))] != k_empty;
    }

    void insert(std::uint32_t a, std::uint32_t b) {
        std::uint64_t& place = slots_[slot(key(a, b))];
        if (place != k_empty)
            return;
        place = key(a, b);
        count_ += 1;
        if (2 * count_ > slots_.size())
            grow();
    }

private:
    static constexpr std::uint64_t k_empty = ~std::uint64_t{0};

    static std::size_t table_size(std::size_t count) {
        std::size_t size = 16;
        while (size < 2 * count + 2)
            size *= 2;
        return size;
    }

    static std::uint64_t key(std::uint32_t a, std::uint32_t b) {
        return (std::uint64_t{std::min(a, b)} << 32) | std::max(a, b);
    }

    /// The key's slot, or the free slot where it would be inserted.
    std::size_t slot(std::uint64_t key) const {
        const std::uint64_t mixed = key * 0x9E3779B97F4A7C15u;
        std::size_t place = static_cast<std::size_t>(mixed ^ (mixed >> 32)) & (slots_.size() - 1);
        while (slots_[place] != k_empty && slots_[place] != key)
            place = (place + 1) & (slots_.size() - 1);
        return place;
    }

    void grow() {
        std::vector<std::uint64_t> old(slots_.size() * 2, k_empty);
        old.swap(slots_);
        for (const std::uint64_t kept : old)
            if (kept != k_empty)
                slots_[slot(kept)] = kept;
    }

    std::vector<std::uint64_t> slots_;
    std::size_t count_ = 0;
};

} // namespace host
