#include "app/stage_times.h"

#include <gtest/gtest.h>

namespace {

host::ProgressState state(const std::string& status, int value = 0) {
    host::ProgressState state;
    state.status = status.c_str();
    state.value = value;
    return state;
}

TEST(StageTimes, TimesTheStagesNamedInTheProgressWindow) {
    app::ProgressDisplay silent(app::ProgressDisplay::silent, "m.obj");
    app::StageTimes times(silent);
    times.changed(state("Tessora: extracting required data"));
    times.changed(state("Tessora: generating UV set", 50));
    times.finish();
    app::StageSeconds seconds;
    times.store(seconds);
    EXPECT_TRUE(seconds.collect);
    EXPECT_TRUE(seconds.generate);
    EXPECT_FALSE(seconds.apply);
    EXPECT_GE(*seconds.generate, 0.0);
}

TEST(StageTimes, IgnoresTextsWithoutThePluginsPrefix) {
    app::ProgressDisplay silent(app::ProgressDisplay::silent, "m.obj");
    app::StageTimes times(silent);
    times.changed(state("generating UV set"));
    times.changed(state("Other: generating UV set"));
    times.finish();
    app::StageSeconds seconds;
    times.store(seconds);
    EXPECT_FALSE(seconds.generate);
}

TEST(StageTimes, ShowsStagesAndPercentagesOnTheDisplay) {
    testing::internal::CaptureStderr();
    {
        app::ProgressDisplay bar(app::ProgressDisplay::bar, "m");
        app::StageTimes times(bar);
        times.changed(state("Tessora: generating UV set", 100)); // the previous stage's value
        times.changed(state("Tessora: generating UV set", 50));
    }
    const std::string shown = testing::internal::GetCapturedStderr();
    EXPECT_NE(shown.npos, shown.find("  0%  m: generating UV set")) << shown;
    EXPECT_NE(shown.npos, shown.find(" 50%  m: generating UV set")) << shown;
    EXPECT_EQ(shown.npos, shown.find("100%")) << shown;
}

} // namespace
