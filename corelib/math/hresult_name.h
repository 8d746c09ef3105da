/// Symbolic names of the HRESULTs of Direct3D 9, D3DX 9 and COM.
#pragma once

#include <d3dx9.h>

/// The published name of `result` ("D3DXERR_INVALIDMESH"), or "Unknown" for a value without one.
/// Source: "D3DERR" and "D3DXERR", Microsoft Learn.
const char* hresult_name(HRESULT result);
