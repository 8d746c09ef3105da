#include "plugin/progress.h"
#include "tests/plugin/progress_record.h"

#include <maya/MProgressWindow.h>

#include <gtest/gtest.h>

namespace {

class Progress : public testing::Test {
protected:
    ~Progress() override { end_progress(); }

    ProgressRecord record_;
};

TEST_F(Progress, OpensTheWindowWithRangeTitleAndStatus) {
    begin_progress();
    EXPECT_TRUE(progress_reserved);
    EXPECT_EQ(MProgressWindow::progressMin(), 0);
    EXPECT_EQ(MProgressWindow::progressMax(), 100);
    EXPECT_STREQ(MProgressWindow::title().asChar(), "Unwrapping mesh.");
    EXPECT_STREQ(MProgressWindow::progressStatus().asChar(), "Unwrapping mesh.");
}

TEST_F(Progress, StartsTheWindowBeforeSettingItsTitle) {
    begin_progress();
    ASSERT_GE(record_.states.size(), 3u);
    EXPECT_TRUE(record_.states[0].is_shown);
    const auto& named = record_.states[record_.states.size() - 2];
    const auto& last = record_.states.back();
    EXPECT_STREQ(named.title.asChar(), "Unwrapping mesh.");
    EXPECT_STREQ(named.status.asChar(), "");
    EXPECT_EQ(named.maximum, 100);
    EXPECT_STREQ(last.status.asChar(), "Unwrapping mesh.");
}

TEST_F(Progress, IsNotReservedWithoutAUserInterface) {
    record_.stop();
    begin_progress();
    EXPECT_FALSE(progress_reserved);
}

TEST_F(Progress, ReleasesTheWindow) {
    begin_progress();
    end_progress();
    EXPECT_FALSE(progress_reserved);
    EXPECT_TRUE(MProgressWindow::reserve());
    MProgressWindow::endProgress();
}

TEST_F(Progress, DoesNotEndAWindowItDoesNotHold) {
    ASSERT_TRUE(MProgressWindow::reserve());
    begin_progress();
    EXPECT_FALSE(progress_reserved);
    end_progress();
    EXPECT_FALSE(MProgressWindow::reserve()); // still reserved by the other user
    MProgressWindow::endProgress();
}

TEST_F(Progress, StageIsShownInTitleAndStatus) {
    begin_progress();
    show_stage("Tessora: generating UV set");
    EXPECT_STREQ(MProgressWindow::title().asChar(), "Tessora: generating UV set");
    EXPECT_STREQ(MProgressWindow::progressStatus().asChar(), "Tessora: generating UV set");
}

TEST_F(Progress, FractionBecomesATruncatedPercentage) {
    begin_progress();
    EXPECT_EQ(set_progress(0.0f), 0);
    EXPECT_EQ(MProgressWindow::progress(), 0);
    EXPECT_EQ(set_progress(0.299f), 0);
    EXPECT_EQ(MProgressWindow::progress(), 29);
    EXPECT_EQ(set_progress(0.3f), 0);
    EXPECT_EQ(MProgressWindow::progress(), static_cast<int>(0.3f * 100.0f));
    EXPECT_EQ(set_progress(1.0f), 0);
    EXPECT_EQ(MProgressWindow::progress(), 100);
}

TEST_F(Progress, DoesNothingWithoutTheWindow) {
    ASSERT_TRUE(MProgressWindow::reserve());
    MProgressWindow::startProgress();
    MProgressWindow::setTitle("somebody else's");
    begin_progress();
    show_stage("Tessora: generating UV set");
    show_percent(50);
    EXPECT_EQ(set_progress(0.7f), 0);
    EXPECT_STREQ(MProgressWindow::title().asChar(), "somebody else's");
    EXPECT_EQ(MProgressWindow::progress(), 0);
    end_progress();
    MProgressWindow::endProgress();
}

} // namespace
