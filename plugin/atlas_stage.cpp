#include "plugin/atlas_stage.h"

#include "corelib/math/atlas_context.h"
#include "corelib/math/atlas_mesh.h"
#include "corelib/math/log_critical.h"
#include "corelib/math/run_uvatlas.h"
#include "corelib/math/uv_adjustments.h"
#include "plugin/adjacency.h"
#include "plugin/mesh_data.h"
#include "plugin/unwrapper.h"

#include <maya/M3dView.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

/// A copy of `real_edges`, which is freed, for the atlas call, which may change it. Allocated like
/// the adjacency list: four words per entry and never less than `index_count`. Entries that the
/// copy lacks mark real edges; the rest, which nobody reads, is left alone, so that it takes no
/// memory.
uint32_t* copy_false_edges(array<uint32_t> real_edges, uint32_t index_count) {
    const uint32_t count = real_edges.count();
    const size_t words = std::max<size_t>(4 * static_cast<size_t>(count), index_count);
    auto* const false_edges = static_cast<uint32_t*>(std::malloc(words * sizeof(uint32_t)));
    if (false_edges == nullptr) {
        log_critical("Out of memory, can not generate false edges");
        return nullptr;
    }
    for (uint32_t i = 0; i < count; ++i)
        false_edges[i] = real_edges.get(i);
    std::fill(false_edges + count, false_edges + std::max(count, index_count), k_marked);
    return false_edges;
}

/// False without a log line if there is no main window: the driver has already checked for one.
bool open_device(AtlasContext& context, const UnwrapSettings& settings) {
    MStatus status;
    M3dView::active3dView(&status);
    if (status == MS::kFailure)
        return false;
    void* const window = (void*)M3dView::applicationShell(&status);
    if (status == MS::kFailure)
        return false;
    const uint32_t any_number_of_charts = 0; // deliberate: the stretch limit alone decides
    return create_device(
        context, window, any_number_of_charts, static_cast<float>(settings.stretch),
        static_cast<uint32_t>(settings.tex_width), static_cast<uint32_t>(settings.tex_height),
        static_cast<float>(settings.padding), settings.high_quality);
}

/// Makes the atlas of `mesh`, adjusts it and reads it back. The caller releases `out_mesh`.
bool make_atlas(AtlasContext& context, ID3DXMesh* mesh, ID3DXMesh*& out_mesh,
                const uint32_t* adjacency, uint32_t* false_edges, array<Vertex>& atlas_vertices,
                array<uint32_t>& atlas_indices) {
    // Deliberate: the remap buffer is neither read nor released.
    ID3DXBuffer* remap_buffer = nullptr;
    if (!run_uvatlas(context, mesh, &out_mesh, &remap_buffer, progress_callback<set_progress>, true,
                     nullptr, nullptr, adjacency, false_edges, true))
        return false;
    fit_uv_range(context, out_mesh);
    correct_aspect(context, out_mesh);
    apply_gutter_margin(context, out_mesh);
    return read_back(context, out_mesh, atlas_vertices, atlas_indices);
}

} // namespace

bool generate_atlas(Unwrapper& unwrapper, array<Vertex> vertices, array<uint32_t> indices,
                    array<uint32_t> cut_edges, array<uint32_t> real_edges,
                    array<Vertex>& atlas_vertices, array<uint32_t>& atlas_indices) {
    UnwrapSettings& settings = unwrapper.settings();
    uint32_t* false_edges = nullptr;
    if (settings.skip_false_edges == 0) {
        false_edges = copy_false_edges(std::move(real_edges), indices.count());
        if (false_edges == nullptr)
            return false;
    }
    AtlasContext context;
    ID3DXMesh* mesh = nullptr;
    ID3DXMesh* out_mesh = nullptr;
    bool done = false;
    if (open_device(context, settings)) {
        // Deliberate: if mesh or adjacency cannot be made although the device could, the library is
        // in an unknown state; device, mesh and false edges are then leaked, not released.
        mesh = create_mesh(context, std::move(vertices), std::move(indices));
        if (mesh == nullptr)
            return false;
        uint32_t* const adjacency = build_adjacency(unwrapper, mesh, cut_edges);
        if (adjacency == nullptr)
            return false;
        cut_edges = array<uint32_t>();
        done = make_atlas(context, mesh, out_mesh, adjacency, false_edges, atlas_vertices,
                          atlas_indices);
        if (done) {
            settings.stretch_result = context.stretch_out;
            settings.charts_result = static_cast<int32_t>(context.charts_out);
        }
        std::free(adjacency);
    }
    std::free(false_edges);
    if (mesh != nullptr)
        mesh->Release();
    if (out_mesh != nullptr)
        out_mesh->Release();
    release_device(context);
    return done;
}
