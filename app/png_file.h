/// PNG files: 8-bit red, green, blue, rows from the top.
#pragma once

#include <cstdint>
#include <string>

namespace app {

/// Shape: pixels[3*width*height] -> bytes, a whole file.
/// Errors: false when memory runs out.
bool encode_png(int width, int height, const uint8_t* pixels, std::string& bytes);

} // namespace app
