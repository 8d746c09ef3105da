/// Records calls of malloc and free. The linker routes those of this program and its static
/// libraries through wrappers; those of shared libraries are not seen.
#pragma once

#include <cstddef>
#include <vector>

/// Records the blocks of malloc during its lifetime, and can make one request fail.
class MallocWatch {
public:
    static constexpr int k_none = -1;

    /// Request number `fail` (0 = the first) returns null.
    explicit MallocWatch(int fail = k_none);
    ~MallocWatch();
    MallocWatch(const MallocWatch&) = delete;
    MallocWatch& operator=(const MallocWatch&) = delete;

    /// Sizes of all requests so far, in bytes.
    static std::vector<size_t> requests();
    /// Sizes of the blocks not yet freed.
    static std::vector<size_t> live();
    /// Frees the live blocks, for tests of code that leaks them on purpose.
    static void free_live();
};
