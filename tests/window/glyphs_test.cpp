#include "window/glyphs.h"

#include <gtest/gtest.h>

namespace {

using window::Glyphs;

TEST(Glyphs, LatinNamesNeedNoOtherCharacters) {
    Glyphs glyphs;
    glyphs.note("Größe – café …");
    EXPECT_FALSE(glyphs.take_news());
    EXPECT_TRUE(glyphs.characters().empty());
}

TEST(Glyphs, GreekCyrillicAndChineseNamesAreNoted) {
    Glyphs glyphs;
    glyphs.note("α Ж 网");
    EXPECT_TRUE(glyphs.take_news());
    EXPECT_EQ((std::set<uint16_t>{0x03B1, 0x0416, 0x7F51}), glyphs.characters());
}

TEST(Glyphs, NotedCharactersAreNewsOnce) {
    Glyphs glyphs;
    glyphs.note("网格");
    EXPECT_TRUE(glyphs.take_news());
    glyphs.note("格网");
    EXPECT_FALSE(glyphs.take_news());
}

TEST(Glyphs, InvalidAndUnshowableCharactersAreSkipped) {
    Glyphs glyphs;
    glyphs.note("\xC3");     // cut off
    glyphs.note("\xE7\xBD"); // cut off
    glyphs.note("\xE7"
                "abc");              // no continuation
    glyphs.note("\xF0\x9F\x98\x80"); // above U+FFFF
    EXPECT_FALSE(glyphs.take_news());
}

} // namespace
