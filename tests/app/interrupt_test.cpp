#include "app/atomic_file.h"
#include "app/interrupt.h"
#include "tests/app/scratch.h"

#include <cstdlib>

namespace {

using test::Scratch;

/// Raises `signal` while an AtomicFile is written but not committed.
[[noreturn]] void meet_signal(const std::string& path, int signal) {
    app::install_signal_handlers();
    app::AtomicFile file;
    std::string error;
    if (!file.open(path, error) || !file.write("half", error))
        ::_exit(1);
    signal == SIGABRT ? std::abort() : static_cast<void>(::raise(signal));
    ::_exit(2);
}

TEST(InterruptDeathTest, SignalsRemoveUnfinishedFilesAndSetTheExitCode) {
    Scratch dir;
    const std::pair<int, int> codes[] = {{SIGINT, 130}, {SIGTERM, 143}, {SIGHUP, 129}};
    for (const auto& [signal, code] : codes) {
        EXPECT_EXIT(meet_signal(dir.path("m.obj"), signal), testing::ExitedWithCode(code),
                    "tessora: interrupted; unfinished files are removed");
        EXPECT_TRUE(dir.names().empty());
    }
}

TEST(InterruptDeathTest, AbortEndsWithTheExitCodeOfAnInternalError) {
    Scratch dir;
    EXPECT_EXIT(meet_signal(dir.path("m.obj"), SIGABRT), testing::ExitedWithCode(70),
                "tessora: internal error; unfinished files are removed");
    EXPECT_TRUE(dir.names().empty());
}

TEST(InterruptDeathTest, HangUpStaysIgnoredIfTheParentIgnoresIt) {
    Scratch dir;
    const auto run = [&] {
        ::signal(SIGHUP, SIG_IGN);
        meet_signal(dir.path("m.obj"), SIGHUP);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(2), "");
}

TEST(InterruptDeathTest, BlockedSignalsArriveAtTheEndOfTheScope) {
    const auto run = [] {
        app::install_signal_handlers();
        {
            const app::SignalsHeld held;
            ::raise(SIGTERM);
            std::fputs("still here\n", stderr);
        }
        ::_exit(2);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(143), "still here\ntessora: interrupted");
}

TEST(InterruptDeathTest, CommittedFilesSurviveASignal) {
    Scratch dir;
    const auto run = [&] {
        app::install_signal_handlers();
        app::AtomicFile file;
        std::string error;
        if (file.open(dir.path("m.obj"), error) && file.write("whole", error) && file.commit(error))
            ::raise(SIGINT);
        ::_exit(2);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(130), "");
    EXPECT_EQ("whole", dir.get("m.obj"));
}

TEST(InterruptDeathTest, SignalAfterPublishingIsASuccess) {
    const auto run = [] {
        app::install_signal_handlers();
        app::set_results_published(true);
        ::raise(SIGINT);
        ::_exit(2);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(InterruptDeathTest, ThousandsOfUnfinishedFilesAreRemoved) {
    test::Scratch dir;
    constexpr int count = 3000;
    for (int i = 0; i < count; ++i)
        dir.put(std::to_string(i), "");
    const auto run = [&] {
        app::install_signal_handlers();
        for (int i = 0; i < count; ++i)
            app::remove_on_signal(dir.path(std::to_string(i)));
        app::keep_on_signal(dir.path("1234"));
        ::raise(SIGINT);
        ::_exit(2);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(130), "");
    EXPECT_EQ(test::Names{"1234"}, dir.names());
}

} // namespace
