/// What a report or a test may ask of this library beyond the published calls. Exported with C
/// names, so that a program which does not link the library can look them up at run time.
#pragma once

#include <d3d9.h>

#if defined(_WIN32)
#define D3DX9_INSPECT_API // the linker exports everything
#else
#define D3DX9_INSPECT_API D3D9_EXPORT
#endif

extern "C" {

/// Why the last UV-atlas call failed, as a sentence for a person without a final full stop, naming
/// the element at fault where there is one ("... (vertex 17)"); "" after a success. Valid until the
/// next UV-atlas call.
D3DX9_INSPECT_API const char* d3dx9_last_reason(void);

/// What the last UV-atlas call came to: D3D_OK or its failure.
D3DX9_INSPECT_API HRESULT d3dx9_last_result(void);

/// The faces of those charts that the last UV-atlas call could not bring under the stretch limit,
/// ascending; none after a failure. Such a chart is one polygon that cannot do better.
/// Shape: `faces` (may be none) gets the first of as many as the call returns. Valid until the next
/// UV-atlas call.
D3DX9_INSPECT_API unsigned d3dx9_over_limit(const DWORD** faces);

/// Devices, meshes and buffers that have references left.
D3DX9_INSPECT_API unsigned d3dx9_live_objects(void);
}
