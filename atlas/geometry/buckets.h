/// Items grouped by key (counting sort).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// Groups the items 0, 1, ... by key: those with key k are item[begin[k]] .. item[begin[k + 1] -
/// 1], in ascending order.
struct Buckets {
    std::vector<uint32_t> begin, item;

    /// All keys must be below `count`. Cost: linear.
    Buckets(const std::vector<uint32_t>& key, uint32_t count)
        : begin(std::size_t(count) + 1, 0), item(key.size()) {
        for (uint32_t k : key)
            ++begin[k + 1];
        for (uint32_t k = 0; k < count; ++k)
            begin[k + 1] += begin[k];
        std::vector<uint32_t> at(begin.begin(), begin.end() - 1);
        for (uint32_t i = 0; i < key.size(); ++i)
            item[at[key[i]]++] = i;
    }
};

} // namespace tessora::atlas
