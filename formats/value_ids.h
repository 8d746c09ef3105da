/// Numbers for equal values: positions or texture coordinates that are the same become one.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <unordered_map>

namespace formats {

/// Gives each value of up to four floats a number, equal for values that are equal bit for bit; -0
/// is 0.
class ValueIds {
public:
    /// The value's number; `next` if the value is new. Missing components are 0.
    uint32_t of(const float* value, size_t components, uint32_t next) {
        Bits bits = {};
        for (size_t k = 0; k < components; ++k) {
            const float word = value[k] + 0.0f; // -0 is 0
            std::memcpy(&bits[k], &word, sizeof word);
        }
        return ids_.try_emplace(bits, next).first->second;
    }
    void clear() { ids_.clear(); }
    size_t size() const { return ids_.size(); }

private:
    using Bits = std::array<uint32_t, 4>;
    struct Hash {
        size_t operator()(const Bits& bits) const {
            uint64_t hash = 1469598103934665603u;
            for (const uint32_t word : bits)
                hash = (hash ^ word) * 1099511628211u ^ (hash >> 29);
            return size_t(hash);
        }
    };
    std::unordered_map<Bits, uint32_t, Hash> ids_;
};

} // namespace formats
