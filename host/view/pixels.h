/// Pixels read from OpenGL, and their PNG encoding.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// 8-bit RGB pixels, top row first.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;

    const uint8_t* pixel(int x, int y_from_top) const {
        return rgb.data() + 3 * (size_t(y_from_top) * size_t(width) + size_t(x));
    }
};

/// Encodes a picture as PNG; empty if it has no pixels or memory runs out.
std::string png_of(const Picture& picture);

/// Reads the rectangle with lower left corner (x, y) from the current read framebuffer.
Picture read_pixels(int x, int y, int width, int height);

} // namespace host
