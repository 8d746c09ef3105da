/// <d3dx9core.h> for systems without D3DX: the counted byte buffer.
#pragma once

#include <d3d9.h>

/// A reference-counted byte buffer of fixed size.
/// Source: "ID3DXBuffer interface", Microsoft Learn.
struct D3D9_EXPORT ID3DXBuffer : IUnknown {
    virtual LPVOID STDMETHODCALLTYPE GetBufferPointer() = 0;
    virtual DWORD STDMETHODCALLTYPE GetBufferSize() = 0; ///< bytes
};
using LPD3DXBUFFER = ID3DXBuffer*;

extern "C" {
extern D3D9_EXPORT const GUID IID_ID3DXBuffer;
}
