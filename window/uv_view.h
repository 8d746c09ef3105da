/// Which part of the texture a panel shows, and where: pan, zoom, frame, the step of the grid.
#pragma once

#include "window/uv_map.h"

namespace window {

/// Pixels count from the panel's top left corner; v points up.
class UvView {
public:
    /// Size of the panel in pixels, at least 1 x 1; the centre stays where it is.
    void resize(double width, double height);
    double width() const { return width_; }
    double height() const { return height_; }
    double pixels_per_unit() const { return scale_; }

    void to_pixel(double u, double v, double& x, double& y) const;
    void to_uv(double x, double y, double& u, double& v) const;

    /// The texture follows the mouse.
    void pan(double dx, double dy);
    /// `factor` > 1 enlarges; what is at the pixel stays there. Bounded to 8 .. 2^20 pixels a unit.
    void zoom(double factor, double x, double y);
    /// Shows all of a box, with a margin.
    void frame(const UvBox& box);

    /// Distance of grid lines in texels: the smallest power of two (1, 2, 4, ...) whose lines are
    /// at least `least` pixels apart.
    int grid_step(const measure::Texture& texture, double least) const;

private:
    double width_ = 1.0, height_ = 1.0;
    double centre_[2] = {0.5, 0.5};
    double scale_ = 256.0;
};

} // namespace window
