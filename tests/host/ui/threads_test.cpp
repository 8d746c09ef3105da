#include "host/base/threads.h"

#include <atomic>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <vector>

namespace {

struct ThreadCount {
    explicit ThreadCount(unsigned int count) { host::set_thread_count(count); }
    ~ThreadCount() { host::set_thread_count(0); }
};

TEST(Threads, ALoopCallsEveryIndexOnce) {
    for (unsigned int threads : {0u, 1u, 2u, 8u}) {
        const ThreadCount scope(threads);
        std::vector<int> calls(1000, 0);
        host_parallel_for(
            calls.size(),
            [](std::size_t i, void* user) { ++(*static_cast<std::vector<int>*>(user))[i]; },
            &calls);
        EXPECT_EQ(calls, std::vector<int>(1000, 1)) << threads;
    }
}

TEST(Threads, LoopsMayBeNested) {
    const ThreadCount scope(4);
    std::atomic<int> calls{0};
    host_parallel_for(
        50,
        [](std::size_t, void* user) {
            host_parallel_for(
                50, [](std::size_t, void* counter) { ++*static_cast<std::atomic<int>*>(counter); },
                user);
        },
        &calls);
    EXPECT_EQ(calls, 2500);
}

TEST(Threads, TheHookIsFoundByNameAtRunTime) {
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "host_parallel_for"),
              reinterpret_cast<void*>(&host_parallel_for));
}

} // namespace
