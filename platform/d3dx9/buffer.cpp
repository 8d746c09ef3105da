#include "platform/d3dx9/object.h"

#include <d3dx9.h>

const GUID IID_ID3DXBuffer = {
    0x8BA5FB08, 0x5195, 0x40E2, {0xAC, 0x58, 0x0D, 0x98, 0x9C, 0x3A, 0x01, 0x02}};

namespace d3dx9 {

namespace {

/// The bytes follow the object in the same block.
class Buffer final : public Counted<ID3DXBuffer> {
public:
    explicit Buffer(DWORD size) : size_(size) { ++live_objects; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        return answer(riid == IID_IUnknown || riid == IID_ID3DXBuffer, object);
    }
    LPVOID STDMETHODCALLTYPE GetBufferPointer() override { return this + 1; }
    DWORD STDMETHODCALLTYPE GetBufferSize() override { return size_; }

private:
    void release_parts() override { --live_objects; }

    DWORD size_;
};

} // namespace

} // namespace d3dx9

HRESULT WINAPI D3DXCreateBuffer(DWORD num_bytes, LPD3DXBUFFER* buffer) {
    if (buffer == nullptr)
        return D3DERR_INVALIDCALL;
    *buffer = nullptr;
    if (const int code = faultpoint::hit("D3DXCreateBuffer"))
        return code;
    *buffer = d3dx9::construct<d3dx9::Buffer>(num_bytes, num_bytes);
    return *buffer == nullptr ? E_OUTOFMEMORY : D3D_OK;
}
