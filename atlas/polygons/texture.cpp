#include "atlas/polygon_mesh.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

void scale(float* uvs, size_t count, float u_factor, float v_factor) {
    for (size_t i = 0; i < count; ++i) {
        uvs[2 * i] *= u_factor;
        uvs[2 * i + 1] *= v_factor;
    }
}

} // namespace

// The same steps in the same order of single-precision operations as the plug-in's, so that all
// ways to the engine give the same bits.
void to_texture(float* uvs, size_t count, uint32_t width, uint32_t height, float gutter) noexcept {
    const float w = static_cast<float>(width), h = static_cast<float>(height);
    if (std::any_of(uvs, uvs + 2 * count, [](float x) { return x > 1.0f; })) {
        const float factor = w > h ? h / w : w / h;
        scale(uvs, count, factor, factor);
    }
    scale(uvs, count, std::max(h / w, 1.0f), std::max(w / h, 1.0f));
    const float margin = gutter / static_cast<float>(std::max(width, height));
    const float shrink = margin * std::max(w / h, h / w);
    const float half = margin / 2.0f;
    for (size_t i = 0; i < 2 * count; ++i)
        uvs[i] = uvs[i] * (1.0f - shrink) + half;
}

} // namespace tessora::atlas
