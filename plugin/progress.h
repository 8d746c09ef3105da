/// The host's progress window, as far as one unwrap uses it.
///
/// The window is reserved between `begin_progress` and `end_progress`, which the caller puts around
/// every unwrap. If the reservation fails because another user has it, the functions below do
/// nothing and the unwrap runs without them. Main thread only.
#pragma once

#include <cstdint>

/// Whether this plug-in holds the host's progress window.
extern bool progress_reserved;

/// Reserves the window and, if that succeeds, opens it with the range 0 to 100.
void begin_progress();

/// Closes the window and releases the reservation, if held.
void end_progress();

/// Shows the name of a stage in the window's title and status line.
void show_stage(const char* text);

/// Shows a whole percentage, 0 to 100.
void show_percent(int32_t percent);

/// The atlas call's progress callback: shows `fraction` (0 to 1) as a percentage, truncated. Always
/// returns 0 (continue): an unwrap cannot be cancelled here.
int32_t set_progress(float fraction);
