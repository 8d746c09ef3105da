#include "app/progress_display.h"

#include <gtest/gtest.h>

namespace {

TEST(ProgressBar, ShowsThePercentageAsABar) {
    EXPECT_EQ("[------------------------]   0%  m.obj: reading",
              app::progress_bar("m.obj", "reading", 0, 79));
    EXPECT_EQ("[############------------]  50%  m.obj: reading",
              app::progress_bar("m.obj", "reading", 50, 79));
    EXPECT_EQ("[########################] 100%  m.obj: reading",
              app::progress_bar("m.obj", "reading", 100, 79));
}

TEST(ProgressBar, IsCutToTheWidthOfTheTerminal) {
    EXPECT_EQ(20u, app::progress_bar("m.obj", "reading", 50, 20).size());
    EXPECT_EQ("", app::progress_bar("m.obj", "reading", 50, -1));
}

TEST(ProgressDisplay, LinesPrintEachStageOnce) {
    testing::internal::CaptureStderr();
    {
        app::ProgressDisplay progress(app::ProgressDisplay::lines, "m.obj");
        progress.begin_stage("reading");
        progress.begin_stage("reading");
        progress.set_percent(10); // within a second of the stage's line, so not printed
        progress.begin_stage("writing");
    }
    EXPECT_EQ("tessora: m.obj: reading\ntessora: m.obj: writing\n",
              testing::internal::GetCapturedStderr());
}

TEST(ProgressDisplay, BarIsRedrawnAndCleared) {
    testing::internal::CaptureStderr();
    {
        app::ProgressDisplay progress(app::ProgressDisplay::bar, "m");
        progress.begin_stage("s");
        progress.set_percent(50);
        progress.set_percent(50);
        progress.set_percent(1000);
    }
    EXPECT_EQ("\r[------------------------]   0%  m: s\033[K"
              "\r[############------------]  50%  m: s\033[K"
              "\r[########################] 100%  m: s\033[K\r\033[K",
              testing::internal::GetCapturedStderr());
}

TEST(ProgressDisplay, NamesInTheBarDoNotCommandTheTerminal) {
    testing::internal::CaptureStderr();
    {
        app::ProgressDisplay progress(app::ProgressDisplay::bar, "a\x1b[31m\n  b");
        progress.begin_stage("s");
    }
    EXPECT_EQ("\r[------------------------]   0%  a?[31m?  b: s\033[K\r\033[K",
              testing::internal::GetCapturedStderr());
}

TEST(ProgressDisplay, SilentPrintsNothing) {
    testing::internal::CaptureStderr();
    {
        app::ProgressDisplay progress(app::ProgressDisplay::silent, "m");
        progress.begin_stage("s");
        progress.set_percent(50);
    }
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ(app::ProgressDisplay::silent, app::ProgressDisplay::style_for_stderr(true));
}

} // namespace
