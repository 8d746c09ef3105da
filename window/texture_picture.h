/// A picture of the user's own, shown as the texture of the mesh.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace window {

struct TexturePicture {
    int width = 0, height = 0;
    std::vector<uint8_t> rgb; ///< 3 bytes per pixel, top row first
    bool is_empty() const { return rgb.empty(); }
};

/// Reads a PNG or JPEG file of at most 16384 x 16384 pixels.
/// Errors: false with a sentence in `error`; `picture` is as before.
bool read_picture(const std::string& path, TexturePicture& picture, std::string& error);

} // namespace window
