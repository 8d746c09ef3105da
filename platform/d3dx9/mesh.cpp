#include "atlas/geometry/adjacency.h"
#include "platform/d3dx9/object.h"

#include <d3dx9.h>

#include <cstring>
#include <vector>

const GUID IID_ID3DXBaseMesh = {
    0x7ED943DD, 0x52E8, 0x40B5, {0xA8, 0xD8, 0x76, 0x68, 0x5C, 0x40, 0x63, 0x30}};
const GUID IID_ID3DXMesh = {
    0x4020E5C2, 0x1403, 0x4929, {0x88, 0x3F, 0xE2, 0xE8, 0x49, 0xFA, 0xC1, 0x95}};

namespace d3dx9 {

namespace atlas = tessora::atlas;

namespace {

constexpr WORD k_end_stream = 0xFF;

/// The size of a vertex declaration; stride 0 if the declaration is not supported.
struct Layout {
    DWORD stride = 0;
    DWORD elements = 0; ///< end marker included
    bool has_position = false;
    DWORD position = 0; ///< bytes from the start of a vertex, if it has one
};

DWORD element_size(BYTE type) {
    switch (type) {
    case D3DDECLTYPE_FLOAT1:
    case D3DDECLTYPE_D3DCOLOR:
    case D3DDECLTYPE_UBYTE4:
    case D3DDECLTYPE_SHORT2:
    case D3DDECLTYPE_UBYTE4N:
    case D3DDECLTYPE_SHORT2N:
    case D3DDECLTYPE_USHORT2N:
    case D3DDECLTYPE_UDEC3:
    case D3DDECLTYPE_DEC3N:
    case D3DDECLTYPE_FLOAT16_2:
        return 4;
    case D3DDECLTYPE_FLOAT2:
    case D3DDECLTYPE_SHORT4:
    case D3DDECLTYPE_SHORT4N:
    case D3DDECLTYPE_USHORT4N:
    case D3DDECLTYPE_FLOAT16_4:
        return 8;
    case D3DDECLTYPE_FLOAT3:
        return 12;
    case D3DDECLTYPE_FLOAT4:
        return 16;
    default:
        return 0;
    }
}

Layout layout_of(const D3DVERTEXELEMENT9* declaration) {
    Layout layout;
    for (DWORD i = 0; i <= MAXD3DDECLLENGTH; ++i) {
        const D3DVERTEXELEMENT9& element = declaration[i];
        if (element.Stream == k_end_stream) {
            layout.elements = i + 1;
            return layout;
        }
        const DWORD size = element_size(element.Type);
        if (element.Stream != 0 || size == 0 || element.Offset % 4 != 0)
            return Layout();
        if (layout.stride < element.Offset + size)
            layout.stride = element.Offset + size;
        if (element.Usage == D3DDECLUSAGE_POSITION && element.UsageIndex == 0 &&
            element.Type == D3DDECLTYPE_FLOAT3) {
            layout.has_position = true;
            layout.position = element.Offset;
        }
    }
    return Layout();
}

struct MeshShape {
    DWORD faces;
    DWORD vertices;
    DWORD options;
    Layout layout;
};

/// Counts locks, as a mesh in system memory does: locks may nest.
class LockedBytes {
public:
    HRESULT lock(DWORD flags, void* bytes, LPVOID* data) {
        constexpr DWORD known = D3DLOCK_READONLY | D3DLOCK_NOSYSLOCK | D3DLOCK_NOOVERWRITE |
                                D3DLOCK_DISCARD | D3DLOCK_DONOTWAIT | D3DLOCK_NO_DIRTY_UPDATE;
        if ((flags & ~known) != 0)
            return D3DERR_INVALIDCALL;
        ++locks_;
        *data = bytes;
        return D3D_OK;
    }

    HRESULT unlock() {
        if (locks_ == 0)
            return D3DERR_INVALIDCALL;
        --locks_;
        return D3D_OK;
    }

private:
    unsigned locks_ = 0;
};

/// The vertices and then the indices follow the object in the same block.
class Mesh final : public Counted<ID3DXMesh> {
public:
    Mesh(const MeshShape& shape, const D3DVERTEXELEMENT9* declaration, IDirect3DDevice9* device)
        : shape_(shape), device_(device) {
        std::memcpy(declaration_, declaration, shape.layout.elements * sizeof *declaration);
        device_->AddRef();
        ++live_objects;
    }

    static size_t payload(const MeshShape& shape) {
        return size_t{shape.vertices} * shape.layout.stride +
               size_t{shape.faces} * 3 * index_size(shape.options);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        return answer(riid == IID_IUnknown || riid == IID_ID3DXBaseMesh || riid == IID_ID3DXMesh,
                      object);
    }

    DWORD STDMETHODCALLTYPE GetNumFaces() override { return shape_.faces; }
    DWORD STDMETHODCALLTYPE GetNumVertices() override { return shape_.vertices; }
    DWORD STDMETHODCALLTYPE GetNumBytesPerVertex() override { return shape_.layout.stride; }
    DWORD STDMETHODCALLTYPE GetOptions() override { return shape_.options; }

    HRESULT STDMETHODCALLTYPE
    GetDeclaration(D3DVERTEXELEMENT9 declaration[MAX_FVF_DECL_SIZE]) override {
        if (declaration == nullptr)
            return D3DERR_INVALIDCALL;
        std::memcpy(declaration, declaration_, shape_.layout.elements * sizeof *declaration);
        return D3D_OK;
    }

    HRESULT STDMETHODCALLTYPE GetDevice(LPDIRECT3DDEVICE9* device) override {
        if (device == nullptr)
            return D3DERR_INVALIDCALL;
        device_->AddRef();
        *device = device_;
        return D3D_OK;
    }

    HRESULT STDMETHODCALLTYPE LockVertexBuffer(DWORD flags, LPVOID* data) override {
        if (data == nullptr)
            return D3DERR_INVALIDCALL;
        *data = nullptr;
        if (const int code = faultpoint::hit("ID3DXMesh::LockVertexBuffer"))
            return code;
        return vertex_lock_.lock(flags, vertex_bytes(), data);
    }
    HRESULT STDMETHODCALLTYPE UnlockVertexBuffer() override { return vertex_lock_.unlock(); }

    HRESULT STDMETHODCALLTYPE LockIndexBuffer(DWORD flags, LPVOID* data) override {
        if (data == nullptr)
            return D3DERR_INVALIDCALL;
        *data = nullptr;
        if (const int code = faultpoint::hit("ID3DXMesh::LockIndexBuffer"))
            return code;
        return index_lock_.lock(flags, index_bytes(), data);
    }
    HRESULT STDMETHODCALLTYPE UnlockIndexBuffer() override { return index_lock_.unlock(); }

    HRESULT STDMETHODCALLTYPE ConvertPointRepsToAdjacency(CONST DWORD* point_reps,
                                                          DWORD* adjacency) override {
        if (const int code = faultpoint::hit("ID3DXMesh::ConvertPointRepsToAdjacency"))
            return code;
        if (adjacency == nullptr)
            return D3DERR_INVALIDCALL;
        try {
            return convert(point_reps, adjacency);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
    }

private:
    static size_t index_size(DWORD options) { return (options & D3DXMESH_32BIT) != 0 ? 4 : 2; }

    unsigned char* vertex_bytes() { return reinterpret_cast<unsigned char*>(this + 1); }
    unsigned char* index_bytes() {
        return vertex_bytes() + size_t{shape_.vertices} * shape_.layout.stride;
    }

    HRESULT convert(const DWORD* point_reps, DWORD* adjacency) {
        const size_t count = size_t{shape_.faces} * 3;
        std::vector<uint32_t> corners(count);
        for (size_t i = 0; i < count; ++i) {
            corners[i] = index_at(i);
            if (corners[i] >= shape_.vertices)
                return D3DXERR_INVALIDDATA;
            if (point_reps != nullptr)
                corners[i] = point_reps[corners[i]];
        }
        atlas::VertexPositions positions;
        if (shape_.layout.has_position)
            positions = {vertex_bytes() + shape_.layout.position, shape_.layout.stride};
        switch (atlas::face_adjacency(corners.data(), shape_.faces, shape_.vertices, positions,
                                      adjacency)) {
        case atlas::AdjacencyResult::ok:
            return D3D_OK;
        case atlas::AdjacencyResult::index_out_of_range:
            return D3DXERR_INVALIDDATA;
        default:
            return E_OUTOFMEMORY;
        }
    }

    uint32_t index_at(size_t i) {
        if (index_size(shape_.options) == 4)
            return reinterpret_cast<const uint32_t*>(index_bytes())[i];
        return reinterpret_cast<const uint16_t*>(index_bytes())[i];
    }

    void release_parts() override {
        --live_objects;
        device_->Release();
    }

    MeshShape shape_;
    D3DVERTEXELEMENT9 declaration_[MAX_FVF_DECL_SIZE];
    LockedBytes vertex_lock_;
    LockedBytes index_lock_;
    IDirect3DDevice9* device_;
};

D3DX9_NAMED_ALLOCATION Mesh* allocate_mesh(const MeshShape& shape,
                                           const D3DVERTEXELEMENT9* declaration,
                                           IDirect3DDevice9* device) {
    Mesh* const mesh = construct<Mesh>(Mesh::payload(shape), shape, declaration, device);
    keep_frame();
    return mesh;
}

// A caller that cannot lock the mesh or get its adjacency leaks it on purpose.
D3DX9_NAMED_ALLOCATION Mesh* allocate_abandoned_mesh(const MeshShape& shape,
                                                     const D3DVERTEXELEMENT9* declaration,
                                                     IDirect3DDevice9* device) {
    Mesh* const mesh = construct<Mesh>(Mesh::payload(shape), shape, declaration, device);
    keep_frame<1>();
    return mesh;
}

} // namespace

} // namespace d3dx9

HRESULT WINAPI D3DXCreateMesh(DWORD num_faces, DWORD num_vertices, DWORD options,
                              CONST D3DVERTEXELEMENT9* declaration, LPDIRECT3DDEVICE9 device,
                              LPD3DXMESH* mesh) {
    using namespace d3dx9;
    if (mesh == nullptr)
        return D3DERR_INVALIDCALL;
    *mesh = nullptr;
    if (const int code = faultpoint::hit("D3DXCreateMesh"))
        return code;
    if (num_faces == 0 || num_vertices == 0 || declaration == nullptr || device == nullptr)
        return D3DERR_INVALIDCALL;
    if ((options & D3DXMESH_32BIT) == 0 && num_vertices > 0xFFFF)
        return D3DERR_INVALIDCALL;
    const MeshShape shape{num_faces, num_vertices, options, layout_of(declaration)};
    if (shape.layout.stride == 0)
        return D3DERR_INVALIDCALL;
    *mesh = failures_are_planned() ? allocate_abandoned_mesh(shape, declaration, device)
                                   : allocate_mesh(shape, declaration, device);
    return *mesh == nullptr ? E_OUTOFMEMORY : D3D_OK;
}
