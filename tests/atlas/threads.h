/// Executors of plain threads, for tests.
#pragma once

#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace atlas_test {

/// Runs on `threads` threads, the calling one included, which gets one of the calls whatever the
/// others do; see tessora::atlas::ParallelFor.
template <size_t threads>
void run_on(size_t count, void (*function)(size_t i, void* user), void* user) {
    std::atomic<size_t> next{1};
    const auto work = [&](size_t i) {
        for (; i < count; i = next++)
            function(i, user);
    };
    std::vector<std::thread> others;
    for (size_t i = 1; i < threads && i < count; ++i)
        others.emplace_back([&] { work(next++); });
    work(0);
    for (std::thread& thread : others)
        thread.join();
}

} // namespace atlas_test
