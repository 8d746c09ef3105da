/// Reports the progress of the stages to the caller's two callbacks. Options::progress gets at most
/// eleven calls with strictly increasing fractions, the last one 1; Options::stage_progress gets
/// every advance. Fractions come from fixed shares per stage and from counts of work, never from a
/// clock, so the same input causes the same calls, except for how often a fraction is reported
/// while several threads work. Any thread may report; what others than the one that made the meter
/// report counts for nothing but its answer, and callbacks are only called on that one.
#pragma once

#include "atlas/atlas.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <thread>

namespace tessora::atlas {

class ProgressMeter {
public:
    explicit ProgressMeter(const Options& options)
        : callback_(options.progress), stage_callback_(options.stage_progress),
          user_(options.user) {}
    /// For calls whose first stage is not the first of all; that stage begins at 0.
    ProgressMeter(const Options& options, Stage first) : ProgressMeter(options) { first_ = first; }

    /// Begins a stage. False if a callback asked to stop.
    bool stage(Stage stage) {
        if (std::this_thread::get_id() != thread_)
            return !aborted_;
        stage_ = stage;
        stage_fraction_ = 0;
        return part(0, 1);
    }
    /// Begins a part of the stage that covers [begin, end] of it, within 0..1. False if a callback
    /// asked to stop.
    bool part(double begin, double end) {
        if (std::this_thread::get_id() != thread_)
            return !aborted_;
        part_begin_ = begin;
        part_end_ = end;
        return advance(0);
    }
    /// Sets the fraction of the part that is done, 0..1. False if a callback asked to stop.
    bool advance(double fraction) {
        if (std::this_thread::get_id() != thread_)
            return !aborted_;
        const double done = part_begin_ + (part_end_ - part_begin_) * std::min(fraction, 1.0);
        stage_fraction_ = std::max(stage_fraction_, done);
        const double all = whole(stage_, stage_fraction_, first_);
        while (!aborted_ && next_ < 10 && all >= next_ * 0.1 - 1e-9)
            report_tenth();
        return poll();
    }
    /// Reports the same fraction again, during long steps. False if a callback asked to stop.
    bool poll() {
        if (std::this_thread::get_id() != thread_)
            return !aborted_;
        if (!aborted_ && stage_callback_ != nullptr)
            aborted_ = stage_callback_(stage_, float(stage_fraction_), user_) != 0;
        return !aborted_;
    }
    /// The fraction of the whole work that is done, if its first stage is `first`.
    static double whole(Stage stage, double stage_fraction, Stage first = Stage::surface) {
        const double begin = k_begin[int(stage)], end = k_begin[int(stage) + 1];
        const double skipped = k_begin[int(first)];
        return (begin + (end - begin) * stage_fraction - skipped) / (1 - skipped);
    }
    /// Reports the remaining tenths, 1 last. False if a callback asked to stop.
    bool finish() {
        advance(1);
        while (!aborted_ && next_ <= 10)
            report_tenth();
        return !aborted_;
    }

private:
    /// Where each stage begins, as a fraction of the whole; after the last stage, 1.
    static constexpr double k_begin[] = {0, 0.05, 0.15, 0.35, 0.75, 0.85, 0.99, 1};
    static_assert(std::size(k_begin) == size_t(Stage::emission) + 2);

    void report_tenth() {
        const float fraction = next_ == 10 ? 1.0f : float(next_) * 0.1f;
        ++next_;
        if (callback_ != nullptr && callback_(fraction, user_) != 0)
            aborted_ = true;
    }

    Progress callback_;
    StageProgress stage_callback_;
    void* user_;
    Stage stage_ = Stage::surface;
    double part_begin_ = 0, part_end_ = 1; ///< of the stage
    double stage_fraction_ = 0;
    Stage first_ = Stage::surface;
    int next_ = 0; ///< tenths reported
    std::atomic<bool> aborted_{false};
    const std::thread::id thread_ = std::this_thread::get_id();
};

} // namespace tessora::atlas
