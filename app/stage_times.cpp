#include "app/stage_times.h"

namespace app {

StageTimes::StageTimes(ProgressDisplay& progress) : progress_(progress) {
    host::set_progress_listener(this);
}

StageTimes::~StageTimes() { host::set_progress_listener(nullptr); }

void StageTimes::changed(const host::ProgressState& state) {
    const std::string status = state.status.asChar();
    const size_t prefix = std::char_traits<char>::length(k_stage_prefix);
    if (status.compare(0, prefix, k_stage_prefix) == 0 && status.substr(prefix) != stage_) {
        finish();
        stage_ = status.substr(prefix);
        begin_ = Clock::now();
        percent_ = state.value; // still the percentage of the previous stage
        progress_.begin_stage(stage_);
    }
    if (state.value != percent_ && !stage_.empty()) {
        percent_ = state.value;
        progress_.set_percent(percent_);
    }
}

void StageTimes::finish() {
    if (!stage_.empty())
        seconds_[stage_] += std::chrono::duration<double>(Clock::now() - begin_).count();
    stage_.clear();
}

void StageTimes::store(StageSeconds& seconds) const {
    const auto time_of = [&](const char* stage) -> std::optional<double> {
        const auto found = seconds_.find(stage);
        return found == seconds_.end() ? std::nullopt : std::optional(found->second);
    };
    seconds.collect = time_of(k_collect_stage);
    seconds.generate = time_of(k_generate_stage);
    seconds.apply = time_of(k_apply_stage);
}

} // namespace app
