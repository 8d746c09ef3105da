/// The stand-in's clock, replaceable so that a test can stop it.
#pragma once

#include <windows.h>

namespace win32 {

using Clock = void (*)(SYSTEMTIME* time);

/// Makes GetSystemTime answer with `clock`; null brings the system's clock back. Process-wide.
void set_clock(Clock clock);

} // namespace win32
