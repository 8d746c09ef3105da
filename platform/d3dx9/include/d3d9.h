/// <d3d9.h> for systems without Direct3D: the object that finds devices, and a device that renders
/// nothing. Interfaces are reference-counted: every returned pointer carries one reference, which
/// the caller releases. Release returns the number of references left.
///
/// Ownership: a device holds a reference to the IDirect3D9 object that made it. Every object is ONE
/// block of the ordinary allocator and owns no other, so that a caller may also pass an unshared
/// IDirect3D9 object to free(). Single-threaded.
/// Source: "IDirect3D9 interface", "IDirect3DDevice9 interface", Microsoft Learn.
#pragma once

#include <d3d9types.h>

#define D3D_SDK_VERSION 32
#define D3DADAPTER_DEFAULT 0

// Behaviour flags of CreateDevice. Exactly one of the vertex processing flags must be given.
#define D3DCREATE_FPU_PRESERVE 0x00000002
#define D3DCREATE_MULTITHREADED 0x00000004
#define D3DCREATE_PUREDEVICE 0x00000010
#define D3DCREATE_SOFTWARE_VERTEXPROCESSING 0x00000020
#define D3DCREATE_HARDWARE_VERTEXPROCESSING 0x00000040
#define D3DCREATE_MIXED_VERTEXPROCESSING 0x00000080

#define MAKE_D3DHRESULT(code) (static_cast<HRESULT>(0x88760000u | (code)))

#define D3D_OK S_OK
#define D3DERR_OUTOFVIDEOMEMORY MAKE_D3DHRESULT(380u)
#define D3DERR_WASSTILLDRAWING MAKE_D3DHRESULT(540u)
#define D3DERR_WRONGTEXTUREFORMAT MAKE_D3DHRESULT(2072u)
#define D3DERR_UNSUPPORTEDCOLOROPERATION MAKE_D3DHRESULT(2073u)
#define D3DERR_UNSUPPORTEDCOLORARG MAKE_D3DHRESULT(2074u)
#define D3DERR_UNSUPPORTEDALPHAOPERATION MAKE_D3DHRESULT(2075u)
#define D3DERR_UNSUPPORTEDALPHAARG MAKE_D3DHRESULT(2076u)
#define D3DERR_TOOMANYOPERATIONS MAKE_D3DHRESULT(2077u)
#define D3DERR_CONFLICTINGTEXTUREFILTER MAKE_D3DHRESULT(2078u)
#define D3DERR_UNSUPPORTEDFACTORVALUE MAKE_D3DHRESULT(2079u)
#define D3DERR_CONFLICTINGRENDERSTATE MAKE_D3DHRESULT(2081u)
#define D3DERR_UNSUPPORTEDTEXTUREFILTER MAKE_D3DHRESULT(2082u)
#define D3DERR_CONFLICTINGTEXTUREPALETTE MAKE_D3DHRESULT(2086u)
#define D3DERR_DRIVERINTERNALERROR MAKE_D3DHRESULT(2087u)
#define D3DERR_NOTFOUND MAKE_D3DHRESULT(2150u)
#define D3DERR_MOREDATA MAKE_D3DHRESULT(2151u)
#define D3DERR_DEVICELOST MAKE_D3DHRESULT(2152u)
#define D3DERR_DEVICENOTRESET MAKE_D3DHRESULT(2153u)
#define D3DERR_NOTAVAILABLE MAKE_D3DHRESULT(2154u)
#define D3DERR_INVALIDDEVICE MAKE_D3DHRESULT(2155u)
#define D3DERR_INVALIDCALL MAKE_D3DHRESULT(2156u)
#define D3DERR_DRIVERINVALIDCALL MAKE_D3DHRESULT(2157u)

// The library exports only what the published headers declare; interfaces too, so that their type
// information is the same in all libraries of a process.
#define D3D9_EXPORT __attribute__((visibility("default")))

/// The root of all interfaces.
struct D3D9_EXPORT IUnknown {
    /// Returns a new reference if the object has the interface; else E_NOINTERFACE and null.
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};

struct IDirect3D9;
struct IDirect3DDevice9;
using LPDIRECT3D9 = IDirect3D9*;
using LPDIRECT3DDEVICE9 = IDirect3DDevice9*;

/// Lists adapters (there is exactly one, without a display) and creates devices.
struct D3D9_EXPORT IDirect3D9 : IUnknown {
    virtual UINT STDMETHODCALLTYPE GetAdapterCount() = 0;
    /// Errors: D3DERR_INVALIDCALL for an unknown adapter or a null `mode`.
    virtual HRESULT STDMETHODCALLTYPE GetAdapterDisplayMode(UINT adapter, D3DDISPLAYMODE* mode) = 0;
    /// Creates a device of type D3DDEVTYPE_NULLREF; `focus_window` may be null.
    /// Errors: D3DERR_NOTAVAILABLE for a device type that renders; D3DERR_INVALIDCALL for arguments
    ///         that the documentation forbids; E_OUTOFMEMORY. *device is then null.
    virtual HRESULT STDMETHODCALLTYPE CreateDevice(UINT adapter, D3DDEVTYPE type, HWND focus_window,
                                                   DWORD behavior_flags,
                                                   D3DPRESENT_PARAMETERS* parameters,
                                                   IDirect3DDevice9** device) = 0;
};

/// A device that renders nothing; meshes hold a reference to theirs.
struct D3D9_EXPORT IDirect3DDevice9 : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE TestCooperativeLevel() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDirect3D(IDirect3D9** direct3d) = 0;
};

extern "C" {
extern D3D9_EXPORT const GUID IID_IUnknown;
extern D3D9_EXPORT const GUID IID_IDirect3D9;
extern D3D9_EXPORT const GUID IID_IDirect3DDevice9;

/// Returns null if `sdk_version` is not D3D_SDK_VERSION or memory runs out.
D3D9_EXPORT IDirect3D9* WINAPI Direct3DCreate9(UINT sdk_version);
}
