/// An RGB picture in memory, with simple drawing.
///
/// Colours are 8-bit red, green, blue. Pixel (0, 0) is at the top left; the centre of pixel (x, y)
/// is (x + 0.5, y + 0.5). Drawing is clipped to the canvas.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace app {

struct Colour {
    uint8_t r = 0, g = 0, b = 0;
};

inline bool operator==(Colour a, Colour b) { return a.r == b.r && a.g == b.g && a.b == b.b; }

/// Linear blend: (1 - share) * a + share * b.
Colour mix(Colour a, Colour b, double share);

/// Hue in turns (0 red, 1/3 green, 2/3 blue); saturation and value 0..1.
Colour hsv(double hue, double saturation, double value);

struct PixelPoint {
    double x = 0.0, y = 0.0;
};

class Canvas {
public:
    Canvas(int width, int height, Colour background);

    int width() const { return width_; }
    int height() const { return height_; }
    bool holds(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }
    Colour at(int x, int y) const;
    void put(int x, int y, Colour colour);

    /// Calls visit(x, y) for each pixel whose centre lies in the triangle. A centre on an edge
    /// counts on one side only, so that adjacent triangles neither share a pixel nor leave a gap.
    template <class Visit>
    void visit_triangle(const PixelPoint (&p)[3], Visit visit) const;

    void fill(int left, int top, int right, int bottom, Colour colour);
    /// Draws capital letters, digits and " .-%/=:x" in cells of 6 x 8 pixels, enlarged `size`
    /// times.
    void text(int left, int top, const std::string& words, Colour colour, int size);

    /// The picture as a PNG file.
    /// Errors: false with a sentence in `error`.
    bool to_png(std::string& bytes, std::string& error) const;

private:
    int width_, height_;
    std::vector<uint8_t> pixels_; // rows from the top, 3 bytes a pixel
};

// Rows are sampled at pixel centres; a span runs from the first centre at or right of the left edge
// to the last centre left of the right edge.
template <class Visit>
void Canvas::visit_triangle(const PixelPoint (&p)[3], Visit visit) const {
    const PixelPoint* c[3] = {&p[0], &p[1], &p[2]};
    for (int i : {0, 1, 0}) // sort by y
        if (c[i]->y > c[i + 1]->y) {
            const PixelPoint* other = c[i];
            c[i] = c[i + 1];
            c[i + 1] = other;
        }
    const auto clamp_to = [](double value, int max) {
        return value <= 0.0 ? 0 : value >= max ? max : static_cast<int>(value);
    };
    // The first centre at or beyond a coordinate has index ceil(coordinate - 0.5).
    const auto first_centre = [&](double at, int max) {
        const double shifted = at - 0.5;
        const int whole = clamp_to(shifted, max);
        return whole + (whole < shifted && whole < max ? 1 : 0);
    };
    const auto across = [](const PixelPoint& a, const PixelPoint& b, double y) {
        return a.x + (b.x - a.x) * ((y - a.y) / (b.y - a.y));
    };
    const int last_row = first_centre(c[2]->y, height_);
    for (int y = first_centre(c[0]->y, height_); y < last_row; ++y) {
        const double middle = y + 0.5;
        const double one = across(*c[0], *c[2], middle);
        const double other =
            middle < c[1]->y ? across(*c[0], *c[1], middle) : across(*c[1], *c[2], middle);
        const int end = first_centre(one > other ? one : other, width_);
        for (int x = first_centre(one > other ? other : one, width_); x < end; ++x)
            visit(x, y);
    }
}

} // namespace app
