/// A reproducible random generator.
#pragma once

#include <cstdint>

namespace tessora::atlas {

/// Source: G. Marsaglia, "Xorshift RNGs", 2003.
class Random {
public:
    /// A number in 0 .. n - 1; n > 0.
    uint32_t below(uint32_t n) {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return uint32_t((state_ >> 32) * n >> 32);
    }

private:
    uint64_t state_ = 0x9E3779B97F4A7C15ull;
};

} // namespace tessora::atlas
