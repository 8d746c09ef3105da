#include "platform/d3dx9/object.h"

#include <d3d9.h>

const GUID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
const GUID IID_IDirect3D9 = {
    0x81BDCBCA, 0x64D4, 0x426D, {0xAE, 0x8D, 0xAD, 0x01, 0x47, 0xF4, 0x27, 0x5C}};
const GUID IID_IDirect3DDevice9 = {
    0xD0223B96, 0xBF7A, 0x43FD, {0x92, 0xBD, 0xA4, 0x3B, 0x0D, 0x82, 0xB9, 0xEB}};

namespace d3dx9 {

namespace {

class Device final : public Counted<IDirect3DDevice9> {
public:
    explicit Device(IDirect3D9* direct3d) : direct3d_(direct3d) {
        direct3d_->AddRef();
        ++live_objects;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        return answer(riid == IID_IUnknown || riid == IID_IDirect3DDevice9, object);
    }

    HRESULT STDMETHODCALLTYPE TestCooperativeLevel() override { return D3D_OK; }

    HRESULT STDMETHODCALLTYPE GetDirect3D(IDirect3D9** direct3d) override {
        if (direct3d == nullptr)
            return D3DERR_INVALIDCALL;
        direct3d_->AddRef();
        *direct3d = direct3d_;
        return D3D_OK;
    }

private:
    void release_parts() override {
        --live_objects;
        direct3d_->Release();
    }

    IDirect3D9* const direct3d_;
};

D3DX9_NAMED_ALLOCATION Device* allocate_device(IDirect3D9* direct3d) {
    Device* const device = construct<Device>(0, direct3d);
    keep_frame();
    return device;
}

// A caller that cannot make its mesh or its adjacency leaks the device on purpose.
D3DX9_NAMED_ALLOCATION Device* allocate_abandoned_device(IDirect3D9* direct3d) {
    Device* const device = construct<Device>(0, direct3d);
    keep_frame<1>();
    return device;
}

/// Those of the documented rules that apply to a device that never presents.
bool parameters_make_sense(DWORD behavior_flags, const D3DPRESENT_PARAMETERS& parameters) {
    const DWORD processing =
        behavior_flags & (D3DCREATE_SOFTWARE_VERTEXPROCESSING |
                          D3DCREATE_HARDWARE_VERTEXPROCESSING | D3DCREATE_MIXED_VERTEXPROCESSING);
    if (processing == 0 || (processing & (processing - 1)) != 0)
        return false;
    switch (parameters.SwapEffect) {
    case D3DSWAPEFFECT_DISCARD:
    case D3DSWAPEFFECT_FLIP:
        return parameters.BackBufferCount <= 3;
    case D3DSWAPEFFECT_COPY:
        return parameters.BackBufferCount <= 1;
    default:
        return false;
    }
}

class Direct3D final : public Counted<IDirect3D9> {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        return answer(riid == IID_IUnknown || riid == IID_IDirect3D9, object);
    }

    UINT STDMETHODCALLTYPE GetAdapterCount() override { return 1; }

    HRESULT STDMETHODCALLTYPE GetAdapterDisplayMode(UINT adapter, D3DDISPLAYMODE* mode) override {
        if (adapter != D3DADAPTER_DEFAULT || mode == nullptr)
            return D3DERR_INVALIDCALL;
        *mode = D3DDISPLAYMODE{1024, 768, 60, D3DFMT_X8R8G8B8};
        return D3D_OK;
    }

    HRESULT STDMETHODCALLTYPE CreateDevice(UINT adapter, D3DDEVTYPE type, HWND /*focus_window*/,
                                           DWORD behavior_flags, D3DPRESENT_PARAMETERS* parameters,
                                           IDirect3DDevice9** device) override {
        if (device == nullptr)
            return D3DERR_INVALIDCALL;
        *device = nullptr;
        if (const int code = faultpoint::hit("IDirect3D9::CreateDevice"))
            return code;
        if (adapter != D3DADAPTER_DEFAULT || parameters == nullptr)
            return D3DERR_INVALIDCALL;
        if (type == D3DDEVTYPE_HAL || type == D3DDEVTYPE_REF || type == D3DDEVTYPE_SW)
            return D3DERR_NOTAVAILABLE;
        if (type != D3DDEVTYPE_NULLREF || !parameters_make_sense(behavior_flags, *parameters))
            return D3DERR_INVALIDCALL;
        *device = failures_are_planned() ? allocate_abandoned_device(this) : allocate_device(this);
        return *device == nullptr ? E_OUTOFMEMORY : D3D_OK;
    }

private:
    void release_parts() override {}
};

D3DX9_NAMED_ALLOCATION Direct3D* allocate_direct3d() {
    Direct3D* const direct3d = construct<Direct3D>(0);
    keep_frame();
    return direct3d;
}

// Leaked together with the device that refers to it.
D3DX9_NAMED_ALLOCATION Direct3D* allocate_abandoned_direct3d() {
    Direct3D* const direct3d = construct<Direct3D>(0);
    keep_frame<1>();
    return direct3d;
}

} // namespace

} // namespace d3dx9

IDirect3D9* WINAPI Direct3DCreate9(UINT sdk_version) {
    using namespace d3dx9;
    if (faultpoint::hit("Direct3DCreate9") != 0 || sdk_version != D3D_SDK_VERSION)
        return nullptr;
    return failures_are_planned() ? allocate_abandoned_direct3d() : allocate_direct3d();
}
