/// The clock behind GetSystemTime; tests replace it.
#pragma once

#include <windows.h>

namespace win32 {

using Clock = void (*)(SYSTEMTIME* time);

/// Makes GetSystemTime call `clock`; null restores the system's clock. Process-wide.
void set_clock(Clock clock);

} // namespace win32
