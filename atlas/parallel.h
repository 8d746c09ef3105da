/// Loops over the caller's executor.
#pragma once

#include "atlas/atlas.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tessora::atlas {

/// Whether the executor is asked at all. Without threads the second copy of every loop's body would
/// only make the program larger.
#if defined(__EMSCRIPTEN__) && !defined(__EMSCRIPTEN_PTHREADS__)
inline constexpr bool k_has_threads = false;
#else
inline constexpr bool k_has_threads = true;
#endif

/// Calls work(i) once for each i in [0, count): in order on this thread if `executor` is null, else
/// in any order on its threads. `work` must write only what belongs to i, so that the result does
/// not depend on the executor. Of the exceptions that `work` throws, that of the lowest i is thrown
/// again after all calls; serially, the calls after it are left out.
template <class Work>
void parallel_for(ParallelFor executor, size_t count, const Work& work) {
    if (!k_has_threads || executor == nullptr || count < 2) {
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

/// Calls work(begin, end) for parts of [0, count) that cover it: one part if `executor` is null.
template <class Work>
void for_blocks(ParallelFor executor, size_t count, const Work& work) {
    constexpr size_t k_block = 4096;
    if (!k_has_threads || executor == nullptr)
        return work(size_t(0), count);
    parallel_for(executor, (count + k_block - 1) / k_block, [&](size_t block) {
        work(block * k_block, std::min(count, (block + 1) * k_block));
    });
}

/// Workspaces for calls that may run at the same time: as many as have been needed at once. What a
/// call computes must not depend on which one it gets.
template <class Workspace>
class WorkspacePool {
public:
    /// Takes a workspace until the end of the scope.
    class Lease {
    public:
        Lease(WorkspacePool& pool, Workspace* workspace) : pool_(pool), workspace_(workspace) {}
        ~Lease() { pool_.give(workspace_); }
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        Workspace& operator*() const { return *workspace_; }
        Workspace* operator->() const { return workspace_; }

    private:
        WorkspacePool& pool_;
        Workspace* workspace_;
    };

    /// `first` serves every call that runs while no other does.
    explicit WorkspacePool(Workspace& first) : free_{&first} {}

    /// `make()` returns another workspace in a std::unique_ptr; it is called if none is free.
    template <class Make>
    Lease lease(const Make& make) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (free_.empty()) {
            free_.reserve(made_.size() + 2); // so that give() does not allocate
            made_.push_back(make());
            return Lease(*this, made_.back().get());
        }
        Workspace* const workspace = free_.back();
        free_.pop_back();
        return Lease(*this, workspace);
    }

private:
    void give(Workspace* workspace) {
        const std::lock_guard<std::mutex> lock(mutex_);
        free_.push_back(workspace);
    }

    std::mutex mutex_;
    std::vector<Workspace*> free_;
    std::vector<std::unique_ptr<Workspace>> made_;
};

} // namespace tessora::atlas
