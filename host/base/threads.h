/// Threads for libraries that compute.
#pragma once

#include <maya/MTypes.h>

#include <cstddef>

namespace host {

/// How many threads a loop may use, the calling one included: at most one a processor, which is the
/// default and what 0 means.
/// Not to be called during a loop.
MHOST_EXPORT void set_thread_count(unsigned int count);

} // namespace host

/// Runs function(i, user) once for each i in [0, count), in any order, on any of the threads, and
/// returns when all are done. The calling thread takes part; calls from within `function` are
/// legal. `function` must not throw. Exported under this name for libraries that do not link to the
/// host and look it up at run time.
extern "C" MHOST_EXPORT void
host_parallel_for(std::size_t count, void (*function)(std::size_t i, void* user), void* user);
