/// The UV-atlas call.
#pragma once

#include "corelib/math/atlas_context.h"

#include <cstdint>

/// Gives a plain progress function (fraction done, 0 to 1; 0 = go on) the form that the atlas call
/// wants: `progress_callback<set_progress>`.
template <int32_t (*progress)(float)>
HRESULT WINAPI progress_callback(FLOAT percent_done, LPVOID) {
    return progress(percent_done);
}

/// Cuts `mesh` into charts and, with `use_create`, packs them; without, charts keep their own
/// coordinates and `partition_adjacency` gets the adjacency with every chart border opened. With
/// `check_false_edges` and both arrays the false edges are repaired first, in place. Stretch and
/// chart count go to `context.stretch_out` and `context.charts_out`.
/// Shape:  adjacency[3*faces]; false_edges[3*faces] or none. Slots that may be none:
///         `partition_adjacency`, `face_partitioning`. What comes back in slots is the caller's.
/// Errors: false and one line: "Non-manifold mesh!" for a mesh that is refused as invalid, "Minimum
///         number of charts is N" for a chart limit below N, else "Unwrapping not possible. ..."
///         with the result's name. The context is as it was.
bool run_uvatlas(AtlasContext& context, ID3DXMesh* mesh, ID3DXMesh** out_mesh,
                 ID3DXBuffer** remap_buffer, LPD3DXUVATLASCB callback, bool use_create,
                 ID3DXBuffer** partition_adjacency, ID3DXBuffer** face_partitioning,
                 const uint32_t* adjacency, uint32_t* false_edges, bool check_false_edges);
