/// How long each stage of an unwrap took.
///
/// The plug-in reports its stages only through the host's progress window, as a title line for
/// people. StageTimes reads those lines: the texts below are the contract, and a stage whose text
/// changes in the plug-in is missing from the report's `seconds`.
#pragma once

#include "app/progress_display.h"
#include "app/report.h"
#include "host/ui/progress_window.h"

#include <chrono>
#include <map>
#include <string>

namespace app {

/// Precedes the name of each stage in the progress window.
constexpr const char* k_stage_prefix = "Tessora: ";

constexpr const char* k_collect_stage = "extracting required data";
constexpr const char* k_generate_stage = "generating UV set";
constexpr const char* k_apply_stage = "applying UV set";

/// While it lives, shows the host's progress window on `progress` and times every stage.
class StageTimes : public host::ProgressListener {
public:
    explicit StageTimes(ProgressDisplay& progress);
    ~StageTimes();
    StageTimes(const StageTimes&) = delete;
    StageTimes& operator=(const StageTimes&) = delete;

    void changed(const host::ProgressState& state) override;
    bool is_cancelled() override { return false; }

    /// Ends the running stage; call once, after the unwrap.
    void finish();
    /// Sets collect, generate and apply of `seconds` for the stages that ran.
    void store(StageSeconds& seconds) const;

private:
    using Clock = std::chrono::steady_clock;

    ProgressDisplay& progress_;
    std::string stage_; ///< without the prefix; empty between stages
    int percent_ = 0;
    Clock::time_point begin_;
    std::map<std::string, double> seconds_; ///< by stage
};

} // namespace app
