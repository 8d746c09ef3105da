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

} // namespace app
