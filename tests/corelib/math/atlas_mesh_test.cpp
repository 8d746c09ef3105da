#include "corelib/math/atlas_mesh.h"
#include "faultpoint/faultpoint.h"
#include "platform/d3dx9/inspect.h"
#include "tests/corelib/math/math_fixture.h"

#include <cstring>

namespace {

class CreateMesh : public WithDevice {};

TEST_F(CreateMesh, CopiesPositionsAndIndicesAndZeroesTheTextureCoordinates) {
    ID3DXMesh* const mesh = make_mesh(4, k_quad);
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->GetNumFaces(), 2u);
    EXPECT_EQ(mesh->GetNumVertices(), 4u);
    void* data = nullptr;
    ASSERT_EQ(mesh->LockVertexBuffer(0, &data), D3D_OK);
    for (int i = 0; i < 4; ++i) {
        const Vertex& vertex = static_cast<const Vertex*>(data)[i];
        const float at = static_cast<float>(i);
        EXPECT_EQ(vertex.x, at);
        EXPECT_EQ(vertex.y, 2 * at);
        EXPECT_EQ(vertex.z, 3 * at);
        EXPECT_EQ(vertex.u, 0.0f);
        EXPECT_EQ(vertex.v, 0.0f);
    }
    ASSERT_EQ(mesh->LockIndexBuffer(0, &data), D3D_OK);
    EXPECT_EQ(std::memcmp(data, k_quad.data(), 24), 0);
    mesh->UnlockIndexBuffer();
    mesh->UnlockVertexBuffer();
    EXPECT_EQ(mesh->UnlockVertexBuffer(), D3DERR_INVALIDCALL) << "the maker left a lock behind";
    EXPECT_EQ(mesh->UnlockIndexBuffer(), D3DERR_INVALIDCALL) << "the maker left a lock behind";
    mesh->Release();
}

TEST_F(CreateMesh, HasTwentyByteVerticesAndWideIndices) {
    ID3DXMesh* const mesh = make_mesh(3, {0, 1, 2});
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->GetNumBytesPerVertex(), 20u);
    EXPECT_EQ(mesh->GetOptions(), DWORD{D3DXMESH_32BIT | D3DXMESH_MANAGED});
    const D3DVERTEXELEMENT9 expected[] = {
        {0, 0, D3DDECLTYPE_FLOAT3, D3DDECLMETHOD_DEFAULT, D3DDECLUSAGE_POSITION, 0},
        {0, 12, D3DDECLTYPE_FLOAT2, D3DDECLMETHOD_DEFAULT, D3DDECLUSAGE_TEXCOORD, 0},
        D3DDECL_END()};
    D3DVERTEXELEMENT9 declaration[MAX_FVF_DECL_SIZE];
    ASSERT_EQ(mesh->GetDeclaration(declaration), D3D_OK);
    EXPECT_EQ(std::memcmp(declaration, expected, sizeof expected), 0);
    mesh->Release();
}

TEST_F(CreateMesh, FailureIsLoggedWithTheResultsName) {
    const faultpoint::Scope fault("D3DXCreateMesh", E_OUTOFMEMORY);
    EXPECT_EQ(make_mesh(4, k_quad), nullptr);
    EXPECT_EQ(logged(), "Failed to create d3dx mesh: E_OUTOFMEMORY");
}

TEST_F(CreateMesh, MeshWithoutTrianglesFails) {
    EXPECT_EQ(make_mesh(4, {}), nullptr);
    EXPECT_EQ(logged(), "Failed to create d3dx mesh: D3DERR_INVALIDCALL");
}

TEST_F(CreateMesh, FreesBothListsOnEveryPath) {
    const uint64_t before = live_blocks;
    const faultpoint::Scope refused("D3DXCreateMesh", E_FAIL);
    EXPECT_EQ(make_mesh(4, k_quad), nullptr);
    ID3DXMesh* const mesh = make_mesh(4, k_quad);
    mesh->Release();
    EXPECT_EQ(live_blocks, before);
}

/// Mesh and device are leaked on purpose, so both are made while a fault point is armed.
class CreateMeshLockFailure : public LoggedLines {
protected:
    /// Creates a mesh while `point` fails; returns the number of leaked objects.
    unsigned left_behind(const char* point) {
        const faultpoint::Scope fault(point, E_FAIL);
        const unsigned before = d3dx9_live_objects();
        const uint64_t blocks_before = live_blocks;
        AtlasContext context;
        EXPECT_TRUE(create_device(context, nullptr, 0, 0.25f, 64, 64, 2.0f, true));
        EXPECT_EQ(create_mesh(context, vertices_in_a_row(4), list_of(k_quad)), nullptr);
        release_device(context);
        EXPECT_EQ(live_blocks, blocks_before);
        return d3dx9_live_objects() - before;
    }
};

TEST_F(CreateMeshLockFailure, AtTheVertexBufferLeaksTheMesh) {
    EXPECT_EQ(left_behind("ID3DXMesh::LockVertexBuffer"), 2u);
    EXPECT_EQ(logged(), "Unable to lock vertex buffer");
}

TEST_F(CreateMeshLockFailure, AtTheIndexBufferLeaksTheMesh) {
    EXPECT_EQ(left_behind("ID3DXMesh::LockIndexBuffer"), 2u);
    EXPECT_EQ(logged(), "Unable to lock index buffer");
}

class ReadBack : public WithDevice {
protected:
    ReadBack() : mesh_(make_mesh(4, k_quad)) {
        void* data = nullptr;
        mesh_->LockVertexBuffer(0, &data);
        for (int i = 0; i < 4; ++i) {
            static_cast<Vertex*>(data)[i].u = 0.125f * static_cast<float>(i);
            static_cast<Vertex*>(data)[i].v = 0.5f;
        }
        mesh_->UnlockVertexBuffer();
    }
    ~ReadBack() override { mesh_->Release(); }

    bool read() { return read_back(context_, mesh_, vertices_, indices_); }

    ID3DXMesh* mesh_;
    array<Vertex> vertices_;
    array<uint32_t> indices_;
};

TEST_F(ReadBack, ReplacesTheListsByVerticesAndIndices) {
    vertices_.append(Vertex{});
    indices_.append(77);
    ASSERT_TRUE(read());
    ASSERT_EQ(vertices_.count(), 4u);
    const Vertex last = vertices_.get(3);
    EXPECT_EQ(last.x, 3.0f);
    EXPECT_EQ(last.y, 6.0f);
    EXPECT_EQ(last.z, 9.0f);
    EXPECT_EQ(last.u, 0.375f);
    EXPECT_EQ(last.v, 0.5f);
    EXPECT_EQ(values_of(indices_), k_quad);
    EXPECT_EQ(mesh_->UnlockVertexBuffer(), D3DERR_INVALIDCALL);
    EXPECT_EQ(mesh_->UnlockIndexBuffer(), D3DERR_INVALIDCALL);
}

TEST_F(ReadBack, VertexBufferFailureIsLogged) {
    indices_.append(77);
    const faultpoint::Scope fault("ID3DXMesh::LockVertexBuffer", E_FAIL);
    EXPECT_FALSE(read());
    EXPECT_EQ(logged(), "Unable to lock vertex buffer");
    EXPECT_EQ(vertices_.count(), 0u);
    EXPECT_EQ(indices_.count(), 0u);
}

TEST_F(ReadBack, IndexBufferFailureIsLoggedAndLeavesTheVertexBufferLocked) {
    const faultpoint::Scope fault("ID3DXMesh::LockIndexBuffer", E_FAIL);
    EXPECT_FALSE(read());
    EXPECT_EQ(logged(), "Unable to lock index buffer");
    EXPECT_EQ(vertices_.count(), 0u);
    EXPECT_EQ(mesh_->UnlockVertexBuffer(), D3D_OK);
    EXPECT_EQ(mesh_->UnlockIndexBuffer(), D3DERR_INVALIDCALL);
}

TEST_F(ReadBack, ElementThatCannotBeAllocatedIsLeftOut) {
    const AllocationWatch memory(0);
    EXPECT_TRUE(read());
    EXPECT_EQ(vertices_.count(), 0u);
    EXPECT_EQ(indices_.count(), 0u);
    EXPECT_EQ(logged(), "");
}

} // namespace
