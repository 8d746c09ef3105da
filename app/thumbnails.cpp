#include "app/thumbnails.h"

#include "app/picture_parts.h"

namespace app {
namespace {

constexpr int k_smallest_side =
    48; // 4 x 55 x 55 pixels of 12 bits stay below the limit in any case
constexpr Colour k_surround = {38, 41, 48};

/// Puts `picture`, drawn at twice the size, into a square of the strip, centred.
void put_halved(const Canvas& picture, int left, int side, Canvas& strip) {
    const int width = picture.width() / 2, height = picture.height() / 2;
    const int x0 = left + (side - width) / 2, y0 = (side - height) / 2;
    const auto average = [&](int x, int y, uint8_t Colour::*channel) {
        const int sum = picture.at(2 * x, 2 * y).*channel + picture.at(2 * x + 1, 2 * y).*channel +
                        picture.at(2 * x, 2 * y + 1).*channel +
                        picture.at(2 * x + 1, 2 * y + 1).*channel;
        return static_cast<uint8_t>(sum / 4);
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            strip.put(
                x0 + x, y0 + y,
                {average(x, y, &Colour::r), average(x, y, &Colour::g), average(x, y, &Colour::b)});
}

Canvas draw_strip(const PictureSubject& subject, int side) {
    Canvas strip(4 * side, side, k_surround);
    put_halved(draw_small_layout(subject, 2 * side), 0, side, strip);
    put_halved(draw_small_checker(subject, 2 * side), side, side, strip);
    put_halved(draw_small_stretch(subject, 2 * side), 2 * side, side, strip);
    put_halved(draw_small_seams(subject, 2 * side), 3 * side, side, strip);
    return strip;
}

/// Keeps `bits` bits of each channel, so that the file gets smaller.
void coarsen(Canvas& strip, int bits) {
    const int levels = (1 << bits) - 1;
    const auto coarse = [levels](uint8_t value) {
        return static_cast<uint8_t>((value * levels + 127) / 255 * 255 / levels);
    };
    for (int y = 0; y < strip.height(); ++y)
        for (int x = 0; x < strip.width(); ++x) {
            const Colour c = strip.at(x, y);
            strip.put(x, y, {coarse(c.r), coarse(c.g), coarse(c.b)});
        }
}

} // namespace

bool draw_thumbnails(const PictureSubject& subject, std::string& png, std::string& error) {
    for (int side = k_thumbnail_side; side >= k_smallest_side; side = side * 3 / 4) {
        Canvas strip = draw_strip(subject, side);
        for (const int bits : {6, 5, 4}) {
            coarsen(strip, bits);
            if (!strip.to_png(png, error))
                return false;
            if (png.size() <= k_thumbnails_limit)
                return true;
        }
    }
    return true;
}

} // namespace app
