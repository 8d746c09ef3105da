#include "app/layout_picture.h"

#include "app/picture_parts.h"

#include <algorithm>
#include <cmath>

namespace app {
namespace {

constexpr Colour k_background = {24, 26, 31};
constexpr Colour k_red = {235, 25, 25};
constexpr Colour k_ink = {10, 10, 12};
constexpr Colour k_paper = {232, 234, 238};
constexpr int k_min_side = 2048;    // pixels; smaller textures are enlarged by a whole factor
constexpr int k_legend_height = 72; // pixels
constexpr double k_max_stretch = 2.0;
constexpr uint16_t k_contested = 65535; // claimed by the gutters of two charts

double longer_side(const PictureSubject& subject) {
    return std::max(subject.texture.width, subject.texture.height);
}

/// The whole factor by which a picture of its own enlarges the texture.
double whole_zoom(const PictureSubject& subject) {
    return std::max(1, k_min_side / static_cast<int>(longer_side(subject)));
}

/// Draws the texture in layers, with `zoom` pixels a texel.
class TexturePainter {
public:
    TexturePainter(const PictureSubject& subject, double zoom, int strip_below)
        : layout_(subject.layout), measures_(subject.measures), subject_(subject), zoom_(zoom),
          width_(std::max(1, static_cast<int>(subject.texture.width * zoom + 0.5))),
          height_(std::max(1, static_cast<int>(subject.texture.height * zoom + 0.5))),
          canvas_(width_, height_ + strip_below, k_background),
          owner_(static_cast<size_t>(width_) * static_cast<size_t>(height_), 0) {}

    template <class ColourOf>
    void fill_triangles(ColourOf colour_of) {
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            const uint32_t chart = measures_.triangle_chart[t];
            if (chart == measure::k_none)
                continue;
            const Colour colour = colour_of(t);
            visit(t, [&](int x, int y) {
                canvas_.put(x, y, colour);
                owner_[index(x, y)] = tag(chart);
            });
        }
    }

    /// A band of half the gutter's width around each chart; red where two bands overlap.
    void draw_gutter() {
        const double radius = 0.5 * subject_.gutter * zoom_ - 0.75;
        if (radius <= 0.5)
            return;
        std::vector<uint16_t> claimed(owner_.size(), 0);
        for (uint32_t half_edge : measures_.outline) {
            const uint16_t mine = tag(measures_.triangle_chart[half_edge / 3]);
            const Colour tone = mix(k_background, {150, 158, 172}, 0.38);
            along(half_edge, std::max(0.5, 0.2 * radius), [&](double x, double y) {
                stamp(x, y, radius, [&](int px, int py) {
                    const size_t i = index(px, py);
                    if (owner_[i] == mine || claimed[i] == mine || claimed[i] == k_contested)
                        return;
                    const bool is_taken = owner_[i] || claimed[i];
                    canvas_.put(px, py, is_taken ? k_red : tone);
                    claimed[i] = is_taken ? k_contested : mine;
                });
            });
        }
    }

    /// Lines between texels, or between blocks of texels if single texels are under 4 pixels.
    void draw_grid() {
        int step = static_cast<int>(zoom_);
        while (step < 4)
            step *= 2;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x) {
                const bool is_strong = x % (16 * step) == 0 || y % (16 * step) == 0;
                if (!is_strong && x % step != 0 && y % step != 0)
                    continue;
                const Colour under = canvas_.at(x, y);
                canvas_.put(x, y,
                            owner_[index(x, y)] ? mix(under, k_ink, is_strong ? 0.22 : 0.10)
                                                : mix(under, k_paper, is_strong ? 0.2 : 0.07));
            }
    }

    /// Polygon edges inside charts, unless triangles are so small that the picture would turn
    /// black.
    void draw_polygon_edges() {
        const double pixels = measures_.coverage * width_ * height_;
        if (pixels < 80.0 * layout_.triangle_count())
            return;
        find_polygon_ends();
        for (uint32_t half_edge = 0; half_edge < 3 * layout_.triangle_count(); ++half_edge)
            if (measures_.triangle_chart[half_edge / 3] != measure::k_none &&
                is_polygon_edge(half_edge))
                along(half_edge, 0.5, [&](double x, double y) { darken(x, y, 0.3); });
    }

    void draw_outlines() {
        for (uint32_t half_edge : measures_.outline)
            along(half_edge, 0.5, [&](double x, double y) { darken(x, y, 0.85); });
    }

    void draw_faults() {
        for (const auto* list : {&measures_.overlaps.triangles, &measures_.flipped})
            for (uint32_t t : *list)
                visit(t, [&](int x, int y) { // striped, so that the charts below stay visible
                    if ((x + y) % 8 < 4)
                        canvas_.put(x, y, k_red);
                });
    }

    Canvas& canvas() { return canvas_; }
    int height() const { return height_; }

private:
    size_t index(int x, int y) const {
        return static_cast<size_t>(y) * static_cast<size_t>(width_) + static_cast<size_t>(x);
    }
    static uint16_t tag(uint32_t chart) { return static_cast<uint16_t>(chart % 65534 + 1); }

    PixelPoint point(uint32_t slot) const {
        const uint32_t uv = layout_.corner_uv[layout_.triangle_corners[slot]];
        return {static_cast<double>(layout_.uvs[2 * uv]) * width_,
                (1.0 - static_cast<double>(layout_.uvs[2 * uv + 1])) * height_};
    }

    template <class Visit>
    void visit(uint32_t t, Visit visit) const {
        const PixelPoint corners[3] = {point(3 * t), point(3 * t + 1), point(3 * t + 2)};
        canvas_.visit_triangle(corners, [&](int x, int y) {
            if (y < height_)
                visit(x, y);
        });
    }

    /// Calls step(x, y) at points along a half-edge, at most `stride` pixels apart.
    template <class Step>
    void along(uint32_t half_edge, double stride, Step step) const {
        const uint32_t t = half_edge / 3, k = half_edge % 3;
        const PixelPoint a = point(half_edge), b = point(3 * t + (k + 1) % 3);
        const double dx = b.x - a.x, dy = b.y - a.y;
        const double longest = std::max(std::abs(dx), std::abs(dy));
        if (!(longest < 16.0 * (width_ + height_))) // mostly far outside the picture, or NaN
            return;
        const int steps = std::max(1, static_cast<int>(longest / stride) + 1);
        for (int i = 0; i <= steps; ++i)
            step(a.x + dx * i / steps, a.y + dy * i / steps);
    }

    template <class Visit>
    void stamp(double x, double y, double radius, Visit visit) const {
        if (!(x > -radius && y > -radius && x < width_ + radius && y < height_ + radius))
            return;
        const int top = std::max(0, static_cast<int>(y - radius));
        const int left = std::max(0, static_cast<int>(x - radius));
        for (int py = top; py < std::min<double>(height_, y + radius); ++py)
            for (int px = left; px < std::min<double>(width_, x + radius); ++px) {
                const double dx = px + 0.5 - x, dy = py + 0.5 - y;
                if (dx * dx + dy * dy <= radius * radius)
                    visit(px, py);
            }
    }

    void darken(double x, double y, double share) {
        if (!(x >= 0.0 && y >= 0.0 && x < width_ && y < height_))
            return;
        const int px = static_cast<int>(x), py = static_cast<int>(y);
        canvas_.put(px, py, mix(canvas_.at(px, py), k_ink, share));
    }

    void find_polygon_ends() {
        first_.assign(layout_.polygon_count, measure::k_none);
        last_.assign(layout_.polygon_count, 0);
        for (uint32_t slot = 0; slot < 3 * layout_.triangle_count(); ++slot) {
            const uint32_t polygon = layout_.triangle_polygon[slot / 3];
            first_[polygon] = std::min(first_[polygon], layout_.triangle_corners[slot]);
            last_[polygon] = std::max(last_[polygon], layout_.triangle_corners[slot]);
        }
    }

    /// False for diagonals of the triangulation: they join corners that are not adjacent.
    bool is_polygon_edge(uint32_t half_edge) const {
        const uint32_t t = half_edge / 3, polygon = layout_.triangle_polygon[t];
        const uint32_t a = layout_.triangle_corners[half_edge];
        const uint32_t b = layout_.triangle_corners[3 * t + (half_edge % 3 + 1) % 3];
        const uint32_t low = std::min(a, b), high = std::max(a, b);
        return high - low == 1 || (low == first_[polygon] && high == last_[polygon]);
    }

    const measure::Layout& layout_;
    const measure::Measures& measures_;
    const PictureSubject& subject_;
    double zoom_;
    int width_, height_;
    Canvas canvas_;
    std::vector<uint16_t> owner_;        // chart tag per pixel; 0 if no chart covers it
    std::vector<uint32_t> first_, last_; // first and last corner of each polygon
};

/// A colour bar of stretch from 1/2 to 2, on a logarithmic scale.
void draw_legend(Canvas& canvas, int top) {
    const int left = 40, right = canvas.width() - 40;
    canvas.fill(0, top, canvas.width(), canvas.height(), k_ink);
    for (int x = left; x < right; ++x) {
        const double share = static_cast<double>(x - left) / (right - left);
        const double stretch = std::pow(k_max_stretch, 2.0 * share - 1.0);
        canvas.fill(x, top + 30, x + 1, top + 50, stretch_colour(stretch));
    }
    canvas.text(left, top + 8, "L2 STRETCH PER TRIANGLE AT MEAN DENSITY", k_paper, 2);
    const std::pair<double, const char*> marks[] = {
        {0.0, "0.5"}, {0.25, "0.71"}, {0.5, "1"}, {0.75, "1.41"}, {1.0, "2"}};
    for (const auto& [share, label] : marks) {
        const int x = left + static_cast<int>(share * (right - left));
        canvas.fill(x, top + 30, x + 2, top + 54, k_paper);
        canvas.text(x - 10, top + 56, label, k_paper, 2);
    }
}

void fill_with_stretch(const measure::Measures& m, TexturePainter& painter) {
    const double density2 = m.density.mean * m.density.mean;
    painter.fill_triangles([&](uint32_t t) {
        const measure::TriangleMap& map = m.maps[t];
        if (map.smaller <= 0.0)
            return k_red;
        return stretch_colour(
            std::sqrt(0.5 * density2 *
                      (1.0 / (map.smaller * map.smaller) + 1.0 / (map.larger * map.larger))));
    });
}

} // namespace

bool picture_kind(const std::string& name, PictureKind& kind) {
    const std::pair<const char*, PictureKind> kinds[] = {{"layout", PictureKind::layout},
                                                         {"checker", PictureKind::checker},
                                                         {"stretch", PictureKind::stretch}};
    for (const auto& [known, value] : kinds)
        if (name == known) {
            kind = value;
            return true;
        }
    return false;
}

Colour chart_colour(uint32_t chart) {
    const double value = chart % 3 == 0 ? 0.92 : chart % 3 == 1 ? 0.78 : 0.85;
    return hsv(chart * 0.61803398875, chart % 2 ? 0.55 : 0.42, value);
}

Colour stretch_colour(double stretch) {
    constexpr Colour k_stops[] = {
        {20, 30, 110}, {60, 130, 220}, {120, 200, 120}, {240, 190, 60}, {150, 10, 20}};
    const double limited = std::clamp(stretch, 1.0 / k_max_stretch, k_max_stretch);
    const double place = 2.0 * (1.0 + std::log2(limited) / std::log2(k_max_stretch));
    const int stop = std::clamp(static_cast<int>(place), 0, 3);
    return mix(k_stops[stop], k_stops[stop + 1], place - stop);
}

Canvas draw_layout(const PictureSubject& subject) {
    TexturePainter painter(subject, whole_zoom(subject), 0);
    const std::vector<uint32_t>& chart = subject.measures.triangle_chart;
    painter.fill_triangles([&](uint32_t t) { return chart_colour(chart[t]); });
    painter.draw_gutter();
    painter.draw_grid();
    painter.draw_polygon_edges();
    painter.draw_outlines();
    painter.draw_faults();
    return std::move(painter.canvas());
}

Canvas draw_stretch(const PictureSubject& subject) {
    TexturePainter painter(subject, whole_zoom(subject), k_legend_height);
    fill_with_stretch(subject.measures, painter);
    painter.draw_gutter();
    painter.draw_grid();
    painter.draw_outlines();
    draw_legend(painter.canvas(), painter.height());
    return std::move(painter.canvas());
}

Canvas draw_small_layout(const PictureSubject& subject, int side) {
    TexturePainter painter(subject, side / longer_side(subject), 0);
    const std::vector<uint32_t>& chart = subject.measures.triangle_chart;
    painter.fill_triangles([&](uint32_t t) { return chart_colour(chart[t]); });
    painter.draw_outlines();
    painter.draw_faults();
    return std::move(painter.canvas());
}

Canvas draw_small_stretch(const PictureSubject& subject, int side) {
    TexturePainter painter(subject, side / longer_side(subject), 0);
    fill_with_stretch(subject.measures, painter);
    painter.draw_outlines();
    return std::move(painter.canvas());
}

bool draw_picture(PictureKind kind, const PictureSubject& subject, std::string& png,
                  std::string& error) {
    const Canvas canvas = kind == PictureKind::layout    ? draw_layout(subject)
                          : kind == PictureKind::checker ? draw_checker(subject)
                                                         : draw_stretch(subject);
    return canvas.to_png(png, error);
}

} // namespace app
