/// A fake engine for tests of the atlas calls: it records its arguments, returns a status set by
/// the test, and makes every triangle a separate chart.
#pragma once

#include "atlas/atlas.h"

#include <cstdint>
#include <vector>

namespace fake_engine {

struct State {
    // Behaviour of the next call.
    tessora::atlas::Failure failure;
    std::vector<float> fractions;       ///< progress to report, until a callback returns non-zero
    std::vector<float> stage_fractions; ///< the same, for the packing stage
    std::vector<uint32_t> over_limit;
    // Arguments of the last call.
    unsigned creates = 0;
    unsigned partitions = 0;
    tessora::atlas::Options options;
    std::vector<float> positions;
    std::vector<uint32_t> indices;
    std::vector<uint32_t> adjacency;
    std::vector<uint32_t> false_edges;
};

State& state();

inline constexpr float k_stretch = 0.125f;

/// The UV that the fake engine assigns to new vertex `i` (corner i of the mesh).
inline float u_of(uint32_t i) { return 0.25f * static_cast<float>(i); }
inline float v_of(uint32_t i) { return 100.0f + static_cast<float>(i); }

} // namespace fake_engine
