// For systems without the library that runs loops on threads.
#include "host/base/threads.h"

namespace host {

void set_thread_count(unsigned int) {}

} // namespace host

void host_parallel_for(std::size_t count, void (*function)(std::size_t i, void* user), void* user) {
    for (std::size_t i = 0; i < count; ++i)
        function(i, user);
}
