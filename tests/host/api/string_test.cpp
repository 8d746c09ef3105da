#include <maya/MString.h>
#include <maya/MStringArray.h>

#include <gtest/gtest.h>
#include <sstream>
#include <utility>

namespace {

TEST(String, IsEmptyByDefault) {
    EXPECT_STREQ(MString().asChar(), "");
    EXPECT_EQ(MString().length(), 0u);
}

TEST(String, TreatsNullAsEmpty) {
    const char* nothing = NULL;
    EXPECT_STREQ(MString(nothing).asChar(), "");
    EXPECT_TRUE(MString() == nothing);
    EXPECT_TRUE(MString("a").set(nothing).error());
}

TEST(String, KeepsBytesAfterAZeroByte) { EXPECT_EQ(MString("a\0b", 3).length(), 3u); }

TEST(String, IsCopiedByValue) {
    MString a("one");
    MString b = a;
    b += " two";
    EXPECT_EQ(a, "one");
    EXPECT_EQ(b, "one two");
}

TEST(String, CanBeAssignedItsOwnText) {
    MString a("one two");
    a = a.asChar() + 4;
    EXPECT_EQ(a, "two");
}

TEST(String, ConcatenatesTextOnEitherSide) {
    EXPECT_EQ("a" + MString("b") + "c" + MString("d"), "abcd");
}

TEST(String, ConcatenatesNumbers) {
    MString text("n");
    text += 7;
    text += 2u;
    text += 1.5;
    text += 0.25f;
    EXPECT_EQ(text, "n721.50.25");
    EXPECT_EQ(MString("x") + -3, "x-3");
    EXPECT_EQ(MString("x") + 3u, "x3");
    EXPECT_EQ(MString("x") + 0.5, "x0.5");
    EXPECT_EQ(MString("x") + 0.5f, "x0.5");
}

TEST(String, ComparesWithText) {
    const MString text("abc");
    EXPECT_TRUE(text == "abc" && "abc" == text && text == MString("abc"));
    EXPECT_TRUE(text != "abd" && "abd" != text && text != MString("ab"));
}

TEST(String, CountsCharactersOfUtf8) {
    const MString text("a\xC3\xA4\xE2\x82\xAC");
    EXPECT_EQ(text.length(), 6u);
    EXPECT_EQ(text.numChars(), 3);
}

TEST(String, CanBeSetToNumbers) {
    MString text;
    EXPECT_TRUE(text.set(12));
    EXPECT_EQ(text, "12");
    EXPECT_TRUE(text.set(0.5));
    EXPECT_EQ(text, "0.5");
    text = 4.0;
    EXPECT_EQ(text, "4");
    text.clear();
    EXPECT_EQ(text, "");
}

TEST(String, SubstringIncludesBothEnds) {
    const MString text("abcdef");
    EXPECT_EQ(text.substring(1, 3), "bcd");
    EXPECT_EQ(text.substring(-5, 1), "ab");
    EXPECT_EQ(text.substring(4, 99), "ef");
    EXPECT_EQ(text.substring(3, 2), "");
}

TEST(String, FindsBytesFromEitherEnd) {
    const MString text("a.b.c");
    EXPECT_EQ(text.index('.'), 1);
    EXPECT_EQ(text.rindex('.'), 3);
    EXPECT_EQ(text.index('x'), -1);
    EXPECT_EQ(text.rindex('x'), -1);
}

TEST(String, SplitDropsEmptyPieces) {
    MStringArray pieces;
    EXPECT_TRUE(MString("|a||bc|").split('|', pieces));
    ASSERT_EQ(pieces.length(), 2u);
    EXPECT_EQ(pieces[0], "a");
    EXPECT_EQ(pieces[1], "bc");
}

TEST(String, SplitFailsWithoutPieces) {
    MStringArray pieces;
    EXPECT_TRUE(MString("||").split('|', pieces).error());
    EXPECT_EQ(pieces.length(), 0u);
}

TEST(String, ParsesWholeNumbers) {
    EXPECT_TRUE(MString(" -12 ").isInt());
    EXPECT_EQ(MString("-12").asInt(), -12);
    for (const char* text : {"", "1.5", "12x", "99999999999", "x"}) {
        EXPECT_FALSE(MString(text).isInt()) << text;
        EXPECT_EQ(MString(text).asInt(), 0) << text;
    }
}

TEST(String, ParsesRealNumbers) {
    EXPECT_TRUE(MString("1.5e3").isDouble());
    EXPECT_EQ(MString("1.5e3").asDouble(), 1500.0);
    for (const char* text : {"", "1.5x", "inf", "nan", "--1"}) {
        EXPECT_FALSE(MString(text).isDouble()) << text;
        EXPECT_EQ(MString(text).asDouble(), 0.0) << text;
    }
}

TEST(String, PrintsToAStream) {
    std::ostringstream stream;
    stream << MString("text") << 1;
    EXPECT_EQ(stream.str(), "text1");
}

TEST(String, MovesWithoutCopying) {
    MString a("a long text that does not fit into the string itself");
    const char* const place = a.asChar();
    const MString b = std::move(a);
    EXPECT_EQ(b.asChar(), place);
}

} // namespace
