#include "tests/plugin/atlas_call_watch.h"

#include "corelib/array.h"
#include "corelib/math/atlas_context.h"
#include "corelib/vertex.h"

AtlasCall& atlas_call() {
    static AtlasCall record;
    return record;
}

void* device_window = nullptr;

namespace {

void record_result(ID3DXMesh& mesh, AtlasCall& record) {
    void* data = nullptr;
    if (FAILED(mesh.LockVertexBuffer(0, &data)))
        return;
    auto* const vertices = static_cast<Vertex*>(data);
    record.uvs.clear();
    for (DWORD i = 0; i < mesh.GetNumVertices(); ++i) {
        vertices[i].u *= record.uv_scale;
        vertices[i].v *= record.uv_scale;
        record.uvs.push_back(vertices[i].u);
        record.uvs.push_back(vertices[i].v);
    }
    mesh.UnlockVertexBuffer();
}

} // namespace

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
    record.blocks = live_blocks;
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
    const HRESULT result = __real_D3DXUVAtlasCreate(
        mesh, max_charts, max_stretch, width, height, gutter, texture_index, adjacency, false_edges,
        imt_array, callback, callback_frequency, user_context, options, mesh_out, face_partitioning,
        vertex_remap, max_stretch_out, num_charts);
    if (SUCCEEDED(result))
        record_result(**mesh_out, record);
    record.stretch_out = *max_stretch_out;
    record.charts_out = *num_charts;
    return result;
}

// create_device(AtlasContext&, void*, uint32_t, float, uint32_t, uint32_t, float, bool)
bool __real__Z13create_deviceR12AtlasContextPvjfjjfb(AtlasContext&, void*, uint32_t, float,
                                                     uint32_t, uint32_t, float, bool);
bool __wrap__Z13create_deviceR12AtlasContextPvjfjjfb(AtlasContext& context, void* window,
                                                     uint32_t max_charts, float max_stretch,
                                                     uint32_t width, uint32_t height, float gutter,
                                                     bool high_quality) {
    device_window = window;
    return __real__Z13create_deviceR12AtlasContextPvjfjjfb(context, window, max_charts, max_stretch,
                                                           width, height, gutter, high_quality);
}
}
