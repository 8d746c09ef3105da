#include "faultpoint/faultpoint.h"
#include "host/ui/progress_window.h"

#include <maya/MProgressWindow.h>

#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

class Recorder : public host::ProgressListener {
public:
    void changed(const host::ProgressState& state) override { seen.push_back(state); }
    bool is_cancelled() override {
        asked += 1;
        return cancels;
    }
    std::vector<host::ProgressState> seen;
    bool cancels = false;
    int asked = 0;
};

class ProgressWindow : public testing::Test {
protected:
    ProgressWindow() { host::set_progress_listener(&recorder); }
    ~ProgressWindow() override { host::set_progress_listener(nullptr); }
    Recorder recorder;
};

TEST_F(ProgressWindow, CanBeReservedOnce) {
    EXPECT_TRUE(MProgressWindow::reserve());
    EXPECT_FALSE(MProgressWindow::reserve());
}

TEST_F(ProgressWindow, CannotBeReservedWithoutAListener) {
    host::set_progress_listener(nullptr);
    EXPECT_FALSE(MProgressWindow::reserve());
}

TEST_F(ProgressWindow, CanBeReservedAgainAfterItsEnd) {
    MProgressWindow::reserve();
    EXPECT_TRUE(MProgressWindow::endProgress());
    EXPECT_TRUE(MProgressWindow::reserve());
}

TEST_F(ProgressWindow, RejectsEveryChangeWithoutAReservation) {
    EXPECT_TRUE(MProgressWindow::startProgress().error());
    EXPECT_TRUE(MProgressWindow::endProgress().error());
    EXPECT_TRUE(MProgressWindow::setProgressRange(0, 10).error());
    EXPECT_TRUE(MProgressWindow::setProgressMin(0).error());
    EXPECT_TRUE(MProgressWindow::setProgressMax(10).error());
    EXPECT_TRUE(MProgressWindow::setProgress(1).error());
    EXPECT_TRUE(MProgressWindow::advanceProgress(1).error());
    EXPECT_TRUE(MProgressWindow::setTitle("t").error());
    EXPECT_TRUE(MProgressWindow::setProgressStatus("s").error());
    EXPECT_TRUE(MProgressWindow::setInterruptable(true).error());
    EXPECT_TRUE(recorder.seen.empty());
}

TEST_F(ProgressWindow, NotifiesTheListenerOfEveryChange) {
    MProgressWindow::reserve();
    MProgressWindow::startProgress();
    MProgressWindow::setProgressRange(0, 10);
    MProgressWindow::setTitle("Title");
    MProgressWindow::setProgressStatus("Status");
    MProgressWindow::setProgress(4);
    const host::ProgressState state = recorder.seen.back();
    EXPECT_TRUE(state.is_shown);
    EXPECT_EQ(state.title, "Title");
    EXPECT_EQ(state.status, "Status");
    EXPECT_EQ(state.value, 4);
    EXPECT_EQ(state.maximum, 10);
    MProgressWindow::endProgress();
    EXPECT_FALSE(recorder.seen.back().is_shown);
}

TEST_F(ProgressWindow, NotifiesTheListenerOnceOfAValueThatIsSetAgain) {
    MProgressWindow::reserve();
    MProgressWindow::setProgress(4);
    const size_t before = recorder.seen.size();
    EXPECT_TRUE(MProgressWindow::setProgress(4));
    EXPECT_EQ(recorder.seen.size(), before);
    MProgressWindow::setProgress(5);
    EXPECT_EQ(recorder.seen.size(), before + 1);
}

TEST_F(ProgressWindow, ClampsItsValueToTheRange) {
    MProgressWindow::reserve();
    MProgressWindow::setProgressRange(10, 20);
    EXPECT_EQ(MProgressWindow::progress(), 10);
    MProgressWindow::setProgress(99);
    EXPECT_EQ(MProgressWindow::progress(), 20);
    MProgressWindow::setProgress(-5);
    EXPECT_EQ(MProgressWindow::progress(), 10);
    MProgressWindow::advanceProgress(3);
    EXPECT_EQ(MProgressWindow::progress(), 13);
    MProgressWindow::advanceProgress(std::numeric_limits<int>::max());
    EXPECT_EQ(MProgressWindow::progress(), 20);
    MProgressWindow::setProgressMax(15);
    EXPECT_EQ(MProgressWindow::progress(), 15);
    MProgressWindow::setProgressMin(15);
    EXPECT_EQ(MProgressWindow::progressMin(), 15);
    EXPECT_EQ(MProgressWindow::progressMax(), 15);
}

TEST_F(ProgressWindow, RejectsAnInvertedRange) {
    MProgressWindow::reserve();
    EXPECT_TRUE(MProgressWindow::setProgressRange(5, 4) == MS::kInvalidParameter);
    EXPECT_EQ(MProgressWindow::progressMax(), 100);
}

TEST_F(ProgressWindow, ReturnsTheValuesSet) {
    MProgressWindow::reserve();
    MProgressWindow::setTitle("Title");
    MProgressWindow::setProgressStatus("Status");
    MProgressWindow::setInterruptable(true);
    EXPECT_EQ(MProgressWindow::title(), "Title");
    EXPECT_EQ(MProgressWindow::progressStatus(), "Status");
    EXPECT_TRUE(MProgressWindow::isInterruptable());
}

TEST_F(ProgressWindow, ResetsAtItsEnd) {
    MProgressWindow::reserve();
    MProgressWindow::setTitle("Title");
    MProgressWindow::setInterruptable(true);
    MProgressWindow::endProgress();
    EXPECT_EQ(MProgressWindow::title(), "");
    EXPECT_FALSE(MProgressWindow::isInterruptable());
}

TEST_F(ProgressWindow, CanBeCancelledOnlyIfInterruptable) {
    recorder.cancels = true;
    MProgressWindow::reserve();
    EXPECT_FALSE(MProgressWindow::isCancelled());
    EXPECT_EQ(recorder.asked, 0);
    MProgressWindow::setInterruptable(true);
    EXPECT_TRUE(MProgressWindow::isCancelled());
}

TEST_F(ProgressWindow, IsCancelledFailsWithoutAReservation) {
    MStatus status;
    EXPECT_FALSE(MProgressWindow::isCancelled(&status));
    EXPECT_TRUE(status.error());
}

TEST_F(ProgressWindow, EndsForTheOldListenerWhenANewOneIsSet) {
    Recorder other;
    MProgressWindow::reserve();
    MProgressWindow::startProgress();
    host::set_progress_listener(&other);
    EXPECT_FALSE(recorder.seen.back().is_shown);
    EXPECT_TRUE(other.seen.empty());
    EXPECT_TRUE(MProgressWindow::reserve());
    host::set_progress_listener(nullptr);
}

TEST_F(ProgressWindow, FailsAtItsFaultPoints) {
    {
        const faultpoint::Scope scope("MProgressWindow::reserve", MStatus::kFailure);
        EXPECT_FALSE(MProgressWindow::reserve());
    }
    MProgressWindow::reserve();
    const faultpoint::Scope scope("MProgressWindow::setProgress", MStatus::kNotFound);
    EXPECT_TRUE(MProgressWindow::setProgress(5) == MS::kNotFound);
    EXPECT_EQ(MProgressWindow::progress(), 0);
}

} // namespace
