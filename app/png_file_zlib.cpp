// PNG files made with zlib alone, for systems without a packaged PNG library: one image, no filter,
// no interlace. Source: "Portable Network Graphics (PNG) Specification", second edition,
// W3C, 2003.
#include "app/png_file.h"

#include <new>
#include <vector>
#include <zlib.h>

namespace app {
namespace {

constexpr int k_level = 3;

std::string big_endian(uint32_t value) {
    std::string bytes(4, '\0');
    for (size_t i = 0; i < 4; ++i)
        bytes[i] = static_cast<char>(value >> (24 - 8 * i) & 0xFF);
    return bytes;
}

/// A PNG chunk: length, type, content, and the CRC of type and content.
std::string chunk(const std::string& type, const std::string& content) {
    const std::string body = type + content;
    const uLong check = crc32(0, reinterpret_cast<const Bytef*>(body.data()), uInt(body.size()));
    return big_endian(static_cast<uint32_t>(content.size())) + body +
           big_endian(static_cast<uint32_t>(check));
}

/// Every row begins with the number of its filter; 0 means no filter.
std::vector<uint8_t> filtered_rows(int width, int height, const uint8_t* pixels) {
    const size_t row = static_cast<size_t>(width) * 3;
    std::vector<uint8_t> rows;
    rows.reserve((row + 1) * static_cast<size_t>(height));
    for (int y = 0; y < height; ++y, pixels += row) {
        rows.push_back(0);
        rows.insert(rows.end(), pixels, pixels + row);
    }
    return rows;
}

} // namespace

bool encode_png(int width, int height, const uint8_t* pixels, std::string& bytes) {
    try {
        const std::vector<uint8_t> rows = filtered_rows(width, height, pixels);
        uLongf size = compressBound(static_cast<uLong>(rows.size()));
        std::string packed(size, '\0');
        if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size, rows.data(),
                      static_cast<uLong>(rows.size()), k_level) != Z_OK)
            return false;
        packed.resize(size);
        // 8 bits per channel, RGB, then compression 0, filter 0, interlace 0.
        const std::string header = big_endian(static_cast<uint32_t>(width)) +
                                   big_endian(static_cast<uint32_t>(height)) +
                                   std::string({8, 2, 0, 0, 0});
        bytes = std::string("\x89PNG\r\n\x1a\n") + chunk("IHDR", header) + chunk("IDAT", packed) +
                chunk("IEND", "");
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace app
