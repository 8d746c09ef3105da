/// The mapping between a panel's pixels and UVs: pan, zoom, frame, grid spacing.
#pragma once

#include "window/uv_map.h"

namespace window {

/// Pixels have their origin at the panel's top left corner; v points up. Texels are square on the
/// screen, so the unit square has the texture's aspect ratio.
class UvView {
public:
    /// Sets the panel's size in pixels, clamped to at least 1 x 1; keeps the UV at the centre.
    void resize(double width, double height);
    double width() const { return width_; }
    double height() const { return height_; }
    /// Sets the aspect ratio. Returns true if it changed.
    bool set_texture(const measure::Texture& texture);
    /// Pixels per unit of u (axis 0) or v (axis 1).
    double pixels_per_unit(int axis) const { return scale_ * shape_[axis]; }
    /// Pixels along the longer side of the texture.
    double pixels_per_side() const { return scale_; }

    void to_pixel(double u, double v, double& x, double& y) const;
    void to_uv(double x, double y, double& u, double& v) const;

    /// Moves the texture by so many pixels, as dragged by the mouse.
    void pan(double dx, double dy);
    /// Zooms about pixel (x, y); `factor` > 1 enlarges. Clamped to 8 .. 2^20 pixels per side.
    void zoom(double factor, double x, double y);
    /// Zooms and pans to show the whole box with a margin.
    void frame(const UvBox& box);

    /// Grid spacing in texels: the smallest power of two with lines at least `min_pixels` apart.
    int grid_step(const measure::Texture& texture, double min_pixels) const;

private:
    double width_ = 1.0, height_ = 1.0;
    double centre_[2] = {0.5, 0.5};
    double scale_ = 256.0;
    double shape_[2] = {1.0, 1.0}; ///< sides of the texture, scaled so that the longer is 1
};

} // namespace window
