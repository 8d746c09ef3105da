/// An engine for tests of the calls around it: it records what it is given, answers what it is
/// told, and makes every triangle a chart of its own.
#pragma once

#include "atlas/atlas.h"

#include <cstdint>
#include <vector>

namespace fake_engine {

struct State {
    // What the next call does.
    tessora::atlas::Failure failure;
    std::vector<float> fractions; ///< reported until an answer is not 0
    std::vector<uint32_t> over_limit;
    // What the last call was given.
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

/// The texture coordinate of new vertex `i`, which is corner i of the mesh.
inline float u_of(uint32_t i) { return 0.25f * static_cast<float>(i); }
inline float v_of(uint32_t i) { return 100.0f + static_cast<float>(i); }

} // namespace fake_engine
