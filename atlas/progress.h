/// Turns the work of the stages into the caller's progress: at most eleven calls, strictly
/// increasing, the last one 1. The fraction comes from fixed weights per stage and counts of work
/// done, never from a clock, so that a caller sees the same calls every time.
#pragma once

#include "atlas/atlas.h"

namespace tessora::atlas {

class ProgressMeter {
public:
    ProgressMeter(Progress callback, void* user) : callback_(callback), user_(user) {}

    /// The part of the whole that the coming stage takes: [begin, end] within 0..1.
    void stage(double begin, double end) {
        begin_ = begin;
        end_ = end;
        advance(0);
    }
    /// Fraction of the stage done, 0..1. False when the callback asked to stop.
    bool advance(double fraction) {
        const double done = begin_ + (end_ - begin_) * fraction;
        while (!aborted_ && next_ < 10 && done >= next_ * 0.1 - 1e-9)
            report();
        return !aborted_;
    }
    bool finish() {
        while (!aborted_ && next_ <= 10)
            report();
        return !aborted_;
    }
    bool aborted() const { return aborted_; }

private:
    void report() {
        const float fraction = next_ == 10 ? 1.0f : float(next_) * 0.1f;
        next_++;
        if (callback_ != nullptr && callback_(fraction, user_) != 0)
            aborted_ = true;
    }

    Progress callback_;
    void* user_;
    double begin_ = 0, end_ = 0;
    int next_ = 0;
    bool aborted_ = false;
};

} // namespace tessora::atlas
