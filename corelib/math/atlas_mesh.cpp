#include "corelib/math/atlas_mesh.h"

#include "corelib/math/hresult_name.h"
#include "corelib/math/log_critical.h"

namespace {

constexpr D3DVERTEXELEMENT9 k_vertex_declaration[] = {
    {0, 0, D3DDECLTYPE_FLOAT3, D3DDECLMETHOD_DEFAULT, D3DDECLUSAGE_POSITION, 0},
    {0, 12, D3DDECLTYPE_FLOAT2, D3DDECLMETHOD_DEFAULT, D3DDECLUSAGE_TEXCOORD, 0},
    D3DDECL_END()};

struct LockedMesh {
    Vertex* vertices = nullptr;
    uint32_t* indices = nullptr;
};

/// Locks both buffers for reading and writing. A null pointer means failure; the HRESULT is
/// ignored. Deliberate: if the index buffer fails the vertex buffer stays locked; such a mesh is
/// not used again.
bool lock(ID3DXMesh* mesh, LockedMesh& locked) {
    void* data = nullptr;
    mesh->LockVertexBuffer(0, &data);
    if (data == nullptr) {
        log_critical("Unable to lock vertex buffer");
        return false;
    }
    locked.vertices = static_cast<Vertex*>(data);
    data = nullptr;
    mesh->LockIndexBuffer(0, &data);
    if (data == nullptr) {
        log_critical("Unable to lock index buffer");
        return false;
    }
    locked.indices = static_cast<uint32_t*>(data);
    return true;
}

void unlock(ID3DXMesh* mesh) {
    mesh->UnlockIndexBuffer();
    mesh->UnlockVertexBuffer();
}

} // namespace

ID3DXMesh* create_mesh(AtlasContext& context, array<Vertex> vertices, array<uint32_t> indices) {
    const uint32_t faces = indices.count() / 3;
    ID3DXMesh* mesh = nullptr;
    const HRESULT result =
        D3DXCreateMesh(faces, vertices.count(), D3DXMESH_32BIT | D3DXMESH_MANAGED,
                       k_vertex_declaration, context.device, &mesh);
    if (FAILED(result)) {
        log_critical("Failed to create d3dx mesh: %s", hresult_name(result));
        return nullptr;
    }
    LockedMesh locked;
    // Deliberate: a mesh that cannot be locked is not released; the stage leaks its device, too.
    if (!lock(mesh, locked))
        return nullptr;
    for (uint32_t i = 0; i < vertices.count(); ++i) {
        const Vertex vertex = vertices.get(i);
        locked.vertices[i] = Vertex{vertex.x, vertex.y, vertex.z, 0.0f, 0.0f};
    }
    for (uint32_t i = 0; i < faces * 3; ++i)
        locked.indices[i] = indices.get(i);
    unlock(mesh);
    return mesh;
}

bool read_back(AtlasContext&, ID3DXMesh* mesh, array<Vertex>& atlas_vertices,
               array<uint32_t>& atlas_indices) {
    atlas_vertices.clear();
    atlas_indices.clear();
    LockedMesh locked;
    if (!lock(mesh, locked))
        return false;
    const uint32_t vertices = mesh->GetNumVertices();
    for (uint32_t i = 0; i < vertices; ++i) {
        const Vertex new_vert = locked.vertices[i];
        atlas_vertices.append(new_vert);
    }
    const uint32_t indices = 3 * mesh->GetNumFaces();
    for (uint32_t i = 0; i < indices; ++i)
        atlas_indices.append(locked.indices[i]);
    unlock(mesh);
    return true;
}
