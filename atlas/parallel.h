/// Loops over the caller's executor.
#pragma once

#include "atlas/atlas.h"

#include <exception>
#include <vector>

namespace tessora::atlas {

/// Calls work(i) once for each i in [0, count): in order on this thread if `executor` is null, else
/// in any order on its threads. `work` must write only what belongs to i, so that the result does
/// not depend on the executor. Of the exceptions that `work` throws, that of the lowest i is thrown
/// again after all calls; serially, the calls after it are left out.
template <class Work>
void parallel_for(ParallelFor executor, size_t count, const Work& work) {
    if (executor == nullptr || count < 2) {
        for (size_t i = 0; i < count; ++i)
            work(i);
        return;
    }
    struct Loop {
        const Work& work;
        std::vector<std::exception_ptr> thrown;
    } loop{work, std::vector<std::exception_ptr>(count)};
    const auto run = [](size_t i, void* user) {
        Loop& shared = *static_cast<Loop*>(user);
        try {
            shared.work(i);
        } catch (...) {
            shared.thrown[i] = std::current_exception();
        }
    };
    executor(count, run, &loop);
    for (const std::exception_ptr& exception : loop.thrown)
        if (exception)
            std::rethrow_exception(exception);
}

} // namespace tessora::atlas
