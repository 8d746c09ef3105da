#include "app/png_file.h"

#include <csetjmp>
#include <png.h>

namespace app {
namespace {

/// libpng reports errors by longjmp; no object with a destructor may live in the frames it skips.
struct PngFault {
    std::jmp_buf way_out;
};

void give_up(png_structp png, png_const_charp) {
    std::longjmp(static_cast<PngFault*>(png_get_error_ptr(png))->way_out, 1);
}

void keep_quiet(png_structp, png_const_charp) {}

/// Receives the file's bytes. std::bad_alloc must not propagate through libpng's C frames.
struct PngBytes {
    std::string* bytes;
    bool is_out_of_memory = false;
};

void take_bytes(png_structp png, png_bytep data, png_size_t size) {
    auto* sink = static_cast<PngBytes*>(png_get_io_ptr(png));
    try {
        sink->bytes->append(reinterpret_cast<const char*>(data), size);
    } catch (...) {
        sink->is_out_of_memory = true;
    }
    if (sink->is_out_of_memory)
        png_error(png, "memory");
}

void nothing_to_flush(png_structp) {}

bool write_png(png_structp png, png_infop info, PngFault& fault, int width, int height,
               const uint8_t* pixels) {
    if (setjmp(fault.way_out))
        return false;
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    // Large flat areas: no filter and a fast level compress as well as slower settings.
    png_set_filter(png, 0, PNG_FILTER_NONE);
    png_set_compression_level(png, 3);
    png_write_info(png, info);
    for (int y = 0; y < height; ++y)
        png_write_row(png, pixels + static_cast<size_t>(y) * static_cast<size_t>(width) * 3);
    png_write_end(png, nullptr);
    return true;
}

} // namespace

bool encode_png(int width, int height, const uint8_t* pixels, std::string& bytes) {
    bytes.clear();
    PngFault fault;
    PngBytes sink{&bytes};
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &fault, give_up, keep_quiet);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    bool is_good = false;
    if (info) {
        png_set_write_fn(png, &sink, take_bytes, nothing_to_flush);
        is_good = write_png(png, info, fault, width, height, pixels);
    }
    png_destroy_write_struct(&png, &info);
    return is_good;
}

} // namespace app
