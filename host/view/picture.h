/// Pictures of the panels and their PNG files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// Pixels of 8 bits red, green and blue each, rows from the top.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgb;

    const uint8_t* pixel(int x, int y_from_top) const {
        return rgb.data() + 3 * (size_t(y_from_top) * size_t(width) + size_t(x));
    }
};

/// The picture as a PNG file; empty when it has no pixels or memory runs out.
std::string png_of(const Picture& picture);

/// Copies the rectangle whose lower left corner is (x, y) from the framebuffer that is bound for
/// reading. The context must be current.
Picture read_pixels(int x, int y, int width, int height);

} // namespace host
