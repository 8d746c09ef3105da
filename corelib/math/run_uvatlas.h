/// The UV-atlas call.
#pragma once

#include "corelib/math/atlas_context.h"

#include <cstdint>

/// Wraps a plain progress function (fraction done, 0 to 1; returns 0 to continue) as a callback of
/// the atlas call: `progress_callback<set_progress>`.
template <int32_t (*progress)(float)>
HRESULT WINAPI progress_callback(FLOAT percent_done, LPVOID) {
    return progress(percent_done);
}

/// Cuts `mesh` into charts. If `use_create` is set the charts are packed; otherwise each keeps its
/// own UV space and `partition_adjacency` receives the adjacency with every chart border opened. If
/// `check_false_edges` is set and both arrays are given, the false edges are first repaired in
/// place. Stretch and chart count are stored in `context.stretch_out` and `context.charts_out`.
/// Shape:  adjacency[3*faces]; false_edges[3*faces], may be null. `partition_adjacency` and
///         `face_partitioning` may be null. The caller owns the returned objects.
/// Errors: false and one line: "Non-manifold mesh!" for D3DXERR_INVALIDMESH, "Minimum
///         number of charts is N" for a chart limit below N, else "Unwrapping not possible. ..."
///         with the result's name. The context is unchanged.
bool run_uvatlas(AtlasContext& context, ID3DXMesh* mesh, ID3DXMesh** out_mesh,
                 ID3DXBuffer** remap_buffer, LPD3DXUVATLASCB callback, bool use_create,
                 ID3DXBuffer** partition_adjacency, ID3DXBuffer** face_partitioning,
                 const uint32_t* adjacency, uint32_t* false_edges, bool check_false_edges);
