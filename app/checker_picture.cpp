#include "app/picture_parts.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace app {
namespace {

struct Point3 {
    double x = 0.0, y = 0.0, z = 0.0;
};

constexpr int k_large_side = 1024; // pixels of each of the two views
constexpr Point3 k_front_eye = {1.0, 0.8, 1.4}, k_back_eye = {-1.0, -0.5, -1.4};
constexpr Colour k_background = {38, 41, 48};
constexpr Colour k_unmapped = {235, 25, 25};
constexpr Colour k_seam = {30, 80, 235};

Point3 operator-(Point3 a, Point3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(Point3 a, Point3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point3 cross(Point3 a, Point3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Point3 unit(Point3 a) {
    const double size = std::sqrt(dot(a, a));
    return size > 0.0 ? Point3{a.x / size, a.y / size, a.z / size} : Point3{};
}

/// An orthographic camera that looks at the mesh from one corner of its bounding box; y is up.
struct Look {
    Point3 right, up, back; ///< unit vectors; `back` points at the eye
    double scale = 1.0;     ///< pixels per unit of length
    Point3 centre;
    int side = 0; ///< pixels
    int left = 0; ///< first column of the view in the picture

    Point3 project(Point3 p) const {
        const Point3 q = p - centre;
        return {left + 0.5 * side + scale * dot(right, q), 0.5 * side - scale * dot(up, q),
                dot(back, q)};
    }
};

/// Draws a mesh from corners of its bounding box, one view beside the other.
class MeshPainter {
public:
    enum Surface { checker, plain };

    MeshPainter(const PictureSubject& subject, Surface surface, int views, int side)
        : layout_(subject.layout), measures_(subject.measures), texture_(subject.texture),
          surface_(surface), side_(side), canvas_(views * side, side, k_background) {
        // Squares of whole texels, about 40 along the longer side of the texture.
        square_ = std::max(1.0, std::floor(std::max(texture_.width, texture_.height) / 40.0));
    }

    void draw_view(Point3 eye, int left) {
        look_ = look_from(eye, left);
        depth_.assign(static_cast<size_t>(side_) * static_cast<size_t>(side_),
                      -std::numeric_limits<float>::infinity());
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t)
            draw_triangle(look_, t);
    }

    /// Lines where charts end, in the view drawn last.
    void draw_seams() {
        // A line lies in the surface; without this lead it would sink into it here and there.
        const double lead = 2.0 / look_.scale;
        for (const uint32_t half_edge : measures_.outline) {
            const uint32_t t = half_edge / 3, k = half_edge % 3;
            const Point3 a = look_.project(position(half_edge));
            const Point3 b = look_.project(position(3 * t + (k + 1) % 3));
            const int steps =
                1 + static_cast<int>(2.0 * std::max(std::abs(b.x - a.x), std::abs(b.y - a.y)));
            for (int i = 0; i <= steps; ++i) {
                const double share = double(i) / steps;
                put_seam(static_cast<int>(a.x + share * (b.x - a.x)),
                         static_cast<int>(a.y + share * (b.y - a.y)),
                         a.z + share * (b.z - a.z) + lead);
            }
        }
    }

    Canvas& canvas() { return canvas_; }

private:
    size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(side_) +
               static_cast<size_t>(x - look_.left);
    }

    void put_seam(int x, int y, double depth) {
        for (const auto& [px, py] : {std::pair{x, y}, {x + 1, y}, {x, y + 1}})
            if (px >= look_.left && px < look_.left + side_ && py >= 0 && py < side_ &&
                depth >= depth_[index(px, py)])
                canvas_.put(px, py, k_seam);
    }

    Point3 position(uint32_t slot) const {
        const uint32_t v = layout_.corner_vertex[layout_.triangle_corners[slot]];
        return {layout_.positions[3 * v], layout_.positions[3 * v + 1],
                layout_.positions[3 * v + 2]};
    }

    Look look_from(Point3 eye, int left) const {
        Look look;
        look.side = side_;
        look.left = left;
        look.back = unit(eye);
        look.right = unit(cross({0.0, 1.0, 0.0}, look.back));
        look.up = cross(look.back, look.right);
        constexpr double far = std::numeric_limits<double>::max();
        double low[2] = {far, far}, high[2] = {-far, -far};
        for (uint32_t slot = 0; slot < 3 * layout_.triangle_count(); ++slot) {
            const Point3 p = position(slot);
            const double at[2] = {dot(look.right, p), dot(look.up, p)};
            for (int axis = 0; axis < 2; ++axis) {
                low[axis] = std::min(low[axis], at[axis]);
                high[axis] = std::max(high[axis], at[axis]);
            }
        }
        if (layout_.triangle_count() == 0)
            return look;
        const double x = 0.5 * (low[0] + high[0]), y = 0.5 * (low[1] + high[1]);
        look.centre = {look.right.x * x + look.up.x * y, look.right.y * x + look.up.y * y,
                       look.right.z * x + look.up.z * y};
        const double extent = std::max(high[0] - low[0], high[1] - low[1]);
        look.scale = extent > 0.0 ? 0.92 * side_ / extent : 1.0;
        return look;
    }

    void draw_triangle(const Look& look, uint32_t t) {
        Point3 p[3];
        for (uint32_t k = 0; k < 3; ++k)
            p[k] = look.project(position(3 * t + k));
        const double area =
            (p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[1].y - p[0].y) * (p[2].x - p[0].x);
        if (area == 0.0)
            return;
        // The mesh may be open, so back faces are drawn too, darker.
        const Point3 normal = unit(
            cross(position(3 * t + 1) - position(3 * t), position(3 * t + 2) - position(3 * t)));
        const double facing = dot(normal, look.back);
        const double light = facing >= 0.0 ? 0.45 + 0.55 * facing : 0.25 - 0.15 * facing;
        const PixelPoint corners[3] = {{p[0].x, p[0].y}, {p[1].x, p[1].y}, {p[2].x, p[2].y}};
        canvas_.visit_triangle(corners, [&](int x, int y) {
            if (x < look.left || x >= look.left + side_)
                return;
            const double px = x + 0.5, py = y + 0.5;
            double share[3];
            share[1] =
                ((px - p[0].x) * (p[2].y - p[0].y) - (py - p[0].y) * (p[2].x - p[0].x)) / area;
            share[2] =
                ((p[1].x - p[0].x) * (py - p[0].y) - (p[1].y - p[0].y) * (px - p[0].x)) / area;
            share[0] = 1.0 - share[1] - share[2];
            float& nearest = depth_[index(x, y)];
            const auto here =
                static_cast<float>(share[0] * p[0].z + share[1] * p[1].z + share[2] * p[2].z);
            if (here <= nearest)
                return;
            nearest = here;
            canvas_.put(x, y, mix({0, 0, 0}, surface_colour(t, share), light));
        });
    }

    Colour surface_colour(uint32_t t, const double (&share)[3]) const {
        const uint32_t chart = measures_.triangle_chart[t];
        if (chart == measure::k_none)
            return k_unmapped;
        if (surface_ == plain)
            return mix(chart_colour(chart), {255, 255, 255}, 0.45);
        double u = 0.0, v = 0.0;
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t uv = layout_.corner_uv[layout_.triangle_corners[3 * t + k]];
            u += share[k] * layout_.uvs[2 * uv];
            v += share[k] * layout_.uvs[2 * uv + 1];
        }
        const double column = std::floor(u * texture_.width / square_);
        const double row = std::floor(v * texture_.height / square_);
        const bool is_light = std::fmod(std::abs(column + row), 2.0) < 0.5;
        return mix(chart_colour(chart), is_light ? Colour{255, 255, 255} : Colour{20, 20, 24},
                   is_light ? 0.75 : 0.55);
    }

    const measure::Layout& layout_;
    const measure::Measures& measures_;
    const measure::Texture& texture_;
    Surface surface_;
    double square_ = 1.0; // texels
    int side_;            // pixels
    Look look_;           // of the view drawn last
    Canvas canvas_;
    std::vector<float> depth_;
};

} // namespace

Canvas draw_checker(const PictureSubject& subject) {
    constexpr int side = k_large_side;
    MeshPainter painter(subject, MeshPainter::checker, 2, side);
    painter.draw_view(k_front_eye, 0);
    painter.draw_view(k_back_eye, side);
    painter.canvas().fill(side - 1, 0, side + 1, side, {12, 12, 14});
    return std::move(painter.canvas());
}

Canvas draw_small_checker(const PictureSubject& subject, int side) {
    MeshPainter painter(subject, MeshPainter::checker, 1, side);
    painter.draw_view(k_front_eye, 0);
    return std::move(painter.canvas());
}

Canvas draw_small_seams(const PictureSubject& subject, int side) {
    MeshPainter painter(subject, MeshPainter::plain, 1, side);
    painter.draw_view(k_front_eye, 0);
    painter.draw_seams();
    return std::move(painter.canvas());
}

} // namespace app
