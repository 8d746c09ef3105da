#include "corelib/math/run_uvatlas.h"

#include "corelib/math/false_edges.h"
#include "corelib/math/hresult_name.h"
#include "corelib/math/log_critical.h"

namespace {

/// The callback is called after every tenth of the work.
constexpr FLOAT k_callback_frequency = 0.1f;

constexpr DWORD k_texture_index = 0;

/// DWORD and uint32_t have the same size, but on some systems they are different types.
const DWORD* as_dwords(const uint32_t* words) {
    static_assert(sizeof(DWORD) == sizeof(uint32_t), "per-edge arrays have 32-bit entries");
    return reinterpret_cast<const DWORD*>(words);
}

void log_failure(HRESULT result, uint32_t max_charts, uint32_t charts) {
    if (result == static_cast<HRESULT>(D3DXERR_INVALIDMESH))
        log_critical("Non-manifold mesh!");
    else if (max_charts != 0 && charts != 0 && max_charts < charts)
        log_critical("Minimum number of charts is %d", static_cast<int>(charts));
    else
        log_critical("Unwrapping not possible. Try increasing the maximum number of charts, the "
                     "allowed stretch or the texture size.\n(%s)",
                     hresult_name(result));
}

} // namespace

bool run_uvatlas(AtlasContext& context, ID3DXMesh* mesh, ID3DXMesh** out_mesh,
                 ID3DXBuffer** remap_buffer, LPD3DXUVATLASCB callback, bool use_create,
                 ID3DXBuffer** partition_adjacency, ID3DXBuffer** face_partitioning,
                 const uint32_t* adjacency, uint32_t* false_edges, bool check_false_edges) {
    if (check_false_edges && adjacency != nullptr && false_edges != nullptr)
        fix_false_edges(context, mesh, adjacency, false_edges);
    FLOAT stretch = 0.0f;
    UINT charts = 0;
    HRESULT result;
    if (use_create)
        result = D3DXUVAtlasCreate(mesh, context.max_charts, context.max_stretch, context.width,
                                   context.height, context.gutter, k_texture_index,
                                   as_dwords(adjacency), as_dwords(false_edges), nullptr, callback,
                                   k_callback_frequency, nullptr, context.options, out_mesh,
                                   face_partitioning, remap_buffer, &stretch, &charts);
    else
        result = D3DXUVAtlasPartition(mesh, context.max_charts, context.max_stretch,
                                      k_texture_index, as_dwords(adjacency), as_dwords(false_edges),
                                      nullptr, callback, k_callback_frequency, nullptr,
                                      context.options, out_mesh, face_partitioning, remap_buffer,
                                      partition_adjacency, &stretch, &charts);
    if (FAILED(result)) {
        log_failure(result, context.max_charts, charts);
        return false;
    }
    context.stretch_out = stretch;
    context.charts_out = charts;
    return true;
}
