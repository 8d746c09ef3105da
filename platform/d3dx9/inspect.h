/// What a report or a test may ask of this library beyond the published calls. Exported with C
/// names, so that a program which does not link the library can look them up at run time.
#pragma once

#include <d3d9.h>

extern "C" {

/// Why the last UV-atlas call failed, as a sentence for a person without a final full stop, naming
/// the element at fault where there is one ("... (vertex 17)"); "" after a success. Valid until the
/// next UV-atlas call.
D3D9_EXPORT const char* d3dx9_last_reason(void);

/// Devices, meshes and buffers that have references left.
D3D9_EXPORT unsigned d3dx9_live_objects(void);
}
