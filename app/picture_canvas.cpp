#include "app/picture_canvas.h"

#include "app/png_file.h"

#include <algorithm>
#include <cmath>

namespace app {
namespace {

uint8_t to_byte(double value) {
    return static_cast<uint8_t>(std::clamp(value * 255.0 + 0.5, 0.0, 255.0));
}

/// Seven rows of five pixels, highest bit left.
struct Glyph {
    char letter;
    uint8_t rows[7];
};

constexpr Glyph k_glyphs[] = {
    {'0', {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}},
    {'1', {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'2', {0x0E, 0x11, 0x01, 0x06, 0x08, 0x10, 0x1F}},
    {'3', {0x1E, 0x01, 0x01, 0x0E, 0x01, 0x01, 0x1E}},
    {'4', {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}},
    {'5', {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E}},
    {'6', {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}},
    {'7', {0x1F, 0x01, 0x02, 0x04, 0x04, 0x08, 0x08}},
    {'8', {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}},
    {'9', {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}},
    {'.', {0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x0C}},
    {'-', {0x00, 0x00, 0x00, 0x1F, 0x00, 0x00, 0x00}},
    {'%', {0x18, 0x19, 0x02, 0x04, 0x08, 0x13, 0x03}},
    {'/', {0x00, 0x01, 0x02, 0x04, 0x08, 0x10, 0x00}},
    {'=', {0x00, 0x00, 0x1F, 0x00, 0x1F, 0x00, 0x00}},
    {':', {0x00, 0x0C, 0x0C, 0x00, 0x0C, 0x0C, 0x00}},
    {'x', {0x00, 0x00, 0x11, 0x0A, 0x04, 0x0A, 0x11}},
    {'A', {0x04, 0x0A, 0x11, 0x11, 0x1F, 0x11, 0x11}},
    {'B', {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E}},
    {'C', {0x0E, 0x11, 0x10, 0x10, 0x10, 0x11, 0x0E}},
    {'D', {0x1E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x1E}},
    {'E', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x1F}},
    {'F', {0x1F, 0x10, 0x10, 0x1E, 0x10, 0x10, 0x10}},
    {'G', {0x0E, 0x11, 0x10, 0x13, 0x11, 0x11, 0x0F}},
    {'H', {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}},
    {'I', {0x0E, 0x04, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'J', {0x01, 0x01, 0x01, 0x01, 0x11, 0x11, 0x0E}},
    {'K', {0x11, 0x12, 0x14, 0x18, 0x14, 0x12, 0x11}},
    {'L', {0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x1F}},
    {'M', {0x11, 0x1B, 0x15, 0x15, 0x11, 0x11, 0x11}},
    {'N', {0x11, 0x19, 0x15, 0x15, 0x13, 0x11, 0x11}},
    {'O', {0x0E, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}},
    {'P', {0x1E, 0x11, 0x11, 0x1E, 0x10, 0x10, 0x10}},
    {'Q', {0x0E, 0x11, 0x11, 0x11, 0x15, 0x12, 0x0D}},
    {'R', {0x1E, 0x11, 0x11, 0x1E, 0x14, 0x12, 0x11}},
    {'S', {0x0F, 0x10, 0x10, 0x0E, 0x01, 0x01, 0x1E}},
    {'T', {0x1F, 0x04, 0x04, 0x04, 0x04, 0x04, 0x04}},
    {'U', {0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x0E}},
    {'V', {0x11, 0x11, 0x11, 0x11, 0x0A, 0x0A, 0x04}},
    {'W', {0x11, 0x11, 0x11, 0x15, 0x15, 0x15, 0x0A}},
    {'X', {0x11, 0x11, 0x0A, 0x04, 0x0A, 0x11, 0x11}},
    {'Y', {0x11, 0x11, 0x0A, 0x04, 0x04, 0x04, 0x04}},
    {'Z', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x10, 0x1F}},
};

const Glyph* find_glyph(char letter) {
    for (const Glyph& glyph : k_glyphs)
        if (glyph.letter == letter)
            return &glyph;
    return nullptr;
}

} // namespace

Colour mix(Colour a, Colour b, double share) {
    const auto one = [share](uint8_t from, uint8_t to) {
        return static_cast<uint8_t>(from + (to - from) * share + 0.5);
    };
    return {one(a.r, b.r), one(a.g, b.g), one(a.b, b.b)};
}

Colour hsv(double hue, double saturation, double value) {
    const auto channel = [&](double shift) {
        const double turn = (hue + shift) - std::floor(hue + shift);
        const double ramp = std::clamp(std::abs(turn * 6.0 - 3.0) - 1.0, 0.0, 1.0);
        return to_byte(value * (1.0 - saturation + saturation * ramp));
    };
    return {channel(0.0), channel(2.0 / 3.0), channel(1.0 / 3.0)};
}

Canvas::Canvas(int width, int height, Colour background)
    : width_(width), height_(height),
      pixels_(static_cast<size_t>(width) * static_cast<size_t>(height) * 3) {
    fill(0, 0, width, height, background);
}

Colour Canvas::at(int x, int y) const {
    const size_t i = (static_cast<size_t>(y) * static_cast<size_t>(width_) + size_t(x)) * 3;
    return {pixels_[i], pixels_[i + 1], pixels_[i + 2]};
}

void Canvas::put(int x, int y, Colour colour) {
    if (!holds(x, y))
        return;
    const size_t i = (static_cast<size_t>(y) * static_cast<size_t>(width_) + size_t(x)) * 3;
    pixels_[i] = colour.r;
    pixels_[i + 1] = colour.g;
    pixels_[i + 2] = colour.b;
}

void Canvas::fill(int left, int top, int right, int bottom, Colour colour) {
    for (int y = std::max(top, 0); y < std::min(bottom, height_); ++y)
        for (int x = std::max(left, 0); x < std::min(right, width_); ++x)
            put(x, y, colour);
}

void Canvas::line(PixelPoint from, PixelPoint to, Colour colour) {
    // Far outside there is nothing to see, and steps would not end.
    const double reach = 4.0 * (width_ + height_);
    for (double value : {from.x, from.y, to.x, to.y})
        if (!(std::abs(value) <= reach))
            return;
    const double dx = to.x - from.x, dy = to.y - from.y;
    const int steps =
        std::max(1, static_cast<int>(std::ceil(std::max(std::abs(dx), std::abs(dy)))));
    for (int i = 0; i <= steps; ++i) {
        const double t = static_cast<double>(i) / steps;
        put(static_cast<int>(std::floor(from.x + t * dx)),
            static_cast<int>(std::floor(from.y + t * dy)), colour);
    }
}

void Canvas::text(int left, int top, const std::string& words, Colour colour, int size) {
    for (size_t i = 0; i < words.size(); ++i) {
        const Glyph* glyph = find_glyph(words[i]);
        for (int row = 0; glyph && row < 7; ++row)
            for (int column = 0; column < 5; ++column)
                if (glyph->rows[row] >> (4 - column) & 1) {
                    const int x = left + (static_cast<int>(i) * 6 + column) * size;
                    const int y = top + row * size;
                    fill(x, y, x + size, y + size, colour);
                }
    }
}

bool Canvas::to_png(std::string& bytes, std::string& error) const {
    const bool is_good = encode_png(width_, height_, pixels_.data(), bytes);
    if (!is_good)
        error = "the picture cannot be made: not enough memory";
    return is_good;
}

} // namespace app
