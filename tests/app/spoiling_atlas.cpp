/// Preloaded into the program: makes layouts without area of what the engine returns.
#include "corelib/vertex.h"

#include <d3dx9.h>

#include <cstdint>
#include <dlfcn.h>

HRESULT WINAPI D3DXUVAtlasCreate(LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch, UINT width,
                                 UINT height, FLOAT gutter, DWORD texture_index,
                                 CONST DWORD* adjacency, CONST DWORD* false_edges,
                                 CONST FLOAT* imt_array, LPD3DXUVATLASCB callback,
                                 FLOAT callback_frequency, LPVOID user_context, DWORD options,
                                 LPD3DXMESH* mesh_out, LPD3DXBUFFER* face_partitioning,
                                 LPD3DXBUFFER* vertex_remap, FLOAT* max_stretch_out,
                                 UINT* num_charts) {
    // The plug-in has loaded the library for itself, so it is not among the next ones.
    void* const library = ::dlopen("libtessora_d3dx9.so", RTLD_LAZY | RTLD_NOLOAD);
    const auto engine =
        reinterpret_cast<decltype(&D3DXUVAtlasCreate)>(::dlsym(library, "D3DXUVAtlasCreate"));
    const HRESULT result =
        engine(mesh, max_charts, max_stretch, width, height, gutter, texture_index, adjacency,
               false_edges, imt_array, callback, callback_frequency, user_context, options,
               mesh_out, face_partitioning, vertex_remap, max_stretch_out, num_charts);
    void* data = nullptr;
    if (FAILED(result) || FAILED((*mesh_out)->LockVertexBuffer(0, &data)))
        return result;
    auto* const vertices = static_cast<Vertex*>(data);
    for (uint32_t i = 0; i < (*mesh_out)->GetNumVertices(); ++i)
        vertices[i].u = 0.5f;
    (*mesh_out)->UnlockVertexBuffer();
    return result;
}
