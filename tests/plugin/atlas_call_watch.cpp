#include "tests/plugin/atlas_call_watch.h"

AtlasCall& atlas_call() {
    static AtlasCall record;
    return record;
}

extern "C" {
HRESULT WINAPI __real_D3DXUVAtlasCreate(LPD3DXMESH, UINT, FLOAT, UINT, UINT, FLOAT, DWORD,
                                        CONST DWORD*, CONST DWORD*, CONST FLOAT*, LPD3DXUVATLASCB,
                                        FLOAT, LPVOID, DWORD, LPD3DXMESH*, LPD3DXBUFFER*,
                                        LPD3DXBUFFER*, FLOAT*, UINT*);

HRESULT WINAPI __wrap_D3DXUVAtlasCreate(LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch,
                                        UINT width, UINT height, FLOAT gutter, DWORD texture_index,
                                        CONST DWORD* adjacency, CONST DWORD* false_edges,
                                        CONST FLOAT* imt_array, LPD3DXUVATLASCB callback,
                                        FLOAT callback_frequency, LPVOID user_context,
                                        DWORD options, LPD3DXMESH* mesh_out,
                                        LPD3DXBUFFER* face_partitioning, LPD3DXBUFFER* vertex_remap,
                                        FLOAT* max_stretch_out, UINT* num_charts) {
    AtlasCall& record = atlas_call();
    ++record.calls;
    record.max_charts = max_charts;
    record.max_stretch = max_stretch;
    record.width = width;
    record.height = height;
    record.gutter = gutter;
    record.texture_index = texture_index;
    record.options = options;
    record.callback_frequency = callback_frequency;
    record.has_callback = callback != nullptr;
    record.has_false_edges = false_edges != nullptr;
    record.vertices = mesh->GetNumVertices();
    record.faces = mesh->GetNumFaces();
    record.adjacency.assign(adjacency, adjacency + 3 * record.faces);
    record.false_edges.clear();
    if (false_edges != nullptr)
        record.false_edges.assign(false_edges, false_edges + 3 * record.faces);
    return __real_D3DXUVAtlasCreate(mesh, max_charts, max_stretch, width, height, gutter,
                                    texture_index, adjacency, false_edges, imt_array, callback,
                                    callback_frequency, user_context, options, mesh_out,
                                    face_partitioning, vertex_remap, max_stretch_out, num_charts);
}
}
