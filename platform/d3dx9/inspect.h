/// Details of the last UV-atlas call for reports and tests, beyond the published interface.
/// Exported with C names, so that a program that does not link the library can look them up at run
/// time.
#pragma once

#include <d3d9.h>

#if defined(_WIN32)
#define D3DX9_INSPECT_API // the linker exports everything
#else
#define D3DX9_INSPECT_API D3D9_EXPORT
#endif

extern "C" {

/// Why the last UV-atlas call failed, as a readable sentence without a final full stop, with the
/// index of the element at fault if there is one ("... (vertex 17)"); "" after a success. Valid
/// until the next UV-atlas call.
D3DX9_INSPECT_API const char* d3dx9_last_reason(void);

/// The result of the last UV-atlas call.
D3DX9_INSPECT_API HRESULT d3dx9_last_result(void);

/// The faces, ascending, of the charts that exceed the stretch limit in the result of the last
/// UV-atlas call: each is a single polygon that cannot be flattened with less stretch. Returns
/// their number, 0 after a failure. Shape: *faces (if `faces` is not null) points to that many
/// indices. Valid until the next UV-atlas
///        call.
D3DX9_INSPECT_API unsigned d3dx9_over_limit(const DWORD** faces);

/// Number of devices, meshes and buffers that are not fully released.
D3DX9_INSPECT_API unsigned d3dx9_live_objects(void);
}
