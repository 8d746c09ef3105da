#include "faultpoint/faultpoint.h"
#include "platform/d3dx9/inspect.h"
#include "tests/platform/d3dx9/mesh_fixture.h"

namespace {

HRESULT create(DWORD faces, DWORD vertices, DWORD options, const D3DVERTEXELEMENT9* declaration) {
    const Held<IDirect3DDevice9> device = make_device();
    Held<ID3DXMesh> mesh;
    *mesh.slot() = reinterpret_cast<ID3DXMesh*>(&mesh);
    const HRESULT result =
        D3DXCreateMesh(faces, vertices, options, declaration, device.get(), mesh.slot());
    EXPECT_EQ(mesh.get() == nullptr, FAILED(result));
    return result;
}

TEST(CreateMesh, ReportsItsSizesOptionsAndDeclaration) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    EXPECT_EQ(mesh->GetNumFaces(), 2u);
    EXPECT_EQ(mesh->GetNumVertices(), 4u);
    EXPECT_EQ(mesh->GetNumBytesPerVertex(), 20u);
    EXPECT_EQ(mesh->GetOptions(), 0x221u);
    D3DVERTEXELEMENT9 declaration[MAX_FVF_DECL_SIZE];
    ASSERT_EQ(mesh->GetDeclaration(declaration), D3D_OK);
    EXPECT_EQ(std::memcmp(declaration, k_declaration, sizeof k_declaration), 0);
    EXPECT_EQ(mesh->GetDeclaration(nullptr), D3DERR_INVALIDCALL);
}

TEST(CreateMesh, RefusesArgumentsThatTheDocumentationForbids) {
    EXPECT_EQ(create(0, 4, D3DXMESH_32BIT, k_declaration), D3DERR_INVALIDCALL);
    EXPECT_EQ(create(2, 0, D3DXMESH_32BIT, k_declaration), D3DERR_INVALIDCALL);
    EXPECT_EQ(create(2, 4, D3DXMESH_32BIT, nullptr), D3DERR_INVALIDCALL);
    Held<ID3DXMesh> mesh;
    EXPECT_EQ(D3DXCreateMesh(2, 4, D3DXMESH_32BIT, k_declaration, nullptr, mesh.slot()),
              D3DERR_INVALIDCALL);
    const Held<IDirect3DDevice9> device = make_device();
    EXPECT_EQ(D3DXCreateMesh(2, 4, D3DXMESH_32BIT, k_declaration, device.get(), nullptr),
              D3DERR_INVALIDCALL);
}

TEST(CreateMesh, SixteenBitIndicesAllowAtMost65535Vertices) {
    EXPECT_EQ(create(1, 65535, 0, k_declaration), D3D_OK);
    EXPECT_EQ(create(1, 65536, 0, k_declaration), D3DERR_INVALIDCALL);
    EXPECT_EQ(create(1, 65536, D3DXMESH_32BIT, k_declaration), D3D_OK);
}

TEST(CreateMesh, TakesDeclarationsOfUpTo64Elements) {
    for (const size_t elements : {size_t(MAXD3DDECLLENGTH), size_t(MAXD3DDECLLENGTH) + 1}) {
        std::vector<D3DVERTEXELEMENT9> declaration(elements, k_declaration[0]);
        declaration.push_back(D3DDECL_END());
        EXPECT_EQ(create(1, 3, D3DXMESH_32BIT, declaration.data()),
                  elements == size_t(MAXD3DDECLLENGTH) ? D3D_OK : D3DERR_INVALIDCALL);
    }
}

TEST(CreateMesh, RefusesAnUnsupportedDeclaration) {
    const D3DVERTEXELEMENT9 second_stream[] = {
        {1, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0}, D3DDECL_END()};
    const D3DVERTEXELEMENT9 no_type[] = {{0, 0, D3DDECLTYPE_UNUSED, 0, D3DDECLUSAGE_POSITION, 0},
                                         D3DDECL_END()};
    const D3DVERTEXELEMENT9 crooked[] = {{0, 2, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
                                         D3DDECL_END()};
    const D3DVERTEXELEMENT9 empty[] = {D3DDECL_END()};
    const std::vector<D3DVERTEXELEMENT9> endless(
        MAX_FVF_DECL_SIZE, {0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0});
    for (const D3DVERTEXELEMENT9* const declaration :
         {second_stream, no_type, crooked, empty, endless.data()})
        EXPECT_EQ(create(1, 3, D3DXMESH_32BIT, declaration), D3DERR_INVALIDCALL);
}

TEST(CreateMesh, StrideFollowsFromEveryElementType) {
    const DWORD sizes[] = {4, 8, 12, 16, 4, 4, 4, 8, 4, 4, 8, 4, 8, 4, 4, 4, 8};
    for (BYTE type = 0; type < D3DDECLTYPE_UNUSED; ++type) {
        const D3DVERTEXELEMENT9 declaration[] = {
            {0, 0, D3DDECLTYPE_FLOAT3, 0, D3DDECLUSAGE_POSITION, 0},
            {0, 12, type, 0, D3DDECLUSAGE_TEXCOORD, 0},
            D3DDECL_END()};
        const Held<ID3DXMesh> mesh = make_mesh({0, 1, 2}, 3, D3DXMESH_32BIT, declaration);
        EXPECT_EQ(mesh->GetNumBytesPerVertex(), 12 + sizes[type]) << int{type};
    }
}

TEST(CreateMesh, SizeBeyondMemoryFails) {
    const D3DVERTEXELEMENT9 wide[] = {{0, 65532, D3DDECLTYPE_FLOAT4, 0, D3DDECLUSAGE_POSITION, 0},
                                      D3DDECL_END()};
    EXPECT_EQ(create(1, 0xFFFFFFFFu, D3DXMESH_32BIT, wide), E_OUTOFMEMORY);
}

TEST(CreateMesh, FaultPointReturnsItsCode) {
    const faultpoint::Scope fault("D3DXCreateMesh", E_OUTOFMEMORY);
    EXPECT_EQ(create(1, 3, D3DXMESH_32BIT, k_declaration), E_OUTOFMEMORY);
    EXPECT_EQ(create(1, 3, D3DXMESH_32BIT, k_declaration), D3D_OK);
}

TEST(MeshBuffers, StartAsZeroes) {
    const Held<IDirect3DDevice9> device = make_device();
    Held<ID3DXMesh> mesh;
    ASSERT_EQ(D3DXCreateMesh(1, 3, D3DXMESH_32BIT, k_declaration, device.get(), mesh.slot()),
              D3D_OK);
    void* data = nullptr;
    ASSERT_EQ(mesh->LockVertexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    EXPECT_EQ(std::memcmp(data, std::vector<char>(60).data(), 60), 0);
    ASSERT_EQ(mesh->LockIndexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    EXPECT_EQ(std::memcmp(data, std::vector<char>(12).data(), 12), 0);
}

TEST(MeshBuffers, KeepWhatWasWrittenIntoThem) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    void* data = nullptr;
    ASSERT_EQ(mesh->LockVertexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    EXPECT_EQ(static_cast<float*>(data)[3 * 5 + 2], 9.0f);
    EXPECT_EQ(mesh->UnlockVertexBuffer(), D3D_OK);
    ASSERT_EQ(mesh->LockIndexBuffer(D3DLOCK_READONLY, &data), D3D_OK);
    EXPECT_EQ(std::vector<uint32_t>(static_cast<uint32_t*>(data), static_cast<uint32_t*>(data) + 6),
              k_quad);
    EXPECT_EQ(mesh->UnlockIndexBuffer(), D3D_OK);
}

TEST(MeshBuffers, UnlockWithoutLockFails) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    void* data = nullptr;
    EXPECT_EQ(mesh->UnlockVertexBuffer(), D3DERR_INVALIDCALL);
    EXPECT_EQ(mesh->UnlockIndexBuffer(), D3DERR_INVALIDCALL);
    mesh->LockVertexBuffer(0, &data);
    mesh->LockVertexBuffer(0, &data);
    EXPECT_EQ(mesh->UnlockVertexBuffer(), D3D_OK);
    EXPECT_EQ(mesh->UnlockVertexBuffer(), D3D_OK);
    EXPECT_EQ(mesh->UnlockVertexBuffer(), D3DERR_INVALIDCALL);
    EXPECT_EQ(mesh->UnlockIndexBuffer(), D3DERR_INVALIDCALL);
}

TEST(MeshBuffers, RefuseUnknownFlagsAndNullPointers) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    void* data = &data;
    EXPECT_EQ(mesh->LockVertexBuffer(0x1, &data), D3DERR_INVALIDCALL);
    EXPECT_EQ(data, nullptr);
    data = &data;
    EXPECT_EQ(mesh->LockIndexBuffer(0x1, &data), D3DERR_INVALIDCALL);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(mesh->LockVertexBuffer(0, nullptr), D3DERR_INVALIDCALL);
    EXPECT_EQ(mesh->LockIndexBuffer(0, nullptr), D3DERR_INVALIDCALL);
}

TEST(MeshBuffers, FaultPointsReturnTheirCodeAndANullPointer) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    const faultpoint::Scope vertices("ID3DXMesh::LockVertexBuffer", D3DERR_INVALIDCALL);
    const faultpoint::Scope indices("ID3DXMesh::LockIndexBuffer", E_OUTOFMEMORY);
    void* data = &data;
    EXPECT_EQ(mesh->LockVertexBuffer(0, &data), D3DERR_INVALIDCALL);
    EXPECT_EQ(data, nullptr);
    data = &data;
    EXPECT_EQ(mesh->LockIndexBuffer(0, &data), E_OUTOFMEMORY);
    EXPECT_EQ(data, nullptr);
}

TEST(Mesh, HoldsAReferenceToItsDevice) {
    const unsigned before = d3dx9_live_objects();
    {
        const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
        EXPECT_EQ(d3dx9_live_objects(), before + 2);
        Held<IDirect3DDevice9> device;
        ASSERT_EQ(mesh->GetDevice(device.slot()), D3D_OK);
        EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
        EXPECT_EQ(mesh->GetDevice(nullptr), D3DERR_INVALIDCALL);
    }
    EXPECT_EQ(d3dx9_live_objects(), before);
}

TEST(Mesh, QueryInterfaceFindsItsInterfaces) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    for (const GUID& known : {IID_IUnknown, IID_ID3DXBaseMesh, IID_ID3DXMesh}) {
        void* found = nullptr;
        ASSERT_EQ(mesh->QueryInterface(known, &found), S_OK);
        EXPECT_EQ(found, mesh.get());
        EXPECT_EQ(mesh->Release(), 1u);
    }
    void* found = nullptr;
    EXPECT_EQ(mesh->QueryInterface(IID_ID3DXBuffer, &found), E_NOINTERFACE);
}

std::vector<DWORD> adjacency_of(ID3DXMesh* mesh, const DWORD* point_reps = nullptr) {
    std::vector<DWORD> adjacency(size_t{mesh->GetNumFaces()} * 3, 77);
    EXPECT_EQ(mesh->ConvertPointRepsToAdjacency(point_reps, adjacency.data()), D3D_OK);
    return adjacency;
}

TEST(ConvertPointRepsToAdjacency, ReadsIndicesOfBothWidths) {
    EXPECT_EQ(adjacency_of(make_mesh(k_quad, 4).get()), k_quad_adjacency);
    EXPECT_EQ(adjacency_of(make_mesh(k_quad, 4, D3DXMESH_MANAGED).get()), k_quad_adjacency);
}

TEST(ConvertPointRepsToAdjacency, VerticesAtTheSamePositionAreNotJoined) {
    const Held<ID3DXMesh> mesh = make_mesh({0, 1, 2, 3, 5, 4}, 6);
    void* data = nullptr;
    ASSERT_EQ(mesh->LockVertexBuffer(0, &data), D3D_OK);
    std::memset(data, 0, 6 * 20);
    mesh->UnlockVertexBuffer();
    EXPECT_EQ(adjacency_of(mesh.get()), std::vector<DWORD>(6, k_none));
}

TEST(ConvertPointRepsToAdjacency, PointRepresentativesJoinVertices) {
    const Held<ID3DXMesh> mesh = make_mesh({0, 1, 2, 3, 4, 5}, 6);
    const DWORD representatives[] = {0, 1, 2, 0, 2, 5};
    EXPECT_EQ(adjacency_of(mesh.get(), representatives), k_quad_adjacency);
}

TEST(ConvertPointRepsToAdjacency, RefusesIndicesOutOfRange) {
    std::vector<DWORD> adjacency(6, 77);
    const Held<ID3DXMesh> outside = make_mesh({0, 1, 4}, 4);
    EXPECT_EQ(outside->ConvertPointRepsToAdjacency(nullptr, adjacency.data()), D3DXERR_INVALIDDATA);
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    const DWORD representatives[] = {0, 1, 2, 4};
    EXPECT_EQ(mesh->ConvertPointRepsToAdjacency(representatives, adjacency.data()),
              D3DXERR_INVALIDDATA);
    EXPECT_EQ(mesh->ConvertPointRepsToAdjacency(nullptr, nullptr), D3DERR_INVALIDCALL);
    EXPECT_EQ(adjacency, std::vector<DWORD>(6, 77));
}

TEST(ConvertPointRepsToAdjacency, FaultPointReturnsItsCode) {
    const Held<ID3DXMesh> mesh = make_mesh(k_quad, 4);
    const faultpoint::Scope fault("ID3DXMesh::ConvertPointRepsToAdjacency", D3DXERR_INVALIDMESH);
    DWORD adjacency[6];
    EXPECT_EQ(mesh->ConvertPointRepsToAdjacency(nullptr, adjacency), D3DXERR_INVALIDMESH);
}

TEST(Buffer, HasItsBytesAndSize) {
    Held<ID3DXBuffer> buffer;
    ASSERT_EQ(D3DXCreateBuffer(5, buffer.slot()), D3D_OK);
    EXPECT_EQ(buffer->GetBufferSize(), 5u);
    std::memcpy(buffer->GetBufferPointer(), "four", 5);
    EXPECT_STREQ(static_cast<char*>(buffer->GetBufferPointer()), "four");
    void* found = nullptr;
    ASSERT_EQ(buffer->QueryInterface(IID_ID3DXBuffer, &found), S_OK);
    EXPECT_EQ(buffer->Release(), 1u);
    EXPECT_EQ(buffer->QueryInterface(IID_ID3DXMesh, &found), E_NOINTERFACE);
}

TEST(Buffer, MayBeEmpty) {
    Held<ID3DXBuffer> buffer;
    ASSERT_EQ(D3DXCreateBuffer(0, buffer.slot()), D3D_OK);
    EXPECT_EQ(buffer->GetBufferSize(), 0u);
}

TEST(Buffer, FailsForANullPointerAndAtItsFaultPoint) {
    EXPECT_EQ(D3DXCreateBuffer(5, nullptr), D3DERR_INVALIDCALL);
    const faultpoint::Scope fault("D3DXCreateBuffer", E_OUTOFMEMORY);
    ID3DXBuffer* buffer = nullptr;
    EXPECT_EQ(D3DXCreateBuffer(5, &buffer), E_OUTOFMEMORY);
    EXPECT_EQ(buffer, nullptr);
}

} // namespace
