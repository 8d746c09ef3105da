/// Fuzz target: packing, of charts that the engine makes and of charts made up, with arrays in or
/// out of range. Everything that is accepted lies in its tile, and kept charts are where they were.
/// Packing searches for a fixed time at least; it is kept short, and new charts, which offer no
/// choice, are rare.
#include "fuzz/finding.h"
#include "fuzz/random_mesh.h"

namespace {

using namespace tessora::atlas;

/// Owns the arrays of a UvMesh; the last three may be empty or of the wrong size.
struct UvArrays {
    std::vector<float> uvs, area;
    std::vector<uint32_t> indices, chart;
    std::vector<uint8_t> keep;

    UvMesh view() const {
        UvMesh mesh;
        mesh.uvs = {uvs.data(), uvs.size()};
        mesh.indices = {indices.data(), indices.size()};
        mesh.chart = {chart.data(), chart.size()};
        mesh.keep = {keep.data(), keep.size()};
        mesh.area = {area.data(), area.size()};
        return mesh;
    }
};

PackSettings random_settings(FuzzedDataProvider& input) {
    PackSettings settings;
    settings.width = input.ConsumeIntegralInRange<uint32_t>(0, 24);
    settings.height = input.ConsumeIntegralInRange<uint32_t>(0, 24);
    settings.gutter = float(input.ConsumeIntegralInRange<int>(-1, 8)) / 2;
    settings.tiles = input.ConsumeIntegralInRange<uint32_t>(0, 3);
    settings.turns = Turns(input.ConsumeIntegralInRange<int>(0, 2));
    settings.align = input.ConsumeBool();
    settings.density = Density(input.ConsumeIntegralInRange<int>(0, 2));
    settings.texels_per_unit = random_coordinate(input);
    settings.stack = Stack(input.ConsumeIntegralInRange<int>(0, 2));
    settings.effort = input.ConsumeIntegralInRange<int>(-1, 0);
    settings.quality = Quality::fast;
    return settings;
}

UvArrays random_charts(FuzzedDataProvider& input) {
    UvArrays mesh;
    const uint32_t uvs = input.ConsumeIntegralInRange<uint32_t>(0, 12);
    const uint32_t triangles = input.ConsumeIntegralInRange<uint32_t>(0, 5);
    const bool has_charts = input.ConsumeBool(), has_kept = input.ConsumeBool(),
               has_area = input.ConsumeBool();
    for (uint32_t i = 0; i < 2 * uvs; ++i)
        mesh.uvs.push_back(random_coordinate(input) / 32);
    for (uint32_t i = 0; i < 3 * triangles; ++i)
        mesh.indices.push_back(random_id(input, uvs));
    for (uint32_t i = 0; i < triangles; ++i) {
        if (has_charts)
            mesh.chart.push_back(input.ConsumeIntegral<uint8_t>() % 4);
        if (has_kept)
            mesh.keep.push_back(input.ConsumeIntegral<uint8_t>() % 4 == 0);
        if (has_area)
            mesh.area.push_back(random_coordinate(input));
    }
    return mesh;
}

bool is_in_tile(const float* uv, uint32_t tile) {
    const float u = uv[0] - float(tile % 10), v = uv[1] - float(tile / 10);
    return u >= 0 && u <= 1 && v >= 0 && v <= 1;
}

std::string corner_fault(const UvArrays& mesh, const PackResult& result, size_t corner) {
    const PackedChart& chart = result.charts[result.chart[corner / 3]];
    const float* const uv = &result.uvs[2 * corner];
    if (chart.kept)
        return std::memcmp(uv, &mesh.uvs[2 * size_t(mesh.indices[corner])], 2 * sizeof *uv) == 0
                   ? ""
                   : "a kept chart has moved";
    return is_in_tile(uv, chart.tile) ? "" : "a coordinate is outside of its tile";
}

std::string fault_of(const UvArrays& mesh, const PackSettings& settings, const PackResult& result) {
    if (result.uvs.size() != 2 * mesh.indices.size() ||
        result.chart.size() != mesh.indices.size() / 3)
        return "arrays have the wrong size";
    for (const PackedChart& chart : result.charts)
        if (chart.first_triangle >= result.chart.size() || chart.tile >= settings.tiles ||
            (chart.stacked_on != k_none && chart.stacked_on >= result.charts.size()))
            return "a chart names what does not exist";
    for (size_t corner = 0; corner < mesh.indices.size(); ++corner) {
        if (result.chart[corner / 3] >= result.charts.size())
            return "chart out of range";
        if (const std::string fault = corner_fault(mesh, result, corner); !fault.empty())
            return fault;
    }
    return "";
}

void pack_made_up_charts(FuzzedDataProvider& input) {
    const PackSettings settings = random_settings(input);
    const UvArrays mesh = random_charts(input);
    PackResult result;
    const Failure failure = pack(mesh.view(), settings, result);
    if (failure.status == Status::out_of_memory)
        report_finding("out of memory on few charts");
    if (failure.status == Status::ok)
        report_finding(fault_of(mesh, settings, result));
}

void pack_new_charts(FuzzedDataProvider& input) {
    Options options = random_options(input);
    options.width %= 25;
    options.height %= 25;
    options.quality = Quality::fast;
    const atlas_test::TestMesh mesh = random_mesh(input, true, 5, 4);
    Result result;
    if (create(mesh.view(), options, result).status != Status::ok || !mesh.false_edges.empty() ||
        !is_moderate(mesh))
        return;
    for (const std::string& fault : atlas_test::judge(mesh, options, result, true, true).faults)
        report_finding(fault);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    if (input.ConsumeIntegral<uint8_t>() % 16 == 0)
        pack_new_charts(input);
    else
        pack_made_up_charts(input);
    return 0;
}
