/// The command `tessora view` in cases where no window opens: help, wrong options, no screen.
#include "tests/app/process.h"
#include "tests/app/scratch.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

using namespace test;

class ViewCommand : public testing::Test {
protected:
    void SetUp() override {
        ::unsetenv("DISPLAY");
        ::unsetenv("WAYLAND_DISPLAY");
    }
    /// Expects this exit code and this text on standard error.
    static void expect_refused(const std::vector<std::string>& words, int code,
                               const std::string& sentence) {
        const Ended ended = run(words);
        EXPECT_EQ(code, ended.code) << ended.err;
        EXPECT_NE(std::string::npos, ended.err.find(sentence)) << ended.err;
        EXPECT_EQ("", ended.out);
    }
    Scratch dir;
};

TEST_F(ViewCommand, HelpHasExamplesAndNeedsNoScreen) {
    const Ended ended = run({"view", "--help"});
    EXPECT_EQ(0, ended.code);
    EXPECT_NE(std::string::npos, ended.out.find("examples:"));
    EXPECT_NE(std::string::npos, ended.out.find("--screenshot"));
    EXPECT_EQ("", ended.err);
}

TEST_F(ViewCommand, ReportsAMissingScreen) {
    expect_refused({"view"}, 1, "there is no screen to open a window on");
}

TEST_F(ViewCommand, RefusesAMissingFile) {
    expect_refused({"view", dir.path("none.obj")}, 3, "none.obj: there is no such file");
}

TEST_F(ViewCommand, RefusesTwoFiles) {
    expect_refused({"view", "a.obj", "b.obj"}, 2, "view takes one file");
}

TEST_F(ViewCommand, RefusesAMalformedSize) {
    for (const char* size : {"wide", "640", "640x", "640x480x2", "10x10", "99999x480"})
        expect_refused({"view", "--size", size}, 2, "--size takes WIDTHxHEIGHT");
}

TEST_F(ViewCommand, RefusesAnUnknownDisplayMode) {
    expect_refused({"view", "--display", "glossy"}, 2,
                   "--display takes plain, charts, checker, stretch or density, not glossy");
}

TEST_F(ViewCommand, RefusesAnUnknownOption) { expect_refused({"view", "--wide"}, 2, "--wide"); }

} // namespace
