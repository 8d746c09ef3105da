#include "atlas/polygons/threads.h"

#include "atlas/polygons/read.h"

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tessora::atlas {
namespace {

/// For loops that this thread begins. A loop within a loop stays on its thread.
thread_local uint32_t t_count = 1;

#if defined(__EMSCRIPTEN__)
constexpr bool k_has_threads = false;
#else
constexpr bool k_has_threads = true;
#endif

uint32_t choose_count(uint32_t wanted) {
    return std::max(1u, wanted != 0 ? wanted : std::thread::hardware_concurrency());
}

/// A ParallelFor.
void run_on_threads(size_t count, void (*function)(size_t i, void* user), void* user) {
    std::atomic<size_t> next{0};
    const auto work = [&] {
        for (size_t i = next++; i < count; i = next++)
            function(i, user);
    };
    const uint32_t threads = std::exchange(t_count, 1);
    std::vector<std::thread> others;
    try {
        others.reserve(threads);
        for (size_t i = 1; i < threads && i < count; ++i)
            others.emplace_back(work);
    } catch (const std::system_error&) {
        // The system gives no more threads: those that there are do the work.
    } catch (const std::bad_alloc&) {
    }
    work();
    for (std::thread& thread : others)
        thread.join();
    t_count = threads;
}

} // namespace

Fault check_threads(uint32_t count) noexcept {
    constexpr uint32_t most = 1024;
    return count <= most ? Fault()
                         : fault(Status::invalid_argument, k_none,
                                 "threads is %u; it must be 0 to %u", count, most);
}

Threads::Threads(uint32_t count) : count_(choose_count(count)), before_(t_count) {
    t_count = count_;
}

Threads::~Threads() { t_count = before_; }

ParallelFor Threads::executor() const {
    return k_has_threads && count_ > 1 ? run_on_threads : nullptr;
}

} // namespace tessora::atlas
