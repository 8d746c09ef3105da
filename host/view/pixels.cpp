#include "host/view/pixels.h"

#include <GL/gl.h>

#include <algorithm>
#include <png.h>

namespace host {

std::string png_of(const Picture& picture) {
    png_image header = {};
    header.version = PNG_IMAGE_VERSION;
    header.width = png_uint_32(picture.width);
    header.height = png_uint_32(picture.height);
    header.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    if (picture.rgb.empty() ||
        !png_image_write_get_memory_size(header, size, 0, picture.rgb.data(), 0, nullptr))
        return "";
    std::string file(size, '\0');
    if (!png_image_write_to_memory(&header, file.data(), &size, 0, picture.rgb.data(), 0, nullptr))
        return "";
    file.resize(size);
    return file;
}

Picture read_pixels(int x, int y, int width, int height) {
    Picture picture;
    picture.width = width;
    picture.height = height;
    const size_t row = 3 * size_t(width);
    picture.rgb.resize(row * size_t(height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, width, height, GL_RGB, GL_UNSIGNED_BYTE, picture.rgb.data());
    // OpenGL returns the bottom row first.
    const auto begin = picture.rgb.begin();
    for (size_t low = 0, high = size_t(height); low + 1 < high; ++low)
        std::swap_ranges(begin + long(low * row), begin + long((low + 1) * row),
                         begin + long(--high * row));
    return picture;
}

} // namespace host
