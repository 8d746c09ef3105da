#include "host/commands/session.h"
#include "window/console.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using window::Console;

class ConsoleTest : public testing::Test {
protected:
    ConsoleTest() { console.echoes_to_streams = false; }
    std::vector<std::string> texts() const {
        std::vector<std::string> all;
        for (const Console::Line& line : console.lines())
            all.push_back(line.text);
        return all;
    }
    using Texts = std::vector<std::string>;
    Console console;
};

TEST_F(ConsoleTest, WithheldErrorsAndWarningsLeaveNoLine) {
    console.withholds_errors = true;
    console.error("it failed");
    console.warning("beware");
    console.print("told all the same\n");
    EXPECT_EQ((Texts{"told all the same"}), texts());
}

TEST_F(ConsoleTest, PrintedFragmentsFormOneLine) {
    console.print("a");
    EXPECT_TRUE(console.lines().empty());
    console.print("b\nc\nd");
    EXPECT_EQ((Texts{"ab", "c"}), texts());
    console.print("\n");
    EXPECT_EQ((Texts{"ab", "c", "d"}), texts());
}

TEST_F(ConsoleTest, WarningsAndErrorsGetAPrefix) {
    console.warning("slow");
    console.error("x.mel:1:2: no");
    EXPECT_EQ((Texts{"// Warning: slow", "// Error: x.mel:1:2: no"}), texts());
    EXPECT_EQ(Console::Kind::warning, console.lines()[0].kind);
    EXPECT_EQ(Console::Kind::error, console.lines()[1].kind);
}

TEST_F(ConsoleTest, LastIsTheNewestResultWarningOrError) {
    EXPECT_EQ(nullptr, console.last());
    console.result("3");
    console.echo("polyCube");
    console.print("hello\n");
    ASSERT_NE(nullptr, console.last());
    EXPECT_EQ("// Result: 3", console.last()->text);
}

TEST_F(ConsoleTest, LastIgnoresLinesBeforeTheGivenRevision) {
    console.error("old");
    const size_t revision = console.revision();
    EXPECT_EQ(nullptr, console.last(revision));
    console.print("said\n");
    EXPECT_EQ(nullptr, console.last(revision));
    console.warning("new");
    ASSERT_NE(nullptr, console.last(revision));
    EXPECT_EQ("// Warning: new", console.last(revision)->text);
}

TEST_F(ConsoleTest, PlainWordsStripPrefixesAndPositionsInGeneratedStatements) {
    console.error("window:1:12: file: a.obj:3: no such vertex");
    console.error("user.mel:4:1: Cannot find procedure");
    console.warning("slow");
    console.result("window:1: 7");
    EXPECT_EQ("file: a.obj:3: no such vertex", plain_words(console.lines()[0]));
    EXPECT_EQ("user.mel:4:1: Cannot find procedure", plain_words(console.lines()[1]));
    EXPECT_EQ("slow", plain_words(console.lines()[2]));
    EXPECT_EQ("Result: window:1: 7", plain_words(console.lines()[3]));
}

TEST_F(ConsoleTest, DropsTheOldestLinesBeyondTheLimit) {
    for (size_t i = 0; i < Console::k_max_lines + 10; ++i)
        console.echo(std::to_string(i));
    EXPECT_EQ(Console::k_max_lines, console.lines().size());
    EXPECT_EQ("10", console.lines().front().text);
}

TEST_F(ConsoleTest, RevisionIncreasesWithEveryLine) {
    const size_t before = console.revision();
    console.echo("a\nb");
    EXPECT_EQ(before + 2, console.revision());
}

TEST_F(ConsoleTest, RecallStepsThroughTheHistoryAndBackToTheDraft) {
    console.remember("one");
    console.remember("two");
    EXPECT_EQ("two", console.recall(false, "dra"));
    EXPECT_EQ("one", console.recall(false, "two"));
    EXPECT_EQ("one", console.recall(false, "one"));
    EXPECT_EQ("two", console.recall(true, "one"));
    EXPECT_EQ("dra", console.recall(true, "two"));
    EXPECT_EQ("dra", console.recall(true, "dra"));
}

TEST_F(ConsoleTest, RepeatedStatementIsRememberedOnce) {
    console.remember("one");
    console.remember("one");
    console.remember("");
    EXPECT_EQ(1u, console.history().size());
}

TEST_F(ConsoleTest, CompletesCommandsAtTheEndOfTheText) {
    std::string common;
    const auto found = window::completions(host::script::Session::current().interpreter(),
                                           "int $a = `polyCub", common);
    EXPECT_EQ((Texts{"polyCube"}), found);
    EXPECT_EQ("e", common);
}

TEST_F(ConsoleTest, CompletesTheCommonPrefixOfAllCandidates) {
    host::script::Session& session = host::script::Session::current();
    session.run("global int $common_thing = 1; global int $common_this = 1;", "test");
    std::string common;
    const auto found = window::completions(session.interpreter(), "print $comm", common);
    EXPECT_EQ((Texts{"common_thing", "common_this"}), found);
    EXPECT_EQ("on_thi", common);
}

TEST_F(ConsoleTest, CompletesVariablesAfterADollarSign) {
    host::script::Session& session = host::script::Session::current();
    session.run("global int $completable_thing = 1;", "test");
    std::string common;
    const auto found = window::completions(session.interpreter(), "print $completab", common);
    EXPECT_EQ((Texts{"completable_thing"}), found);
    EXPECT_EQ("le_thing", common);
}

TEST_F(ConsoleTest, EmptyWordHasNoCompletions) {
    std::string common;
    EXPECT_TRUE(
        window::completions(host::script::Session::current().interpreter(), "print ", common)
            .empty());
    EXPECT_EQ("", common);
}

} // namespace
