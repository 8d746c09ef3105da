#include "corelib/math/uv_adjustments.h"
#include "faultpoint/faultpoint.h"
#include "tests/corelib/math/math_fixture.h"

#include <utility>

namespace {

using Uvs = std::vector<std::pair<float, float>>;

/// A mesh of three vertices whose UVs the tests set and read.
class Adjustments : public WithDevice {
protected:
    Adjustments() : mesh_(make_mesh(3, {0, 1, 2})) {}
    ~Adjustments() override { mesh_->Release(); }

    void set_texture(uint32_t width, uint32_t height, float gutter = 0.0f) {
        context_.width = width;
        context_.height = height;
        context_.gutter = gutter;
    }
    Vertex* lock() {
        void* data = nullptr;
        EXPECT_EQ(mesh_->LockVertexBuffer(0, &data), D3D_OK);
        return static_cast<Vertex*>(data);
    }
    void write(const Uvs& uvs) {
        Vertex* vertex = lock();
        for (const auto& [u, v] : uvs) {
            vertex->u = u;
            vertex->v = v;
            ++vertex;
        }
        mesh_->UnlockVertexBuffer();
    }
    Uvs read() {
        const Vertex* const vertices = lock();
        Uvs uvs;
        for (int i = 0; i < 3; ++i)
            uvs.emplace_back(vertices[i].u, vertices[i].v);
        mesh_->UnlockVertexBuffer();
        EXPECT_EQ(mesh_->UnlockVertexBuffer(), D3DERR_INVALIDCALL) << "a lock was left behind";
        return uvs;
    }

    ID3DXMesh* mesh_;
};

TEST_F(Adjustments, FitKeepsCoordinatesUpToOne) {
    set_texture(1024, 512);
    const Uvs uvs = {{0.0f, 1.0f}, {1.0f, 0.5f}, {0.25f, 0.75f}};
    write(uvs);
    EXPECT_TRUE(fit_uv_range(context_, mesh_));
    EXPECT_EQ(read(), uvs);
}

TEST_F(Adjustments, FitScalesByTheAspectIfAnyUExceedsOne) {
    write({{0.5f, 1.0f}, {1.5f, 0.25f}, {0.0f, 0.0f}});
    const Uvs halved = {{0.25f, 0.5f}, {0.75f, 0.125f}, {0.0f, 0.0f}};
    set_texture(1024, 512);
    EXPECT_TRUE(fit_uv_range(context_, mesh_));
    EXPECT_EQ(read(), halved);
}

TEST_F(Adjustments, FitScalesByTheAspectIfAnyVExceedsOne) {
    write({{0.5f, 1.0f}, {0.5f, 0.25f}, {0.0f, 2.0f}});
    const Uvs quartered = {{0.125f, 0.25f}, {0.125f, 0.0625f}, {0.0f, 0.5f}};
    set_texture(256, 1024);
    EXPECT_TRUE(fit_uv_range(context_, mesh_));
    EXPECT_EQ(read(), quartered);
}

TEST_F(Adjustments, AspectStretchesAlongTheShorterSide) {
    write({{0.5f, 0.25f}, {1.0f, 0.5f}, {0.0f, 0.0f}});
    set_texture(1024, 512);
    EXPECT_TRUE(correct_aspect(context_, mesh_));
    EXPECT_EQ(read(), (Uvs{{0.5f, 0.5f}, {1.0f, 1.0f}, {0.0f, 0.0f}}));
    set_texture(512, 2048);
    EXPECT_TRUE(correct_aspect(context_, mesh_));
    EXPECT_EQ(read(), (Uvs{{2.0f, 0.5f}, {4.0f, 1.0f}, {0.0f, 0.0f}}));
}

TEST_F(Adjustments, MarginOfAWideTextureIsHalfAGutterOfItsLongerSide) {
    write({{0.0f, 1.0f}, {1.0f, 0.0f}, {0.5f, 0.5f}});
    set_texture(1024, 512, 2.0f);
    EXPECT_TRUE(apply_gutter_margin(context_, mesh_));
    constexpr float texel = 1.0f / 1024.0f;
    EXPECT_EQ(read(), (Uvs{{texel, 1.0f - 3.0f * texel},
                           {1.0f - 3.0f * texel, texel},
                           {0.5f - texel, 0.5f - texel}}));
}

TEST_F(Adjustments, MarginOfATallTextureIsTheSame) {
    write({{0.0f, 1.0f}, {1.0f, 0.0f}, {0.5f, 0.5f}});
    set_texture(512, 1024, 2.0f);
    EXPECT_TRUE(apply_gutter_margin(context_, mesh_));
    constexpr float texel = 1.0f / 1024.0f;
    EXPECT_EQ(read(), (Uvs{{texel, 1.0f - 3.0f * texel},
                           {1.0f - 3.0f * texel, texel},
                           {0.5f - texel, 0.5f - texel}}));
}

TEST_F(Adjustments, SquareTextureChangesNothingButForTheMargin) {
    const Uvs uvs = {{0.3f, 0.7f}, {1.25f, 0.1f}, {0.0f, 0.0f}};
    write(uvs);
    set_texture(512, 512, 2.0f);
    EXPECT_TRUE(fit_uv_range(context_, mesh_));
    EXPECT_TRUE(correct_aspect(context_, mesh_));
    EXPECT_EQ(read(), uvs);
    EXPECT_TRUE(apply_gutter_margin(context_, mesh_));
    EXPECT_EQ(read()[2], std::make_pair(1.0f / 512.0f, 1.0f / 512.0f));
}

TEST_F(Adjustments, WithoutPaddingTheMarginChangesNothing) {
    const Uvs uvs = {{0.3f, 0.7f}, {0.9f, 0.1f}, {0.0f, 1.0f}};
    write(uvs);
    for (const auto& [width, height] : {std::pair(512u, 512u), {1024u, 256u}, {256u, 1024u}}) {
        set_texture(width, height, 0.0f);
        EXPECT_TRUE(apply_gutter_margin(context_, mesh_));
        EXPECT_EQ(read(), uvs);
    }
}

TEST_F(Adjustments, EachReturnsFalseAtOnceWithoutTheVertexBuffer) {
    const faultpoint::Scope fault("ID3DXMesh::LockVertexBuffer", E_FAIL, 1, 3);
    EXPECT_FALSE(fit_uv_range(context_, mesh_));
    EXPECT_FALSE(correct_aspect(context_, mesh_));
    EXPECT_FALSE(apply_gutter_margin(context_, mesh_));
    EXPECT_EQ(logged(), "");
    EXPECT_EQ(mesh_->UnlockVertexBuffer(), D3DERR_INVALIDCALL);
}

} // namespace
