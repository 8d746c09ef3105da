#include "window/uv_view.h"

#include <algorithm>

namespace window {
namespace {

constexpr double k_min_scale = 8.0;
constexpr double k_max_scale = 1048576.0;
constexpr double k_margin = 0.06; // on each side, as a fraction of the panel

} // namespace

void UvView::resize(double width, double height) {
    width_ = std::max(1.0, width);
    height_ = std::max(1.0, height);
}

bool UvView::set_texture(const measure::Texture& texture) {
    const double longer = std::max(texture.width, texture.height);
    const double shape[2] = {texture.width / longer, texture.height / longer};
    const bool has_changed = shape[0] != shape_[0] || shape[1] != shape_[1];
    std::copy_n(shape, 2, shape_);
    return has_changed;
}

void UvView::to_pixel(double u, double v, double& x, double& y) const {
    x = 0.5 * width_ + (u - centre_[0]) * pixels_per_unit(0);
    y = 0.5 * height_ - (v - centre_[1]) * pixels_per_unit(1);
}

void UvView::to_uv(double x, double y, double& u, double& v) const {
    u = centre_[0] + (x - 0.5 * width_) / pixels_per_unit(0);
    v = centre_[1] - (y - 0.5 * height_) / pixels_per_unit(1);
}

void UvView::pan(double dx, double dy) {
    centre_[0] -= dx / pixels_per_unit(0);
    centre_[1] += dy / pixels_per_unit(1);
}

void UvView::zoom(double factor, double x, double y) {
    double u, v;
    to_uv(x, y, u, v);
    scale_ = std::clamp(scale_ * factor, k_min_scale, k_max_scale);
    double now_x, now_y;
    to_pixel(u, v, now_x, now_y);
    pan(x - now_x, y - now_y);
}

void UvView::frame(const UvBox& box) {
    const double size[2] = {std::max(shape_[0] * (box.high[0] - box.low[0]), 1e-6),
                            std::max(shape_[1] * (box.high[1] - box.low[1]), 1e-6)};
    const double room = 1.0 - 2.0 * k_margin;
    scale_ = std::clamp(std::min(room * width_ / size[0], room * height_ / size[1]), k_min_scale,
                        k_max_scale);
    for (int axis = 0; axis < 2; ++axis)
        centre_[axis] = 0.5 * (box.low[axis] + box.high[axis]);
}

int UvView::grid_step(const measure::Texture& texture, double min_pixels) const {
    const double pixels = scale_ / std::max(texture.width, texture.height);
    int step = 1;
    while (step * pixels < min_pixels && step < 65536)
        step *= 2;
    return step;
}

} // namespace window
