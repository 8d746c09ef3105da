/// Fuzz target: the false-edge repair against its literal model, on any triangles, neighbours and
/// marks.
#include "corelib/array.h"
#include "corelib/math/atlas_context.h"
#include "corelib/math/atlas_mesh.h"
#include "corelib/math/false_edges.h"
#include "fuzz/finding.h"
#include "tests/corelib/math/false_edges_literal.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace {

AtlasContext& context() {
    static AtlasContext context;
    if (context.device == nullptr &&
        !create_device(context, nullptr, 0, 0.25f, 512, 512, 2.0f, true))
        report_finding("no device");
    return context;
}

constexpr uint32_t k_real = 0xFFFFFFFFu;

/// A face, at times one that does not exist.
uint32_t random_face(FuzzedDataProvider& input, uint32_t faces) {
    const uint32_t value = input.ConsumeIntegral<uint8_t>();
    return value >= 250 ? value : value % faces;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    const uint32_t vertices = input.ConsumeIntegralInRange<uint32_t>(1, 30);
    const uint32_t faces = input.ConsumeIntegralInRange<uint32_t>(1, 40);
    std::vector<uint32_t> corners, adjacency, false_edges;
    for (uint32_t i = 0; i < 3 * faces; ++i) {
        corners.push_back(input.ConsumeIntegral<uint8_t>() % vertices);
        const bool no_neighbour = input.ConsumeIntegral<uint8_t>() % 4 == 0;
        adjacency.push_back(no_neighbour ? k_real : random_face(input, faces));
        const uint32_t mark = input.ConsumeIntegral<uint8_t>() % 3;
        false_edges.push_back(mark == 0 ? k_real : mark == 1 ? 0 : random_face(input, faces));
    }
    std::vector<uint32_t> expected = false_edges;
    LiteralRepair(corners, adjacency, expected).run();

    array<Vertex> vertex_list;
    for (uint32_t i = 0; i < vertices; ++i)
        vertex_list.append(Vertex{float(i), float(2 * i), float(3 * i), 0.0f, 0.0f});
    array<uint32_t> index_list;
    for (uint32_t corner : corners)
        index_list.append(corner);
    ID3DXMesh* const mesh = create_mesh(context(), std::move(vertex_list), std::move(index_list));
    if (mesh == nullptr)
        return 0;
    fix_false_edges(context(), mesh, adjacency.data(), false_edges.data());
    mesh->Release();
    report_finding(false_edges == expected ? "" : "the repair differs from its literal model");
    return 0;
}
