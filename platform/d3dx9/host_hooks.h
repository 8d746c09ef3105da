/// Functions that the application may export for the atlas calls. They are looked up by name at
/// every call, because the library that exports them may be unloaded meanwhile.
#pragma once

#include <cstddef>

namespace d3dx9 {

/// `int host_report_stage(const char* stage, float fraction)`: called on the thread of the atlas
/// call, often, with the name of the stage at work and the fraction of it that is done, 0..1.
/// Returns non-zero to cancel the atlas call, which then fails with E_ABORT.
using StageHook = int (*)(const char* stage, float fraction);
StageHook find_stage_hook(); ///< null if no library exports it

/// `int host_layout_effort()`: how much time a layout may take, 0 to 10; 4 is usual.
using EffortHook = int (*)();
EffortHook find_effort_hook(); ///< null if no library exports it

/// `void host_parallel_for(size_t count, void (*function)(size_t i, void* user), void* user)`: runs
/// function(i, user) once for each i in [0, count) on any threads, the calling one included, and
/// returns when all are done. May be called from within `function`.
using ParallelHook = void (*)(size_t count, void (*function)(size_t i, void* user), void* user);
ParallelHook find_parallel_hook(); ///< null if no library exports it

} // namespace d3dx9
