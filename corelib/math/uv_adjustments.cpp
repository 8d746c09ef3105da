#include "corelib/math/uv_adjustments.h"

#include "corelib/vertex.h"

namespace {

/// Runs `edit` on the vertices of `mesh` while they are locked.
template <class Edit>
bool edit_vertices(ID3DXMesh* mesh, Edit edit) {
    void* data = nullptr;
    mesh->LockVertexBuffer(0, &data);
    if (data == nullptr)
        return false;
    edit(static_cast<Vertex*>(data), mesh->GetNumVertices());
    mesh->UnlockVertexBuffer();
    return true;
}

bool any_beyond_one(const Vertex* vertices, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i)
        if (vertices[i].u > 1.0f || vertices[i].v > 1.0f)
            return true;
    return false;
}

void scale(Vertex* vertices, uint32_t count, float u_factor, float v_factor) {
    for (uint32_t i = 0; i < count; ++i) {
        vertices[i].u *= u_factor;
        vertices[i].v *= v_factor;
    }
}

/// max(quotient, 1)
float at_least_one(float quotient) { return quotient < 1.0f ? 1.0f : quotient; }

} // namespace

bool fit_uv_range(AtlasContext& context, ID3DXMesh* mesh) {
    const float width = static_cast<float>(context.width);
    const float height = static_cast<float>(context.height);
    const float factor = width > height ? height / width : width / height;
    return edit_vertices(mesh, [=](Vertex* vertices, uint32_t count) {
        if (any_beyond_one(vertices, count))
            scale(vertices, count, factor, factor);
    });
}

bool correct_aspect(AtlasContext& context, ID3DXMesh* mesh) {
    const float width = static_cast<float>(context.width);
    const float height = static_cast<float>(context.height);
    const float u_factor = at_least_one(height / width);
    const float v_factor = at_least_one(width / height);
    return edit_vertices(mesh, [=](Vertex* vertices, uint32_t count) {
        scale(vertices, count, u_factor, v_factor);
    });
}

bool apply_gutter_margin(AtlasContext& context, ID3DXMesh* mesh) {
    const float width = static_cast<float>(context.width);
    const float height = static_cast<float>(context.height);
    const uint32_t longer_side = context.width > context.height ? context.width : context.height;
    const float gutter = context.gutter / static_cast<float>(longer_side);
    const float ratio = width / height > height / width ? width / height : height / width;
    const float shrink = gutter * ratio;
    const float half = gutter / 2.0f;
    return edit_vertices(mesh, [=](Vertex* vertices, uint32_t count) {
        for (uint32_t i = 0; i < count; ++i) {
            vertices[i].u = vertices[i].u * (1.0f - shrink) + half;
            vertices[i].v = vertices[i].v * (1.0f - shrink) + half;
        }
    });
}
