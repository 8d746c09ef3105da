/// Runs over a fake Direct3D that records how the device is created, released and freed.

#include "tests/corelib/math/math_fixture.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

struct Record {
    unsigned direct3d_releases = 0;
    unsigned direct3d_frees = 0;
    std::vector<std::string> releases;
    HRESULT create_device = D3D_OK;
    UINT sdk_version = 0;
    UINT adapter = 99;
    D3DDEVTYPE type = D3DDEVTYPE_HAL;
    HWND window = nullptr;
    DWORD behavior = 0;
    D3DPRESENT_PARAMETERS parameters = {};
    void* direct3d_block = nullptr;
};

Record& record() {
    static Record value;
    return value;
}

class RecordedDevice final : public IDirect3DDevice9 {
public:
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 2; }
    ULONG Release() override {
        record().releases.emplace_back("device");
        return 0;
    }
    HRESULT TestCooperativeLevel() override { return D3D_OK; }
    HRESULT GetDirect3D(IDirect3D9**) override { return E_NOTIMPL; }
};

RecordedDevice& recorded_device() {
    static RecordedDevice device;
    return device;
}

class RecordedDirect3D final : public IDirect3D9 {
public:
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 2; }
    ULONG Release() override {
        record().releases.emplace_back("direct3d");
        ++record().direct3d_releases;
        std::free(this);
        return 0;
    }
    UINT GetAdapterCount() override { return 1; }
    // The mode is not used, so its failure does not matter.
    HRESULT GetAdapterDisplayMode(UINT, D3DDISPLAYMODE*) override { return D3DERR_NOTAVAILABLE; }
    HRESULT CreateDevice(UINT adapter, D3DDEVTYPE type, HWND window, DWORD behavior,
                         D3DPRESENT_PARAMETERS* parameters, IDirect3DDevice9** device) override {
        record().adapter = adapter;
        record().type = type;
        record().window = window;
        record().behavior = behavior;
        record().parameters = *parameters;
        *device = SUCCEEDED(record().create_device) ? &recorded_device() : nullptr;
        return record().create_device;
    }
};

} // namespace

IDirect3D9* WINAPI Direct3DCreate9(UINT sdk_version) {
    record().sdk_version = sdk_version;
    record().direct3d_block = std::malloc(sizeof(RecordedDirect3D));
    return new (record().direct3d_block) RecordedDirect3D;
}

// The linker routes calls of free() in the code under test to this function.
extern "C" void __real_free(void* block);
extern "C" __attribute__((visibility("default"))) void __wrap_free(void* block);
extern "C" void __wrap_free(void* block) {
    if (block != nullptr && block == record().direct3d_block)
        ++record().direct3d_frees;
    __real_free(block);
}

namespace {

class DeviceCalls : public LoggedLines {
protected:
    DeviceCalls() { record() = Record(); }
    bool create(void* window = nullptr) {
        return create_device(context_, window, 0, 0.25f, 512, 512, 2.0f, true);
    }
    AtlasContext context_;
};

TEST_F(DeviceCalls, RequestADeviceThatRendersNothing) {
    int window = 0;
    ASSERT_TRUE(create(&window));
    EXPECT_EQ(record().sdk_version, 32u);
    EXPECT_EQ(record().adapter, 0u);
    EXPECT_EQ(record().type, D3DDEVTYPE_NULLREF);
    EXPECT_EQ(static_cast<void*>(record().window), &window);
    EXPECT_EQ(record().behavior, DWORD{0x22});
    release_device(context_);
}

TEST_F(DeviceCalls, SetSixPresentationParametersAndZeroTheOthers) {
    ASSERT_TRUE(create());
    D3DPRESENT_PARAMETERS expected = {};
    expected.BackBufferWidth = 1;
    expected.BackBufferHeight = 1;
    expected.BackBufferFormat = D3DFMT_UNKNOWN;
    expected.BackBufferCount = 1;
    expected.SwapEffect = D3DSWAPEFFECT_COPY;
    expected.Windowed = TRUE;
    EXPECT_EQ(std::memcmp(&record().parameters, &expected, sizeof expected), 0);
    release_device(context_);
}

TEST_F(DeviceCalls, FreeTheDirect3DObjectInsteadOfReleasingItWhenTheDeviceFails) {
    record().create_device = D3DERR_INVALIDCALL;
    EXPECT_FALSE(create());
    EXPECT_EQ(logged(), "CreateDevice failed");
    EXPECT_EQ(record().direct3d_releases, 0u);
    EXPECT_EQ(record().direct3d_frees, 1u);
    EXPECT_EQ(context_.direct3d, nullptr);
}

TEST_F(DeviceCalls, ReleaseTheDeviceBeforeTheDirect3DObject) {
    ASSERT_TRUE(create());
    release_device(context_);
    EXPECT_EQ(record().releases, (std::vector<std::string>{"device", "direct3d"}));
}

} // namespace
