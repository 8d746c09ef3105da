#include "host/base/threads.h"

#include <algorithm>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

namespace {

unsigned int thread_count = 0;

/// Where loops run. Its threads are started by the first loop.
tbb::task_arena& arena() {
    static tbb::task_arena the_arena;
    return the_arena;
}

} // namespace

namespace host {

void set_thread_count(unsigned int count) {
    thread_count = count;
    arena().terminate();
    // More than there are processors would not help, and the library warns of it.
    const int most = tbb::info::default_concurrency();
    arena().initialize(count == 0 ? most : std::min(static_cast<int>(count), most));
}

} // namespace host

void host_parallel_for(std::size_t count, void (*function)(std::size_t i, void* user), void* user) {
    if (thread_count == 1) {
        for (std::size_t i = 0; i < count; ++i)
            function(i, user);
        return;
    }
    arena().execute([&] {
        tbb::parallel_for(std::size_t{0}, count, [&](std::size_t i) { function(i, user); });
    });
}
