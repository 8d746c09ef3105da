/// The ordinary allocator under observation. The product's static libraries and the tests call it
/// through wrappers of this program; shared libraries do not.
#pragma once

#include <cstddef>
#include <vector>

/// While one lives, the blocks of malloc are written down, and one request may be made to fail.
class MallocWatch {
public:
    static constexpr int k_none = -1;

    /// Request number `fail` (0 = the first) gets no memory.
    explicit MallocWatch(int fail = k_none);
    ~MallocWatch();
    MallocWatch(const MallocWatch&) = delete;
    MallocWatch& operator=(const MallocWatch&) = delete;

    /// Sizes of all requests so far, in bytes.
    static std::vector<size_t> requests();
    /// Sizes of the blocks not yet given to free.
    static std::vector<size_t> live();
    /// Frees what is live, for blocks that the product loses on purpose.
    static void free_live();
};
