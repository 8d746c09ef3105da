#include "faultpoint/faultpoint.h"
#include "platform/d3dx9/inspect.h"
#include "tests/platform/d3dx9/mesh_fixture.h"

#include <cstdlib>

namespace {

TEST(Direct3D, IsCreatedOnlyForTheSdkVersionOfTheHeaders) {
    const Held<IDirect3D9> direct3d(Direct3DCreate9(32));
    EXPECT_NE(direct3d.get(), nullptr);
    EXPECT_EQ(Direct3DCreate9(31), nullptr);
}

TEST(Direct3D, FaultPointMakesItNull) {
    const faultpoint::Scope fault("Direct3DCreate9", 1);
    EXPECT_EQ(Direct3DCreate9(D3D_SDK_VERSION), nullptr);
}

TEST(Direct3D, ReleaseReturnsTheReferencesLeft) {
    IDirect3D9* const direct3d = Direct3DCreate9(D3D_SDK_VERSION);
    EXPECT_EQ(direct3d->AddRef(), 2u);
    EXPECT_EQ(direct3d->Release(), 1u);
    EXPECT_EQ(direct3d->Release(), 0u);
}

// Checked by the address sanitizer: free() of an object inside a larger block, or from another
// allocator, would end the program.
TEST(Direct3D, UnsharedObjectMayBePassedToFree) { std::free(Direct3DCreate9(D3D_SDK_VERSION)); }

TEST(Direct3D, ObjectMayBeFreedAfterAFailedCreateDevice) {
    IDirect3D9* const direct3d = Direct3DCreate9(D3D_SDK_VERSION);
    D3DPRESENT_PARAMETERS parameters = one_pixel();
    IDirect3DDevice9* device = nullptr;
    const faultpoint::Scope fault("IDirect3D9::CreateDevice", D3DERR_NOTAVAILABLE);
    EXPECT_EQ(direct3d->CreateDevice(D3DADAPTER_DEFAULT, D3DDEVTYPE_NULLREF, nullptr, k_behavior,
                                     &parameters, &device),
              D3DERR_NOTAVAILABLE);
    std::free(direct3d);
}

TEST(Direct3D, ReportsTheModeOfItsAdapter) {
    const Held<IDirect3D9> direct3d(Direct3DCreate9(D3D_SDK_VERSION));
    D3DDISPLAYMODE mode = {};
    EXPECT_EQ(direct3d->GetAdapterCount(), 1u);
    EXPECT_EQ(direct3d->GetAdapterDisplayMode(D3DADAPTER_DEFAULT, &mode), D3D_OK);
    EXPECT_GT(mode.Width, 0u);
    EXPECT_GT(mode.Height, 0u);
    EXPECT_EQ(mode.Format, D3DFMT_X8R8G8B8);
    EXPECT_EQ(direct3d->GetAdapterDisplayMode(1, &mode), D3DERR_INVALIDCALL);
    EXPECT_EQ(direct3d->GetAdapterDisplayMode(D3DADAPTER_DEFAULT, nullptr), D3DERR_INVALIDCALL);
}

TEST(Direct3D, QueryInterfaceFindsItsInterfaces) {
    const Held<IDirect3D9> direct3d(Direct3DCreate9(D3D_SDK_VERSION));
    void* found = nullptr;
    ASSERT_EQ(direct3d->QueryInterface(IID_IDirect3D9, &found), S_OK);
    EXPECT_EQ(found, direct3d.get());
    EXPECT_EQ(direct3d->Release(), 1u);
    ASSERT_EQ(direct3d->QueryInterface(IID_IUnknown, &found), S_OK);
    EXPECT_EQ(direct3d->Release(), 1u);
    EXPECT_EQ(direct3d->QueryInterface(IID_IDirect3DDevice9, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(direct3d->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

class CreateDevice : public testing::Test {
protected:
    /// Expects the result, and that a failing call sets the pointer to null.
    HRESULT create(D3DDEVTYPE type = D3DDEVTYPE_NULLREF, DWORD behavior = k_behavior,
                   UINT adapter = D3DADAPTER_DEFAULT) {
        Held<IDirect3DDevice9> device;
        *device.slot() = reinterpret_cast<IDirect3DDevice9*>(this);
        const HRESULT result =
            direct3d_->CreateDevice(adapter, type, nullptr, behavior, &parameters_, device.slot());
        EXPECT_EQ(device.get() == nullptr, FAILED(result));
        return result;
    }

    Held<IDirect3D9> direct3d_{Direct3DCreate9(D3D_SDK_VERSION)};
    D3DPRESENT_PARAMETERS parameters_ = one_pixel();
};

TEST_F(CreateDevice, CreatesADeviceThatRendersNothing) { EXPECT_EQ(create(), D3D_OK); }

TEST_F(CreateDevice, RefusesDeviceTypesThatRender) {
    EXPECT_EQ(create(D3DDEVTYPE_HAL), D3DERR_NOTAVAILABLE);
    EXPECT_EQ(create(D3DDEVTYPE_REF), D3DERR_NOTAVAILABLE);
    EXPECT_EQ(create(D3DDEVTYPE_SW), D3DERR_NOTAVAILABLE);
    EXPECT_EQ(create(static_cast<D3DDEVTYPE>(9)), D3DERR_INVALIDCALL);
}

TEST_F(CreateDevice, NeedsExactlyOneVertexProcessingFlag) {
    EXPECT_EQ(create(D3DDEVTYPE_NULLREF, D3DCREATE_FPU_PRESERVE), D3DERR_INVALIDCALL);
    EXPECT_EQ(create(D3DDEVTYPE_NULLREF,
                     D3DCREATE_SOFTWARE_VERTEXPROCESSING | D3DCREATE_MIXED_VERTEXPROCESSING),
              D3DERR_INVALIDCALL);
    EXPECT_EQ(create(D3DDEVTYPE_NULLREF, D3DCREATE_HARDWARE_VERTEXPROCESSING), D3D_OK);
}

TEST_F(CreateDevice, RefusesAnUnknownAdapterAndNullArguments) {
    EXPECT_EQ(create(D3DDEVTYPE_NULLREF, k_behavior, 1), D3DERR_INVALIDCALL);
    IDirect3DDevice9* device = nullptr;
    EXPECT_EQ(direct3d_->CreateDevice(0, D3DDEVTYPE_NULLREF, nullptr, k_behavior, nullptr, &device),
              D3DERR_INVALIDCALL);
    EXPECT_EQ(
        direct3d_->CreateDevice(0, D3DDEVTYPE_NULLREF, nullptr, k_behavior, &parameters_, nullptr),
        D3DERR_INVALIDCALL);
}

TEST_F(CreateDevice, SwapEffectCopyAllowsAtMostOneBackBuffer) {
    parameters_.BackBufferCount = 2;
    EXPECT_EQ(create(), D3DERR_INVALIDCALL);
    parameters_.SwapEffect = D3DSWAPEFFECT_DISCARD;
    EXPECT_EQ(create(), D3D_OK);
    parameters_.BackBufferCount = 4;
    EXPECT_EQ(create(), D3DERR_INVALIDCALL);
    parameters_.BackBufferCount = 1;
    parameters_.SwapEffect = static_cast<D3DSWAPEFFECT>(0);
    EXPECT_EQ(create(), D3DERR_INVALIDCALL);
}

TEST_F(CreateDevice, FaultPointReturnsItsCode) {
    const faultpoint::Scope fault("IDirect3D9::CreateDevice", D3DERR_DEVICELOST);
    EXPECT_EQ(create(), D3DERR_DEVICELOST);
    EXPECT_EQ(create(), D3D_OK);
}

TEST(Device, HoldsAReferenceToItsDirect3DObject) {
    const Held<IDirect3DDevice9> device = make_device();
    Held<IDirect3D9> direct3d;
    ASSERT_EQ(device->GetDirect3D(direct3d.slot()), D3D_OK);
    EXPECT_EQ(direct3d->AddRef(), 3u);
    EXPECT_EQ(direct3d->Release(), 2u);
    EXPECT_EQ(device->GetDirect3D(nullptr), D3DERR_INVALIDCALL);
    EXPECT_EQ(device->TestCooperativeLevel(), D3D_OK);
}

TEST(Device, IsALiveObjectUntilItsLastRelease) {
    const unsigned before = d3dx9_live_objects();
    {
        const Held<IDirect3DDevice9> device = make_device();
        EXPECT_EQ(d3dx9_live_objects(), before + 1);
    }
    EXPECT_EQ(d3dx9_live_objects(), before);
}

TEST(Device, QueryInterfaceFindsItsInterfaces) {
    const Held<IDirect3DDevice9> device = make_device();
    void* found = nullptr;
    ASSERT_EQ(device->QueryInterface(IID_IDirect3DDevice9, &found), S_OK);
    EXPECT_EQ(found, device.get());
    EXPECT_EQ(device->Release(), 1u);
    EXPECT_EQ(device->QueryInterface(IID_IDirect3D9, &found), E_NOINTERFACE);
}

} // namespace
