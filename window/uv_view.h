/// Which part of the texture a panel shows, and where: pan, zoom, frame, the step of the grid.
#pragma once

#include "window/uv_map.h"

namespace window {

/// Pixels count from the panel's top left corner; v points up. Texels are square on the screen: a
/// texture that is wider than high is shown so.
class UvView {
public:
    /// Size of the panel in pixels, at least 1 x 1; the centre stays where it is.
    void resize(double width, double height);
    double width() const { return width_; }
    double height() const { return height_; }
    /// The texture's size, of which only the ratio counts. True when that changed.
    bool set_texture(const measure::Texture& texture);
    /// Along u (0) or v (1).
    double pixels_per_unit(int axis) const { return scale_ * shape_[axis]; }
    /// Along the longer side of the texture.
    double pixels_per_side() const { return scale_; }

    void to_pixel(double u, double v, double& x, double& y) const;
    void to_uv(double x, double y, double& u, double& v) const;

    /// The texture follows the mouse.
    void pan(double dx, double dy);
    /// `factor` > 1 enlarges; what is at the pixel stays there. Bounded to 8 .. 2^20 pixels a side.
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
    double shape_[2] = {1.0, 1.0}; ///< sides of the texture, the longer one as 1
};

} // namespace window
