/// Reports the progress of the stages to the caller: at most eleven calls with strictly increasing
/// fractions, the last one 1. Fractions come from fixed shares per stage and from counts of work,
/// never from a clock, so the same input causes the same calls.
#pragma once

#include "atlas/atlas.h"

namespace tessora::atlas {

class ProgressMeter {
public:
    ProgressMeter(Progress callback, void* user) : callback_(callback), user_(user) {}

    /// Begins a stage that covers [begin, end] of the whole, within 0..1.
    void stage(double begin, double end) {
        begin_ = begin;
        end_ = end;
        advance(0);
    }
    /// Sets the fraction of the stage that is done, 0..1. False if the callback asked to stop.
    bool advance(double fraction) {
        const double done = begin_ + (end_ - begin_) * fraction;
        while (!aborted_ && next_ < 10 && done >= next_ * 0.1 - 1e-9)
            report();
        return !aborted_;
    }
    /// Reports the remaining tenths, 1 last. False if the callback asked to stop.
    bool finish() {
        while (!aborted_ && next_ <= 10)
            report();
        return !aborted_;
    }

private:
    void report() {
        const float fraction = next_ == 10 ? 1.0f : float(next_) * 0.1f;
        ++next_;
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
