#include "window/texture_picture.h"

#include <memory>
#include <stb/stb_image.h>

namespace window {

bool read_picture(const std::string& path, TexturePicture& picture, std::string& error) {
    constexpr int k_most = 16384;
    int width = 0, height = 0, channels = 0;
    if (!stbi_info(path.c_str(), &width, &height, &channels)) {
        error = path + ": not a PNG or JPEG picture that can be read";
        return false;
    }
    if (width > k_most || height > k_most) {
        error = path + ": pictures may have up to 16384 x 16384 pixels";
        return false;
    }
    const std::unique_ptr<stbi_uc, void (*)(void*)> pixels(
        stbi_load(path.c_str(), &width, &height, &channels, 3), stbi_image_free);
    if (!pixels) {
        error = path + ": the picture is damaged: " + stbi_failure_reason();
        return false;
    }
    picture.width = width;
    picture.height = height;
    picture.rgb.assign(pixels.get(), pixels.get() + size_t(3) * size_t(width) * size_t(height));
    return true;
}

} // namespace window
