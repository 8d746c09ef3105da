/// The state of one atlas stage: the atlas options, the results of the last atlas call, and the
/// Direct3D device that D3DX meshes need. The device never renders.
///
/// One context per run of the stage, on its stack frame. It owns its two interfaces until
/// `release_device`. A failing operation writes a critical line to the message box and the debugger
/// and returns false or null.
#pragma once

#include <d3dx9.h>

#include <cstdint>

struct AtlasContext {
    uint32_t max_charts = 0;  ///< 0 = no limit
    float max_stretch = 0.0f; ///< 0 = no stretch is allowed, 1 = any amount
    uint32_t width = 0;       ///< texels
    uint32_t height = 0;      ///< texels
    float gutter = 0.0f;      ///< texels
    uint32_t options = 0;     ///< quality flag of the atlas call
    float stretch_out = 0.0f; ///< of the last successful atlas call
    uint32_t charts_out = 0;  ///< of the last successful atlas call
    IDirect3D9* direct3d = nullptr;
    IDirect3DDevice9* device = nullptr;
};

/// Creates the device and stores the options in `context`, whose interfaces are null before.
/// `window` is the handle of the application's main window; may be null.
/// Errors: false and a line "Direct3DCreate9 failed" or "CreateDevice failed"; the interfaces are
///         null, the options unchanged.
bool create_device(AtlasContext& context, void* window, uint32_t max_charts, float max_stretch,
                   uint32_t width, uint32_t height, float gutter, bool high_quality);

/// Releases the device, then the Direct3D object, each unless null, and sets both to null.
void release_device(AtlasContext& context);
