/// What a new user meets: meshes to try while the scene is empty, and a walk of two minutes through
/// the window.
#pragma once

#include "window/state.h"

namespace window {

/// Draws into the current ImGui window, in the middle of a rectangle.
void draw_welcome(State& state, float left, float top, float width, float height);

/// Draws the walk while it is on, in a window of its own at (left, bottom), and goes on to the next
/// step once the user has done the present one.
void draw_walk(State& state, float left, float bottom);

} // namespace window
