/// Colours and drawing functions shared by the kinds of pictures.
#pragma once

#include "app/canvas.h"
#include "app/layout_picture.h"

namespace app {

/// A colour per chart. Hues advance by the golden ratio, so that consecutive charts differ clearly.
Colour chart_colour(uint32_t chart);

/// The colour of an L2 stretch: dark blue at 1/2, green at 1 (isometric), dark red at 2.
Colour stretch_colour(double stretch);

Canvas draw_layout(const PictureSubject& subject);
Canvas draw_stretch(const PictureSubject& subject);
Canvas draw_checker(const PictureSubject& subject);

/// The same without details that need room, in at most `side` x `side` pixels.
Canvas draw_small_layout(const PictureSubject& subject, int side);
Canvas draw_small_stretch(const PictureSubject& subject, int side);
/// The mesh from one corner, in side x side pixels: with a checkerboard of texels, or with its
/// seams and open borders as lines.
Canvas draw_small_checker(const PictureSubject& subject, int side);
Canvas draw_small_seams(const PictureSubject& subject, int side);

} // namespace app
