/// Options and meshes for the targets of the engine, in range or not.
#pragma once

#include "tests/atlas/check_result.h"

#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>

inline tessora::atlas::Options random_options(FuzzedDataProvider& input) {
    tessora::atlas::Options options;
    options.max_stretch = input.ConsumeBool() ? input.ConsumeProbability<float>() : 0.15f;
    options.max_charts = input.ConsumeBool() ? input.ConsumeIntegral<uint8_t>() : 0;
    options.width = input.ConsumeIntegralInRange<uint32_t>(0, 64);
    options.height = input.ConsumeIntegralInRange<uint32_t>(0, 64);
    options.gutter = float(input.ConsumeIntegralInRange<int>(-1, 16)) / 2;
    options.quality = input.ConsumeIntegral<uint8_t>() % 8 == 0 ? tessora::atlas::Quality::quality
                                                                : tessora::atlas::Quality::fast;
    return options;
}

/// Mostly small numbers on a grid, so that points coincide and triangles degenerate; at times any
/// bits at all.
inline float random_coordinate(FuzzedDataProvider& input) {
    const int value = input.ConsumeIntegral<int8_t>();
    if (value != -128)
        return float(value) / 4;
    const uint32_t bits = input.ConsumeIntegral<uint32_t>();
    float result = 0;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

/// Below `count`, except that 255 is "none" and 254 any number.
inline uint32_t random_id(FuzzedDataProvider& input, uint32_t count) {
    const uint32_t value = input.ConsumeIntegral<uint8_t>();
    if (value == 255)
        return tessora::atlas::k_none;
    return value == 254 || count == 0 ? input.ConsumeIntegral<uint32_t>() : value % count;
}

inline atlas_test::TestMesh random_mesh(FuzzedDataProvider& input, bool connect,
                                        uint32_t max_vertices, uint32_t max_faces) {
    atlas_test::TestMesh mesh;
    const uint32_t vertices = input.ConsumeIntegralInRange<uint32_t>(0, max_vertices);
    const uint32_t faces = input.ConsumeIntegralInRange<uint32_t>(0, max_faces);
    for (uint32_t i = 0; i < 3 * vertices; ++i)
        mesh.positions.push_back(random_coordinate(input));
    for (uint32_t i = 0; i < 3 * faces; ++i)
        mesh.indices.push_back(random_id(input, vertices));
    if (connect) {
        for (uint32_t& index : mesh.indices)
            index = vertices == 0 ? 0 : index % vertices;
        if (vertices > 0)
            mesh.connect();
    } else {
        for (uint32_t i = 0; i < 3 * faces; ++i)
            mesh.adjacency.push_back(random_id(input, faces));
    }
    if (input.ConsumeBool())
        for (uint32_t i = 0; i < 3 * faces; ++i)
            mesh.false_edges.push_back(input.ConsumeBool() ? tessora::atlas::k_none : 0);
    return mesh;
}

inline bool all_finite(const std::vector<float>& values) {
    for (float value : values)
        if (!std::isfinite(value))
            return false;
    return true;
}

/// True if the judge, which compares lengths, can be trusted with the mesh.
inline bool is_moderate(const atlas_test::TestMesh& mesh) {
    for (float value : mesh.positions)
        if (!(std::fabs(value) <= 32.0f && (value == 0 || std::fabs(value) >= 0.25f)))
            return false;
    return true;
}
