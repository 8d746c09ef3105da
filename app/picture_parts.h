/// What the pictures share.
#pragma once

#include "app/picture.h"
#include "app/picture_canvas.h"

namespace app {

/// Neighbouring numbers get colours far apart: hues go round by the golden section.
Colour chart_colour(uint32_t chart);

/// The colour of an L2 stretch, 1 = even: blue below, green, red above, dark at 1/2 and 2.
Colour stretch_colour(double stretch);

Canvas draw_layout(const PictureSubject& subject);
Canvas draw_stretch(const PictureSubject& subject);
Canvas draw_checker(const PictureSubject& subject);

} // namespace app
