#include "corelib/math/atlas_context.h"
#include "faultpoint/faultpoint.h"
#include "platform/d3dx9/inspect.h"
#include "tests/corelib/math/math_fixture.h"

namespace {

class CreateDevice : public LoggedLines {
protected:
    bool create(bool high_quality = true) {
        return create_device(context_, nullptr, 5, 0.125f, 1024, 256, 2.5f, high_quality);
    }
    AtlasContext context_;
};

TEST_F(CreateDevice, StoresTheOptions) {
    ASSERT_TRUE(create());
    EXPECT_NE(context_.direct3d, nullptr);
    EXPECT_NE(context_.device, nullptr);
    EXPECT_EQ(context_.max_charts, 5u);
    EXPECT_EQ(context_.max_stretch, 0.125f);
    EXPECT_EQ(context_.width, 1024u);
    EXPECT_EQ(context_.height, 256u);
    EXPECT_EQ(context_.gutter, 2.5f);
    EXPECT_EQ(logged(), "");
    release_device(context_);
}

TEST_F(CreateDevice, QualityFlagFollowsHighQuality) {
    ASSERT_TRUE(create(true));
    EXPECT_EQ(context_.options, uint32_t{D3DXUVATLAS_GEODESIC_QUALITY});
    release_device(context_);
    ASSERT_TRUE(create(false));
    EXPECT_EQ(context_.options, uint32_t{D3DXUVATLAS_GEODESIC_FAST});
    release_device(context_);
}

TEST_F(CreateDevice, MissingDirect3DIsLogged) {
    const faultpoint::Scope fault("Direct3DCreate9", 1);
    EXPECT_FALSE(create());
    EXPECT_EQ(logged(), "Direct3DCreate9 failed");
    EXPECT_EQ(context_.direct3d, nullptr);
    EXPECT_EQ(context_.device, nullptr);
}

TEST_F(CreateDevice, FailedDeviceIsLoggedAndNothingStored) {
    const faultpoint::Scope fault("IDirect3D9::CreateDevice", D3DERR_NOTAVAILABLE);
    EXPECT_FALSE(create());
    EXPECT_EQ(logged(), "CreateDevice failed");
    EXPECT_EQ(context_.direct3d, nullptr);
    EXPECT_EQ(context_.device, nullptr);
    EXPECT_EQ(context_.width, 0u);
}

TEST_F(CreateDevice, ReleaseMayBeRepeated) {
    const unsigned before = d3dx9_live_objects();
    ASSERT_TRUE(create());
    EXPECT_EQ(d3dx9_live_objects(), before + 1);
    release_device(context_);
    EXPECT_EQ(d3dx9_live_objects(), before);
    EXPECT_EQ(context_.direct3d, nullptr);
    EXPECT_EQ(context_.device, nullptr);
    release_device(context_);
}

} // namespace
