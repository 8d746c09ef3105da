/// The host's progress window, as far as one unwrap uses it.
///
/// The window is held between `begin_progress` and `end_progress`, which the caller puts around
/// every unwrap. When somebody else holds it, everything below is silent and the unwrap runs all
/// the same. Main thread only.
#pragma once

#include <cstdint>

/// Whether this plug-in holds the host's progress window now.
extern bool progress_reserved;

/// Asks for the window and, when it is granted, opens it with the range 0 to 100.
void begin_progress();

/// Closes the window and gives it up, if it is held.
void end_progress();

/// Names the stage that starts, in the window's title and status line.
void show_stage(const char* text);

/// Shows a whole percentage, 0 to 100.
void show_percent(int32_t percent);

/// The atlas call's progress callback: `fraction` is 0 to 1, shown as a percentage without its
/// decimals. Always 0, go on: an unwrap is never stopped from here.
int32_t set_progress(float fraction);
