/// Fuzz target: charts of the UV-atlas engine, unpacked. The first bytes choose options, the rest
/// is taken literally as positions, indices, adjacency and false edges, in or out of range.
/// Accepted input must keep the engine's promises as the tests' judge knows them.
#include "fuzz/finding.h"
#include "fuzz/random_mesh.h"

namespace {

using namespace tessora::atlas;

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
    const bool connect = input.ConsumeBool();
    // Mostly so few that hundreds of meshes are tried in a second.
    const bool is_large = input.ConsumeIntegral<uint8_t>() % 32 == 0;
    const atlas_test::TestMesh mesh =
        random_mesh(input, connect, is_large ? 20 : 7, is_large ? 24 : 6);
    Result result;
    std::vector<uint32_t> adjacency;
    const Failure failure = partition(mesh.view(), options, result, adjacency);
    if (failure.status == Status::out_of_memory)
        report_finding("out of memory on a small mesh");
    if (failure.status != Status::ok)
        return 0;
    report_finding(shape_fault(mesh, result));
    // The judge takes neighbours for granted.
    if (connect && mesh.false_edges.empty() && is_moderate(mesh))
        for (const std::string& fault :
             atlas_test::judge(mesh, options, result, false, true).faults)
            report_finding(fault);
    return 0;
}
