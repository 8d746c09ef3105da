/// Executors of plain threads, for tests.
#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace atlas_test {

/// Runs on `count` threads, the calling one included; see tessora::atlas::ParallelFor.
template <size_t threads>
void run_on(size_t count, void (*function)(size_t i, void* user), void* user) {
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t i = next++; i < count; i = next++)
            function(i, user);
    };
    std::vector<std::thread> others;
    for (size_t i = 1; i < threads && i < count; ++i)
        others.emplace_back(work);
    work();
    for (std::thread& thread : others)
        thread.join();
}

} // namespace atlas_test
