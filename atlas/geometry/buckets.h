/// Lists of what has the same key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// Items 0, 1, ... by key: those of key k are item[begin[k]] .. item[begin[k + 1] - 1], ascending.
struct Buckets {
    std::vector<uint32_t> begin, item;

    /// Every key is below `count`. Cost: linear.
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
