/// Checks at compile time that the declarations in use have the published names, types and values.
/// The list is compiled against the stand-in headers and against those of the Windows cross
/// compiler.

#include <d3dx9.h>
#include <windows.h>

#include <gtest/gtest.h>
#include <type_traits>

namespace {

template <class Expected, class Actual>
constexpr bool same(Actual) {
    return std::is_same_v<Expected, Actual>;
}

// "GetSystemTime", "MessageBoxA", "OutputDebugStringA"
static_assert(std::is_same_v<decltype(&GetSystemTime), void(WINAPI*)(LPSYSTEMTIME)>);
static_assert(std::is_same_v<decltype(&MessageBoxA), int(WINAPI*)(HWND, LPCSTR, LPCSTR, UINT)>);
static_assert(std::is_same_v<decltype(&OutputDebugStringA), void(WINAPI*)(LPCSTR)>);
static_assert(MB_OK == 0 && IDOK == 1 && sizeof(SYSTEMTIME) == 16);
// "Direct3DCreate9 function"
static_assert(same<IDirect3D9*(WINAPI*)(UINT)>(&Direct3DCreate9));
// "IDirect3D9::GetAdapterDisplayMode", "IDirect3D9::CreateDevice"
static_assert(
    same<HRESULT (IDirect3D9::*)(UINT, D3DDISPLAYMODE*)>(&IDirect3D9::GetAdapterDisplayMode));
static_assert(same<HRESULT (IDirect3D9::*)(UINT, D3DDEVTYPE, HWND, DWORD, D3DPRESENT_PARAMETERS*,
                                           IDirect3DDevice9**)>(&IDirect3D9::CreateDevice));
// "IUnknown"
static_assert(same<ULONG (IUnknown::*)()>(&IUnknown::Release));
// "D3DXCreateMesh"
static_assert(same<HRESULT(WINAPI*)(DWORD, DWORD, DWORD, CONST D3DVERTEXELEMENT9*,
                                    LPDIRECT3DDEVICE9, LPD3DXMESH*)>(&D3DXCreateMesh));
// "ID3DXBaseMesh::LockVertexBuffer" and its siblings
static_assert(same<HRESULT (ID3DXBaseMesh::*)(DWORD, LPVOID*)>(&ID3DXBaseMesh::LockVertexBuffer));
static_assert(same<HRESULT (ID3DXBaseMesh::*)()>(&ID3DXBaseMesh::UnlockVertexBuffer));
static_assert(same<HRESULT (ID3DXBaseMesh::*)(DWORD, LPVOID*)>(&ID3DXBaseMesh::LockIndexBuffer));
static_assert(same<HRESULT (ID3DXBaseMesh::*)()>(&ID3DXBaseMesh::UnlockIndexBuffer));
static_assert(same<DWORD (ID3DXBaseMesh::*)()>(&ID3DXBaseMesh::GetNumFaces));
static_assert(same<DWORD (ID3DXBaseMesh::*)()>(&ID3DXBaseMesh::GetNumVertices));
// "ID3DXBaseMesh::ConvertPointRepsToAdjacency"
static_assert(same<HRESULT (ID3DXBaseMesh::*)(CONST DWORD*, DWORD*)>(
    &ID3DXBaseMesh::ConvertPointRepsToAdjacency));
// "LPD3DXUVATLASCB"
static_assert(std::is_same_v<LPD3DXUVATLASCB, HRESULT(WINAPI*)(FLOAT, LPVOID)>);
// "D3DXUVAtlasCreate"
static_assert(same<HRESULT(WINAPI*)(LPD3DXMESH, UINT, FLOAT, UINT, UINT, FLOAT, DWORD, CONST DWORD*,
                                    CONST DWORD*, CONST FLOAT*, LPD3DXUVATLASCB, FLOAT, LPVOID,
                                    DWORD, LPD3DXMESH*, LPD3DXBUFFER*, LPD3DXBUFFER*, FLOAT*,
                                    UINT*)>(&D3DXUVAtlasCreate));
// "D3DXUVAtlasPartition"
static_assert(
    same<HRESULT(WINAPI*)(LPD3DXMESH, UINT, FLOAT, DWORD, CONST DWORD*, CONST DWORD*, CONST FLOAT*,
                          LPD3DXUVATLASCB, FLOAT, LPVOID, DWORD, LPD3DXMESH*, LPD3DXBUFFER*,
                          LPD3DXBUFFER*, LPD3DXBUFFER*, FLOAT*, UINT*)>(&D3DXUVAtlasPartition));

// "D3DVERTEXELEMENT9", "D3DPRESENT_PARAMETERS", "D3DDISPLAYMODE"
static_assert(sizeof(D3DVERTEXELEMENT9) == 8 && sizeof(D3DDISPLAYMODE) == 16);
static_assert(sizeof(D3DPRESENT_PARAMETERS) == 64, "64-bit layout");
static_assert(MAX_FVF_DECL_SIZE == 65);

// "D3DDEVTYPE", "D3DCREATE", "D3DSWAPEFFECT", "D3DLOCK", "D3DXMESH", "D3DXUVATLAS"
static_assert(D3DDEVTYPE_NULLREF == 4 && D3DADAPTER_DEFAULT == 0 && D3DFMT_UNKNOWN == 0);
static_assert(D3DCREATE_SOFTWARE_VERTEXPROCESSING == 0x20 && D3DCREATE_FPU_PRESERVE == 0x2);
static_assert(D3DSWAPEFFECT_COPY == 3 && D3DLOCK_READONLY == 0x10);
static_assert(D3DXMESH_32BIT == 0x1 && D3DXMESH_MANAGED == 0x220);
static_assert(D3DXUVATLAS_GEODESIC_FAST == 1 && D3DXUVATLAS_GEODESIC_QUALITY == 2);
static_assert(D3DDECLTYPE_FLOAT2 == 1 && D3DDECLTYPE_FLOAT3 == 2 && D3DDECLTYPE_UNUSED == 17);
static_assert(D3DDECLUSAGE_POSITION == 0 && D3DDECLUSAGE_TEXCOORD == 5);

/// The bits of an HRESULT as an unsigned number.
constexpr uint32_t bits(HRESULT result) { return static_cast<uint32_t>(result); }

TEST(PublishedResults, HaveTheDocumentedValues) {
    EXPECT_EQ(bits(D3D_OK), 0u);
    EXPECT_EQ(bits(D3DERR_OUTOFVIDEOMEMORY), 0x8876017Cu);
    EXPECT_EQ(bits(D3DERR_NOTFOUND), 0x88760866u);
    EXPECT_EQ(bits(D3DERR_MOREDATA), 0x88760867u);
    EXPECT_EQ(bits(D3DERR_DEVICELOST), 0x88760868u);
    EXPECT_EQ(bits(D3DERR_DEVICENOTRESET), 0x88760869u);
    EXPECT_EQ(bits(D3DERR_NOTAVAILABLE), 0x8876086Au);
    EXPECT_EQ(bits(D3DERR_INVALIDDEVICE), 0x8876086Bu);
    EXPECT_EQ(bits(D3DERR_INVALIDCALL), 0x8876086Cu);
    EXPECT_EQ(bits(D3DXERR_CANNOTMODIFYINDEXBUFFER), 0x88760B54u);
    EXPECT_EQ(bits(D3DXERR_INVALIDMESH), 0x88760B55u);
    EXPECT_EQ(bits(D3DXERR_INVALIDDATA), 0x88760B59u);
    EXPECT_EQ(bits(D3DXERR_CANNOTREMOVELASTITEM), 0x88760B5Cu);
}

} // namespace
