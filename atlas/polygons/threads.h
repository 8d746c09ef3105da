/// Threads for callers without an executor of their own.
#pragma once

#include "atlas/polygon_mesh.h"

namespace tessora::atlas {

/// Names the option `threads` if it is out of range.
Fault check_threads(uint32_t count) noexcept;

/// While the object lives, loops of the calling thread that run on executor() use several threads.
/// They live as long as a loop; an unwrap has few and long ones.
class Threads {
public:
    /// `count` includes the calling thread; 0 = one a processor.
    explicit Threads(uint32_t count);
    ~Threads();
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

    /// Null if the calling thread is the only one.
    ParallelFor executor() const;

private:
    const uint32_t count_;
    const uint32_t before_; ///< what an object further out has set
};

} // namespace tessora::atlas
