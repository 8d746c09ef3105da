#include "app/options.h"

#include <gtest/gtest.h>

namespace {

using Words = std::vector<std::string>;

struct OptionTableTest : testing::Test {
    OptionTableTest() {
        table.heading("things:");
        table.add("keep_seams", &keep, "", "keeps seams");
        table.add("padding", &padding, "TEXELS", "gutter");
        table.add("stretch", &stretch, "LIMIT", "stretch");
        table.add("output", &output, "FILE", "result");
        table.alias("-o");
    }
    bool parse(const Words& words) {
        operands.clear();
        error.clear();
        return table.parse(words, operands, error);
    }
    app::OptionTable table;
    bool keep = false;
    int padding = 2;
    double stretch = 0.15;
    std::string output, error;
    Words operands;
};

TEST_F(OptionTableTest, ReadsValuesFromTheNextWordOrAfterAnEqualsSign) {
    ASSERT_TRUE(parse({"--padding", "4", "--stretch=0.5", "--output", "a=b"})) << error;
    EXPECT_EQ(4, padding);
    EXPECT_EQ(0.5, stretch);
    EXPECT_EQ("a=b", output);
    ASSERT_TRUE(parse({"-o", "c"}));
    EXPECT_EQ("c", output);
}

TEST_F(OptionTableTest, NumbersMayBeNegativeOrSigned) {
    ASSERT_TRUE(parse({"--padding", "-3", "--stretch", "+2.5e-1"})) << error;
    EXPECT_EQ(-3, padding);
    EXPECT_EQ(0.25, stretch);
}

TEST_F(OptionTableTest, DashesAndUnderscoresAreTheSameInNames) {
    ASSERT_TRUE(parse({"--keep-seams"}));
    EXPECT_TRUE(keep);
    keep = false;
    ASSERT_TRUE(parse({"--keep_seams"}));
    EXPECT_TRUE(keep);
}

TEST_F(OptionTableTest, SwitchTakesTheNextWordOnlyWhenItIsAValue) {
    for (const char* on : {"on", "yes", "true", "1"}) {
        keep = false;
        ASSERT_TRUE(parse({"--keep_seams", on}));
        EXPECT_TRUE(keep) << on;
        EXPECT_TRUE(operands.empty());
    }
    for (const char* off : {"off", "no", "false", "0"}) {
        keep = true;
        ASSERT_TRUE(parse({"--keep_seams", off}));
        EXPECT_FALSE(keep) << off;
        EXPECT_TRUE(operands.empty());
    }
    ASSERT_TRUE(parse({"--keep_seams", "mesh.obj"}));
    EXPECT_TRUE(keep);
    EXPECT_EQ(Words{"mesh.obj"}, operands);
    ASSERT_TRUE(parse({"--keep_seams=off", "1"}));
    EXPECT_FALSE(keep);
    EXPECT_EQ(Words{"1"}, operands);
}

TEST_F(OptionTableTest, LastOccurrenceOfARepeatedOptionCounts) {
    ASSERT_TRUE(parse({"--padding", "4", "--padding", "5"}));
    EXPECT_EQ(5, padding);
}

TEST_F(OptionTableTest, DoubleDashEndsTheOptionsAndSingleDashIsAnOperand) {
    ASSERT_TRUE(parse({"-", "--", "--padding", "--"}));
    EXPECT_EQ((Words{"-", "--padding", "--"}), operands);
}

TEST_F(OptionTableTest, UnknownOptionIsAnErrorWithASuggestion) {
    EXPECT_FALSE(parse({"--paddng", "4"}));
    EXPECT_EQ("unknown option --paddng; did you mean --padding?", error);
    EXPECT_FALSE(parse({"--keep-seam"}));
    EXPECT_EQ("unknown option --keep-seam; did you mean --keep_seams?", error);
    EXPECT_FALSE(parse({"--zzzzzzzzzz=1"}));
    EXPECT_EQ("unknown option --zzzzzzzzzz", error);
    EXPECT_FALSE(parse({"-p", "4"}));
    EXPECT_EQ("unknown option -p", error);
}

TEST_F(OptionTableTest, AbbreviatedOptionIsUnknown) {
    EXPECT_FALSE(parse({"--pad", "4"}));
    EXPECT_EQ(0u, error.find("unknown option --pad"));
}

TEST_F(OptionTableTest, InvalidValueIsAnErrorThatQuotesIt) {
    EXPECT_FALSE(parse({"--padding", "4.5"}));
    EXPECT_EQ("--padding: '4.5' is not a whole number", error);
    EXPECT_FALSE(parse({"--padding", "99999999999"}));
    EXPECT_EQ("--padding: '99999999999' is not a whole number", error);
    for (const char* word : {"nan", "inf", "0,5", "", "1e999", "0x1", "--keep_seams"}) {
        EXPECT_FALSE(parse({"--stretch", word})) << word;
        EXPECT_EQ("--stretch: '" + std::string(word) + "' is not a number", error);
    }
    EXPECT_FALSE(parse({"--keep_seams=maybe"}));
    EXPECT_EQ("--keep_seams: 'maybe' is not on, off, yes, no, true, false, 1 or 0", error);
    EXPECT_FALSE(parse({"--output="}));
    EXPECT_EQ("--output: '' is not a name", error);
    EXPECT_EQ(2, padding);
    EXPECT_EQ(0.15, stretch);
}

TEST_F(OptionTableTest, MissingValueIsAnError) {
    EXPECT_FALSE(parse({"--padding"}));
    EXPECT_EQ("--padding needs a value: TEXELS", error);
}

TEST_F(OptionTableTest, HelpShowsNamesValuesAndDefaults) {
    EXPECT_EQ("things:\n"
              "  --keep_seams          keeps seams\n"
              "  --padding TEXELS      gutter (2)\n"
              "  --stretch LIMIT       stretch (0.15)\n"
              "  -o, --output FILE     result\n",
              table.help());
}

TEST_F(OptionTableTest, HelpWrapsAtEightyColumns) {
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "word ";
    table.add("a_very_long_option_name", &output, "VALUE", text + "end");
    size_t begin = 0;
    const std::string help = table.help();
    for (size_t end; (end = help.find('\n', begin)) != help.npos; begin = end + 1)
        EXPECT_LE(end - begin, 80u);
    EXPECT_NE(help.npos, help.find("  --a_very_long_option_name VALUE\n"));
}

TEST(Nearest, ReturnsNothingForDissimilarWords) {
    EXPECT_EQ("", app::nearest("qqqqqq", {"unwrap", "measure"}));
    EXPECT_EQ("unwrap", app::nearest("unrwap", {"measure", "unwrap"}));
    EXPECT_EQ("", app::nearest(std::string(100000, 'x'), {"unwrap"}));
}

} // namespace
