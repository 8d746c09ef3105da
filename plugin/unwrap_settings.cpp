#include "plugin/unwrap_settings.h"

namespace {

/// Written as !(value > low), so that NaN becomes the lower end.
template <class T>
void clamp(T& value, T low, T high) {
    if (!(value > low))
        value = low;
    else if (value >= high)
        value = high;
}

} // namespace

void clamp_settings(UnwrapSettings& settings) {
    clamp<int32_t>(settings.charts, 0, 64);
    clamp(settings.stretch, 0.0, 1.0);
    clamp<int32_t>(settings.padding, 0, 32);
    clamp<int32_t>(settings.tex_width, 8, 8192);
    clamp<int32_t>(settings.tex_height, 8, 8192);
    clamp<int32_t>(settings.adjacency_method, 0, 1);
    clamp(settings.epsilon, 0.001, 1000.0);
    clamp(settings.groove_angle, 0.0, 180.0);
    clamp(settings.ridge_angle, 0.0, 180.0);
}
