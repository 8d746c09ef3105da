#include "window/work_progress.h"

#include <gtest/gtest.h>

using std::chrono::seconds;
using window::WorkProgress;

namespace {

const WorkProgress::Time k_start{};

/// What an unwrap reports, as pairs of a status and a percentage for the plug-in.
void collect(WorkProgress& progress) {
    for (int percent = 0; percent <= 100; percent += 10)
        progress.note_plugin("Tessora: extracting required data", 0.01 * percent);
}

} // namespace

TEST(WorkProgress, NeverRunsBackwardsWhenTheBarOfThePluginStartsAnew) {
    WorkProgress progress;
    progress.begin(k_start);
    collect(progress);
    double before = progress.fraction();
    EXPECT_GT(before, 0.0);
    const auto check = [&] {
        EXPECT_GE(progress.fraction(), before) << progress.stage();
        before = progress.fraction();
    };
    progress.note_plugin("Tessora: generating UV set", 1.0); // still that of the stage before
    check();
    progress.note_plugin("Tessora: generating UV set", 0.0);
    check();
    for (const char* stage :
         {"Reading the surface", "Grouping triangles", "Flattening regions", "Merging charts",
          "Smoothing borders", "Packing charts", "Writing coordinates"})
        for (const double fraction : {0.0, 0.5, 1.0, 0.0}) { // a stage may begin again
            progress.note_engine(stage, fraction);
            check();
            EXPECT_LT(progress.fraction(), 1.0);
        }
    progress.note_plugin("Tessora: applying UV set", 1.0);
    check();
    EXPECT_LT(progress.fraction(), 1.0); // the bar of the stage before
    progress.note_plugin("Tessora: applying UV set", 0.0);
    progress.note_plugin("Tessora: applying UV set", 1.0);
    check();
    EXPECT_DOUBLE_EQ(progress.fraction(), 1.0);
}

TEST(WorkProgress, MovesInEveryStageOfTheEngine) {
    WorkProgress progress;
    progress.begin(k_start);
    for (const char* stage :
         {"Reading the surface", "Grouping triangles", "Flattening regions", "Merging charts",
          "Smoothing borders", "Packing charts", "Writing coordinates"}) {
        progress.note_engine(stage, 0.0);
        const double before = progress.fraction();
        progress.note_engine(stage, 1.0);
        EXPECT_GT(progress.fraction(), before) << stage;
        EXPECT_EQ(progress.stage(), stage);
    }
}

TEST(WorkProgress, NamesAStageOfThePluginUntilTheEngineReports) {
    WorkProgress progress;
    progress.begin(k_start);
    progress.note_plugin("Unwrapping mesh.", 0.0);
    EXPECT_EQ(progress.stage(), "");
    progress.note_plugin("Tessora: extracting required data", 0.2);
    EXPECT_EQ(progress.stage(), "extracting required data");
    progress.note_engine("Packing charts", 0.1);
    progress.note_plugin("Tessora: generating UV set", 0.8);
    EXPECT_EQ(progress.stage(), "Packing charts");
}

TEST(WorkProgress, ANameThatIsUnknownDoesNotMoveTheBar) {
    WorkProgress progress;
    progress.begin(k_start);
    progress.note_engine("Polishing", 0.9);
    EXPECT_EQ(progress.stage(), "Polishing");
    EXPECT_EQ(progress.fraction(), 0.0);
}

TEST(WorkProgress, TellsTheTimeLeftOnceItCan) {
    WorkProgress progress;
    progress.begin(k_start);
    progress.note_engine("Packing charts", 0.0); // 0.8 of all
    EXPECT_EQ(progress.time_left(k_start + seconds(1)), "");
    EXPECT_EQ(progress.time_left(k_start + seconds(8)), "about 2 s left");
    EXPECT_EQ(progress.time_left(k_start + seconds(82)), "about 20 s left");
    EXPECT_EQ(progress.time_left(k_start + seconds(800)), "about 3 min left");
    WorkProgress slow;
    slow.begin(k_start);
    slow.note_engine("Reading the surface", 0.0); // hardly anything is done
    EXPECT_NE(slow.time_left(k_start + seconds(8)), "");
    slow.begin(k_start);
    EXPECT_EQ(slow.time_left(k_start + seconds(8)), "");
}

TEST(WorkProgress, IsShownAtTheFirstReportAndAfterHalfASecond) {
    WorkProgress progress;
    progress.begin(k_start);
    EXPECT_FALSE(progress.is_worth_showing(k_start + std::chrono::milliseconds(100)));
    EXPECT_TRUE(progress.is_worth_showing(k_start + std::chrono::milliseconds(600)));
    progress.note_engine("Packing charts", 0.0);
    EXPECT_TRUE(progress.is_worth_showing(k_start + std::chrono::milliseconds(1)));
}

TEST(WorkProgress, BeginsAnewWithTheNextComputation) {
    WorkProgress progress;
    progress.begin(k_start);
    progress.note_engine("Packing charts", 0.5);
    progress.begin(k_start + seconds(9));
    EXPECT_EQ(progress.fraction(), 0.0);
    EXPECT_EQ(progress.stage(), "");
}
