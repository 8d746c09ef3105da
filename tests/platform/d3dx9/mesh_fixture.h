/// Devices and meshes for tests of the Direct3D stand-in.
#pragma once

#include <d3dx9.h>

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

inline constexpr DWORD k_none = 0xFFFFFFFFu;

/// Position and one texture coordinate: 20 bytes.
inline const D3DVERTEXELEMENT9 k_declaration[] = {
    {0, 0, D3DDECLTYPE_FLOAT3, D3DDECLMETHOD_DEFAULT, D3DDECLUSAGE_POSITION, 0},
    {0, 12, D3DDECLTYPE_FLOAT2, D3DDECLMETHOD_DEFAULT, D3DDECLUSAGE_TEXCOORD, 0},
    D3DDECL_END()};

/// A smart pointer that releases its reference.
template <class T>
class Held {
public:
    Held() = default;
    explicit Held(T* pointer) : pointer_(pointer) {}
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    Held(Held&& other) noexcept : pointer_(other.pointer_) { other.pointer_ = nullptr; }
    ~Held() { reset(); }
    void reset() {
        if (pointer_ != nullptr)
            pointer_->Release();
        pointer_ = nullptr;
    }
    T** slot() { return &pointer_; }
    T* get() const { return pointer_; }
    T* operator->() const { return pointer_; }

private:
    T* pointer_ = nullptr;
};

inline D3DPRESENT_PARAMETERS one_pixel() {
    D3DPRESENT_PARAMETERS parameters = {};
    parameters.BackBufferWidth = 1;
    parameters.BackBufferHeight = 1;
    parameters.BackBufferCount = 1;
    parameters.SwapEffect = D3DSWAPEFFECT_COPY;
    parameters.Windowed = TRUE;
    return parameters;
}

inline constexpr DWORD k_behavior = D3DCREATE_SOFTWARE_VERTEXPROCESSING | D3DCREATE_FPU_PRESERVE;

/// A device without other references to its IDirect3D9 object.
inline Held<IDirect3DDevice9> make_device() {
    Held<IDirect3D9> direct3d(Direct3DCreate9(D3D_SDK_VERSION));
    Held<IDirect3DDevice9> device;
    D3DPRESENT_PARAMETERS parameters = one_pixel();
    EXPECT_EQ(direct3d->CreateDevice(D3DADAPTER_DEFAULT, D3DDEVTYPE_NULLREF, nullptr, k_behavior,
                                     &parameters, device.slot()),
              D3D_OK);
    return device;
}

/// A mesh of the triangles whose corners are `corners`, vertex i standing at (i, 2i, 3i).
inline Held<ID3DXMesh> make_mesh(const std::vector<uint32_t>& corners, DWORD vertices,
                                 DWORD options = D3DXMESH_32BIT | D3DXMESH_MANAGED,
                                 const D3DVERTEXELEMENT9* declaration = k_declaration) {
    const Held<IDirect3DDevice9> device = make_device();
    Held<ID3DXMesh> mesh;
    EXPECT_EQ(D3DXCreateMesh(static_cast<DWORD>(corners.size() / 3), vertices, options, declaration,
                             device.get(), mesh.slot()),
              D3D_OK);
    void* data = nullptr;
    EXPECT_EQ(mesh->LockVertexBuffer(0, &data), D3D_OK);
    for (DWORD i = 0; i < vertices; ++i) {
        const float at = static_cast<float>(i);
        const float position[] = {at, 2 * at, 3 * at};
        std::memcpy(static_cast<char*>(data) + size_t{i} * mesh->GetNumBytesPerVertex(), position,
                    sizeof position);
    }
    mesh->UnlockVertexBuffer();
    EXPECT_EQ(mesh->LockIndexBuffer(0, &data), D3D_OK);
    for (size_t i = 0; i < corners.size(); ++i) {
        if ((options & D3DXMESH_32BIT) != 0)
            static_cast<uint32_t*>(data)[i] = corners[i];
        else
            static_cast<uint16_t*>(data)[i] = static_cast<uint16_t>(corners[i]);
    }
    mesh->UnlockIndexBuffer();
    return mesh;
}

/// A square 0 1 2 3 of two triangles, and its adjacency.
inline const std::vector<uint32_t> k_quad = {0, 1, 2, 0, 2, 3};
inline const std::vector<DWORD> k_quad_adjacency = {k_none, k_none, 1, 0, k_none, k_none};
