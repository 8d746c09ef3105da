/// Fuzz target: the UV-atlas engine. The first bytes choose options, the rest is taken literally as
/// positions, indices, adjacency and false edges, in or out of range. Accepted input must keep
/// the engine's promises as the tests' judge knows them.
#include "fuzz/finding.h"
#include "tests/atlas/check_result.h"

#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>

namespace {

using namespace tessora::atlas;

Options random_options(FuzzedDataProvider& input) {
    Options options;
    options.max_stretch = input.ConsumeBool() ? input.ConsumeProbability<float>() : 0.15f;
    options.max_charts = input.ConsumeBool() ? input.ConsumeIntegral<uint8_t>() : 0;
    options.width = input.ConsumeIntegralInRange<uint32_t>(0, 64);
    options.height = input.ConsumeIntegralInRange<uint32_t>(0, 64);
    options.gutter = float(input.ConsumeIntegralInRange<int>(-1, 16)) / 2;
    options.quality = input.ConsumeIntegral<uint8_t>() % 8 == 0 ? Quality::quality : Quality::fast;
    return options;
}

/// Mostly small numbers on a grid, so that points coincide and triangles degenerate; at times any
/// bits at all.
float random_coordinate(FuzzedDataProvider& input) {
    const int value = input.ConsumeIntegral<int8_t>();
    if (value != -128)
        return float(value) / 4;
    const uint32_t bits = input.ConsumeIntegral<uint32_t>();
    float result = 0;
    std::memcpy(&result, &bits, sizeof result);
    return result;
}

/// Below `count`, except that 255 is "none" and 254 any number.
uint32_t random_id(FuzzedDataProvider& input, uint32_t count) {
    const uint32_t value = input.ConsumeIntegral<uint8_t>();
    if (value == 255)
        return k_none;
    return value == 254 || count == 0 ? input.ConsumeIntegral<uint32_t>() : value % count;
}

atlas_test::TestMesh random_mesh(FuzzedDataProvider& input, bool connect) {
    atlas_test::TestMesh mesh;
    // Mostly so few that thousands of meshes are tried in a second.
    const bool is_large = input.ConsumeIntegral<uint8_t>() % 32 == 0;
    const uint32_t vertices = input.ConsumeIntegralInRange<uint32_t>(0, is_large ? 20 : 7);
    const uint32_t faces = input.ConsumeIntegralInRange<uint32_t>(0, is_large ? 24 : 6);
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
            mesh.false_edges.push_back(input.ConsumeBool() ? k_none : 0);
    return mesh;
}

bool all_finite(const std::vector<float>& values) {
    for (float value : values)
        if (!std::isfinite(value))
            return false;
    return true;
}

bool is_moderate(const atlas_test::TestMesh& mesh) {
    for (float value : mesh.positions)
        if (!(std::fabs(value) <= 32.0f && (value == 0 || std::fabs(value) >= 0.25f)))
            return false;
    return true;
}

std::string shape_fault(const atlas_test::TestMesh& mesh, const Result& result) {
    if (result.indices.size() != mesh.indices.size() || result.chart.size() != mesh.faces() ||
        result.uvs.size() != 2 * result.source_vertex.size())
        return "arrays have the wrong size";
    for (size_t i = 0; i < result.indices.size(); ++i)
        if (result.indices[i] >= result.source_vertex.size() ||
            result.source_vertex[result.indices[i]] != mesh.indices[i])
            return "a corner lost its vertex";
    for (uint32_t chart : result.chart)
        if (chart >= result.chart_count)
            return "chart out of range";
    return all_finite(result.uvs) ? "" : "a coordinate is not finite";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const Options options = random_options(input);
    const bool connect = input.ConsumeBool(), wants_packing = input.ConsumeBool();
    const atlas_test::TestMesh mesh = random_mesh(input, connect);
    const bool packed = wants_packing && mesh.faces() <= 3; // packing takes most of the time
    Result result;
    std::vector<uint32_t> adjacency;
    const Failure failure = packed ? create(mesh.view(), options, result)
                                   : partition(mesh.view(), options, result, adjacency);
    if (failure.status == Status::out_of_memory)
        report_finding("out of memory on a small mesh");
    if (failure.status != Status::ok)
        return 0;
    report_finding(shape_fault(mesh, result));
    // The judge takes neighbours for granted and compares lengths.
    if (connect && mesh.false_edges.empty() && is_moderate(mesh))
        for (const std::string& fault :
             atlas_test::judge(mesh, options, result, packed, true).faults)
            report_finding(fault);
    return 0;
}
