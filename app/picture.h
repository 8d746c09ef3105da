/// Pictures of a layout, drawn without a display.
///
/// layout   the texture with every chart in a colour of its own, chart outlines, polygon edges
/// where
///          there is room, the texel grid, and around each chart the half of the gutter that is
///          its own; red where two charts come closer than the gutter, overlap or are flipped.
/// stretch  the texture with every triangle coloured by its L2 stretch at the layout's mean
///          density: blue where texels are wasted, red where they are short; a legend below.
/// checker  the mesh from two opposite corners with a checker of texels on it, charts tinted.
/// The first two have one or more pixels for each texel; v points up.
#pragma once

#include "measure/measure.h"

#include <string>

namespace app {

enum class PictureKind { layout, checker, stretch };

/// Errors: false when `name` is none of the three.
bool picture_kind(const std::string& name, PictureKind& kind);

/// What a picture shows.
struct PictureSubject {
    const measure::Layout& layout;
    const measure::Measures& measures; ///< of that layout on that texture
    measure::Texture texture;          ///< whole texels
    double gutter = 2.0;               ///< texels
};

/// The picture as a PNG file.
/// Errors: false with a sentence in `error`; std::bad_alloc.
bool draw_picture(PictureKind kind, const PictureSubject& subject, std::string& png,
                  std::string& error);

} // namespace app
