#include "corelib/math/atlas_context.h"

#include "corelib/math/log_critical.h"

#include <cstdlib>

bool create_device(AtlasContext& context, void* window, uint32_t max_charts, float max_stretch,
                   uint32_t width, uint32_t height, float gutter, bool high_quality) {
    context.direct3d = Direct3DCreate9(D3D_SDK_VERSION);
    if (context.direct3d == nullptr) {
        log_critical("Direct3DCreate9 failed");
        return false;
    }
    // Deliberate: neither the mode nor the result is used; the device displays nothing.
    D3DDISPLAYMODE display_mode = {};
    context.direct3d->GetAdapterDisplayMode(D3DADAPTER_DEFAULT, &display_mode);

    D3DPRESENT_PARAMETERS presentation_params = {};
    presentation_params.BackBufferWidth = 1;
    presentation_params.BackBufferHeight = 1;
    presentation_params.BackBufferFormat = D3DFMT_UNKNOWN;
    presentation_params.BackBufferCount = 1;
    presentation_params.SwapEffect = D3DSWAPEFFECT_COPY;
    presentation_params.Windowed = TRUE;
    // FPU_PRESERVE: creating a device must not change the host's floating-point settings.
    const HRESULT result = context.direct3d->CreateDevice(
        D3DADAPTER_DEFAULT, D3DDEVTYPE_NULLREF, static_cast<HWND>(window),
        D3DCREATE_SOFTWARE_VERTEXPROCESSING | D3DCREATE_FPU_PRESERVE, &presentation_params,
        &context.device);
    if (FAILED(result)) {
        // Deliberate: freed, not released, so that references left by a device that failed half-way
        // cannot keep the object alive.
        std::free(context.direct3d);
        context.direct3d = nullptr;
        log_critical("CreateDevice failed");
        return false;
    }
    context.max_charts = max_charts;
    context.max_stretch = max_stretch;
    context.width = width;
    context.height = height;
    context.gutter = gutter;
    context.options = high_quality ? D3DXUVATLAS_GEODESIC_QUALITY : D3DXUVATLAS_GEODESIC_FAST;
    return true;
}

void release_device(AtlasContext& context) {
    if (context.device != nullptr)
        context.device->Release();
    context.device = nullptr;
    if (context.direct3d != nullptr)
        context.direct3d->Release();
    context.direct3d = nullptr;
}
