/// One progress bar for a whole unwrap, and how long it will still take.
///
/// The plug-in's own bar starts anew with each of its three stages, and the engine reports
/// fractions of its stages. Both are mapped onto one bar that never runs backwards.
#pragma once

#include <chrono>
#include <string>

namespace window {

class WorkProgress {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// A computation begins.
    void begin(Time now);
    /// The plug-in's status line, and the fraction of its bar, 0..1.
    void note_plugin(const std::string& status, double fraction);
    /// A stage of the engine, and the fraction of it that is done, 0..1. Stages with unknown names
    /// do not move the bar.
    void note_engine(const std::string& stage, double fraction);

    double fraction() const { return fraction_; }       ///< 0..1; never decreases until `begin`
    const std::string& stage() const { return stage_; } ///< empty before the first report
    /// "about 12 s left"; empty in the first two seconds and while too little is done to tell.
    std::string time_left(Time now) const;
    /// Whether the bar has moved, or more than half a second has passed.
    bool is_worth_showing(Time now) const;

private:
    void advance(double begin, double end, double fraction);

    Time begin_{};
    double fraction_ = 0.0;
    std::string stage_;
};

} // namespace window
