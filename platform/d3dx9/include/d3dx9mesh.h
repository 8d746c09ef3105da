/// <d3dx9mesh.h> for systems without D3DX: meshes, their adjacency, and the UV-atlas calls.
///
/// Per-edge arrays hold three DWORDs per face; entry 3f+k belongs to the edge from corner k to
/// corner (k+1)%3 of face f; 0xFFFFFFFF = no face. Single-threaded. Source: "ID3DXBaseMesh
/// interface", "D3DXCreateMesh", "D3DXUVAtlasCreate",
///         "D3DXUVAtlasPartition", Microsoft Learn.
#pragma once

#include <d3dx9core.h>

enum { MAX_FVF_DECL_SIZE = MAXD3DDECLLENGTH + 1 };

/// Creation flags of a mesh. Memory pool flags are accepted; all meshes are in system memory.
enum _D3DXMESH {
    D3DXMESH_32BIT = 0x001,
    D3DXMESH_VB_SYSTEMMEM = 0x010,
    D3DXMESH_VB_MANAGED = 0x020,
    D3DXMESH_VB_WRITEONLY = 0x040,
    D3DXMESH_VB_DYNAMIC = 0x080,
    D3DXMESH_IB_SYSTEMMEM = 0x100,
    D3DXMESH_IB_MANAGED = 0x200,
    D3DXMESH_IB_WRITEONLY = 0x400,
    D3DXMESH_IB_DYNAMIC = 0x800,
    D3DXMESH_SYSTEMMEM = 0x110,
    D3DXMESH_MANAGED = 0x220,
    D3DXMESH_WRITEONLY = 0x440,
    D3DXMESH_DYNAMIC = 0x880
};

/// Quality of an atlas. DEFAULT: quality below 25,000 faces, fast from there on.
enum D3DXUVATLAS {
    D3DXUVATLAS_DEFAULT = 0x00,
    D3DXUVATLAS_GEODESIC_FAST = 0x01,
    D3DXUVATLAS_GEODESIC_QUALITY = 0x02
};

/// Progress callback: gets the fraction done, 0 to 1; any result but S_OK cancels the call.
using LPD3DXUVATLASCB = HRESULT(WINAPI*)(FLOAT percent_done, LPVOID user_context);

/// Access to a mesh. Locks nest: every lock needs its own unlock.
struct D3D9_EXPORT ID3DXBaseMesh : IUnknown {
    virtual DWORD STDMETHODCALLTYPE GetNumFaces() = 0;
    virtual DWORD STDMETHODCALLTYPE GetNumVertices() = 0;
    /// Copies the declaration including the end marker.
    virtual HRESULT STDMETHODCALLTYPE
    GetDeclaration(D3DVERTEXELEMENT9 declaration[MAX_FVF_DECL_SIZE]) = 0;
    virtual DWORD STDMETHODCALLTYPE GetNumBytesPerVertex() = 0;
    virtual DWORD STDMETHODCALLTYPE GetOptions() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDevice(LPDIRECT3DDEVICE9* device) = 0;
    virtual HRESULT STDMETHODCALLTYPE LockVertexBuffer(DWORD flags, LPVOID* data) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockVertexBuffer() = 0;
    virtual HRESULT STDMETHODCALLTYPE LockIndexBuffer(DWORD flags, LPVOID* data) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnlockIndexBuffer() = 0;
    /// Finds the neighbour across every face edge.
    /// Shape:  point_reps[vertices] (representative of each vertex) or null (each vertex represents
    ///         itself) -> adjacency[3*faces].
    /// Two faces are neighbours across an edge if they are the only two that use it, in either
    /// direction. An edge used once, three or more times, or twice by the same face has no
    /// neighbour on any side.
    /// Cost:   O(faces + vertices) time and memory.
    /// Errors: D3DERR_INVALIDCALL (`adjacency` is null), D3DXERR_INVALIDDATA (an index or point
    ///         representative out of range), E_OUTOFMEMORY.
    virtual HRESULT STDMETHODCALLTYPE ConvertPointRepsToAdjacency(CONST DWORD* point_reps,
                                                                  DWORD* adjacency) = 0;
};

struct D3D9_EXPORT ID3DXMesh : ID3DXBaseMesh {};
using LPD3DXMESH = ID3DXMesh*;

extern "C" {
extern D3D9_EXPORT const GUID IID_ID3DXBaseMesh;
extern D3D9_EXPORT const GUID IID_ID3DXMesh;

/// Creates a buffer; the size may be 0. Errors: D3DERR_INVALIDCALL, E_OUTOFMEMORY.
D3D9_EXPORT HRESULT WINAPI D3DXCreateBuffer(DWORD num_bytes, LPD3DXBUFFER* buffer);

/// Creates a mesh with all bytes 0. Indices are 32-bit with D3DXMESH_32BIT, else 16-bit.
/// Errors: D3DERR_INVALIDCALL (no face, no vertex, no device, a declaration beyond stream 0, more
///         vertices than 16-bit indices can address), E_OUTOFMEMORY. *mesh is then null.
D3D9_EXPORT HRESULT WINAPI D3DXCreateMesh(DWORD num_faces, DWORD num_vertices, DWORD options,
                                          CONST D3DVERTEXELEMENT9* declaration,
                                          LPDIRECT3DDEVICE9 device, LPD3DXMESH* mesh);

/// Cuts a surface into charts, flattens them within `max_stretch` and packs them into a texture.
/// Faces keep their number, order and corner order; a vertex on a chart border is duplicated.
/// Shape:  adjacency[3*faces]; false_edges[3*faces] (0xFFFFFFFF = real edge, anything else = inside
///         a polygon) or null; face_partitioning: one chart id per face; vertex_remap: one source
///         vertex per new vertex. After a failure all outputs but the chart count are null or 0.
/// Units:  width, height and gutter in texels; max_stretch 0 (isometric only) to 1 (any);
///         max_charts 0 = no limit. Coordinates come back in units of the longer texture side.
/// Calls:  `callback`, unless null, after every `callback_frequency` of the work, at most every
///         tenth; the last call reports 1. Output pointers may be null.
/// Errors: D3DERR_INVALIDCALL    an invalid argument, or an entry of `adjacency` out of range
///         D3DXERR_INVALIDDATA   an index out of range, a position that is not finite
///         D3DERR_MOREDATA       the charts do not fit into the texture with this gutter
///         E_FAIL                more than max_charts charts are needed; num_charts = the minimum
///         E_NOTIMPL             `imt_array` is not null
///         E_OUTOFMEMORY         memory ran out
///         E_ABORT               cancelled by a callback result that is no failure code
D3D9_EXPORT HRESULT WINAPI D3DXUVAtlasCreate(
    LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch, UINT width, UINT height, FLOAT gutter,
    DWORD texture_index, CONST DWORD* adjacency, CONST DWORD* false_edges, CONST FLOAT* imt_array,
    LPD3DXUVATLASCB callback, FLOAT callback_frequency, LPVOID user_context, DWORD options,
    LPD3DXMESH* mesh_out, LPD3DXBUFFER* face_partitioning, LPD3DXBUFFER* vertex_remap,
    FLOAT* max_stretch_out, UINT* num_charts);

/// Like D3DXUVAtlasCreate without packing: each chart has its own UV space.
/// `partition_adjacency` receives `adjacency` with every chart border opened.
D3D9_EXPORT HRESULT WINAPI D3DXUVAtlasPartition(
    LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch, DWORD texture_index,
    CONST DWORD* adjacency, CONST DWORD* false_edges, CONST FLOAT* imt_array,
    LPD3DXUVATLASCB callback, FLOAT callback_frequency, LPVOID user_context, DWORD options,
    LPD3DXMESH* mesh_out, LPD3DXBUFFER* face_partitioning, LPD3DXBUFFER* vertex_remap,
    LPD3DXBUFFER* partition_adjacency, FLOAT* max_stretch_out, UINT* num_charts);
}
