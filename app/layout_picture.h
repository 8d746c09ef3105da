/// Pictures of a layout, drawn without a display.
///
/// layout   the texture: every chart in its own colour, outlines, polygon edges where there is
/// room,
///          the texel grid, half the gutter around each chart; red where charts come closer than
///          the gutter, overlap or are flipped.
/// stretch  the texture: every triangle coloured by its L2 stretch at the layout's mean density,
/// blue
///          where it has more texels than the mean, red where it has fewer; a legend below.
/// checker  the mesh from two opposite corners, with a checkerboard of texels; charts tinted.
/// The first two have one or more pixels per texel; v points up.
#pragma once

#include "measure/measure.h"

#include <string>

namespace app {

enum class PictureKind { layout, checker, stretch };

/// Finds a kind by its name. Errors: false for any other name.
bool picture_kind(const std::string& name, PictureKind& kind);

/// The layout that a picture shows, and its measurements.
struct PictureSubject {
    const measure::Layout& layout;
    const measure::Measures& measures; ///< of `layout` on `texture`
    measure::Texture texture;          ///< size in texels, whole numbers
    double gutter = 2.0;               ///< texels
};

/// Draws the picture; `png` is the content of a PNG file.
/// Errors: false with a sentence in `error`; std::bad_alloc.
bool draw_picture(PictureKind kind, const PictureSubject& subject, std::string& png,
                  std::string& error);

} // namespace app
