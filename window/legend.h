/// Explains the colours of a display mode: the scale of stretch or texel density, and the seams.
#pragma once

#include "window/state.h"

namespace window {

/// Draws into the current ImGui window what the state's display mode needs, ending at `right` and
/// centred on the line `middle`; nothing if it needs none. `width`: room in pixels. `has_seams`:
/// also tell the colours of the seams.
void draw_legend(const State& state, float right, float middle, float width, bool has_seams);

} // namespace window
