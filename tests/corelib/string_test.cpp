#include "corelib/string.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>

namespace {

TEST(StringConstruction, EmptyHasNoBuffer) {
    const string s;
    EXPECT_EQ(s.length(), 0u);
    EXPECT_EQ(s.capacity(), 0u);
    EXPECT_EQ(s.c_str(), nullptr);
}

TEST(StringConstruction, NullTextMakesAnEmptyString) {
    const string s(nullptr);
    EXPECT_EQ(s.length(), 0u);
    EXPECT_EQ(s.c_str(), nullptr);
}

TEST(StringConstruction, TextAllocatesExactlyItsSize) {
    const string s("hello");
    EXPECT_STREQ(s.c_str(), "hello");
    EXPECT_EQ(s.length(), 5u);
    EXPECT_EQ(s.capacity(), 6u);
}

TEST(StringConstruction, CopyOwnsItsBuffer) {
    const string original("hello");
    const string copy(original);
    EXPECT_STREQ(copy.c_str(), "hello");
    EXPECT_NE(copy.c_str(), original.c_str());
}

TEST(StringMemory, DestructionFreesTheBuffer) {
    const uint64_t live = live_blocks;
    {
        const string s("hello");
        EXPECT_EQ(live_blocks, live + 1);
    }
    EXPECT_EQ(live_blocks, live);
}

TEST(StringAssignment, ResizesToExactlyTheText) {
    string s("a long text to begin with");
    s = "abc";
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(s.length(), 3u);
    EXPECT_EQ(s.capacity(), 4u);
    s = string("something longer");
    EXPECT_STREQ(s.c_str(), "something longer");
    EXPECT_EQ(s.capacity(), 17u);
}

TEST(StringAssignment, NullTextLeavesTheStringUnchanged) {
    string s("abc");
    s = static_cast<const char*>(nullptr);
    EXPECT_STREQ(s.c_str(), "abc");
}

TEST(StringAssignment, StringWithoutABufferLeavesTheStringUnchanged) {
    string s("abc");
    s = string();
    EXPECT_STREQ(s.c_str(), "abc");
}

TEST(StringAssignment, AcceptsItsOwnText) {
    string s("abcdef");
    s = s.c_str() + 2;
    EXPECT_STREQ(s.c_str(), "cdef");
    EXPECT_EQ(s.length(), 4u);
    const string& same = s;
    s = same;
    EXPECT_STREQ(s.c_str(), "cdef");
}

TEST(StringAssignment, LengthIsRecomputedFromTheBuffer) {
    string zeros;
    ASSERT_TRUE(zeros.truncate(10));
    string s("abc");
    s = zeros;
    EXPECT_EQ(s.length(), 0u);
    EXPECT_EQ(s.capacity(), 1u);
}

TEST(StringAssignment, LeavesTheStringUnchangedWhenMemoryRunsOut) {
    string s("abc");
    AllocationWatch watch(0);
    s = "a longer text";
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(s.length(), 3u);
}

TEST(StringAppend, ReservesMultiplesOf100) {
    string s;
    EXPECT_TRUE(s += "abc");
    EXPECT_EQ(s.capacity(), 100u);
    EXPECT_EQ(s.length(), 3u);
    const std::string text(99, 'x');
    EXPECT_TRUE(s += text.c_str());
    EXPECT_EQ(s.capacity(), 200u);
    EXPECT_EQ(std::string(s.c_str()), "abc" + text);
}

TEST(StringAppend, GrowsWhenTheTextWouldExactlyFillTheBuffer) {
    string s;
    ASSERT_TRUE(s += std::string(90, 'x').c_str());
    EXPECT_TRUE(s += "12345678"); // 90 + 8 + 1 < 100
    EXPECT_EQ(s.capacity(), 100u);
    EXPECT_TRUE(s += "9"); // 98 + 1 + 1 >= 100
    EXPECT_EQ(s.capacity(), 200u);
}

TEST(StringAppend, CapacityGrowsInMultiplesOf100) {
    string s;
    EXPECT_TRUE(s += std::string(250, 'x').c_str());
    EXPECT_EQ(s.capacity(), 300u);
}

TEST(StringAppend, NullTextSucceedsAndChangesNothing) {
    string s("abc");
    AllocationWatch watch(0);
    EXPECT_TRUE(s += static_cast<const char*>(nullptr));
    EXPECT_STREQ(s.c_str(), "abc");
}

TEST(StringAppend, StringWithoutABufferChangesNothing) {
    string s("abc");
    EXPECT_TRUE(s += string());
    EXPECT_STREQ(s.c_str(), "abc");
}

TEST(StringAppend, LeavesTheStringUnchangedWhenMemoryRunsOut) {
    string s("abc");
    AllocationWatch watch(0);
    EXPECT_FALSE(s += "def");
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(s.length(), 3u);
    EXPECT_EQ(s.capacity(), 4u);
}

TEST(StringAppend, AcceptsItsOwnText) {
    string s("abc");
    EXPECT_TRUE(s += static_cast<const char*>(s.c_str() + 1));
    EXPECT_STREQ(s.c_str(), "abcbc");
}

TEST(StringAppendDeathTest, OntoItselfIsABug) {
    string s("abc");
    EXPECT_EXIT(s += s, fixtures::ended_by_abort(),
                literally("string::operator +=() BUG at file \"string\", line 572: assertion &s != "
                          "this failed!"));
}

TEST(StringPlus, JoinsTexts) {
    const string a("abc");
    const string b("def");
    EXPECT_STREQ((a + "xyz").c_str(), "abcxyz");
    EXPECT_STREQ((a + b).c_str(), "abcdef");
    EXPECT_STREQ((a + a).c_str(), "abcabc");
    EXPECT_STREQ((string() + b).c_str(), "def");
    EXPECT_STREQ((a + string()).c_str(), "abc");
}

TEST(StringTruncate, Shortens) {
    string s("abcdef");
    EXPECT_TRUE(s.truncate(2));
    EXPECT_STREQ(s.c_str(), "ab");
    EXPECT_EQ(s.length(), 2u);
    EXPECT_EQ(s.capacity(), 7u);
}

TEST(StringTruncate, LengthensWithZeroBytes) {
    string s("abc");
    EXPECT_TRUE(s.truncate(10));
    EXPECT_EQ(s.length(), 10u);
    EXPECT_EQ(s.capacity(), 11u);
    EXPECT_EQ(std::string(s.c_str(), 11), std::string("abc\0\0\0\0\0\0\0\0", 11));
}

TEST(StringTruncate, LengthensAnEmptyString) {
    string s;
    EXPECT_TRUE(s.truncate(3));
    EXPECT_EQ(s.length(), 3u);
    EXPECT_EQ(std::string(s.c_str(), 4), std::string(4, '\0'));
}

TEST(StringTruncate, EqualSizeChangesNothing) {
    string s("abc");
    AllocationWatch watch(0);
    EXPECT_TRUE(s.truncate(3));
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(s.capacity(), 4u);
}

TEST(StringTruncate, SetsTheLengthEvenWhenMemoryRunsOut) {
    string s("abc");
    AllocationWatch watch(0);
    EXPECT_FALSE(s.truncate(1000));
    EXPECT_EQ(s.length(), 1000u);
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_EQ(s.capacity(), 4u);
}

TEST(StringTruncate, SizeBeyond32BitsCountsAsOutOfMemory) {
    string s;
    EXPECT_FALSE(s.truncate(UINT32_MAX));
    EXPECT_EQ(s.length(), UINT32_MAX);
}

TEST(StringTruncate, LargestSizeOf32BitsIsRequested) {
    string s;
    AllocationWatch watch(0);
    EXPECT_FALSE(s.truncate(UINT32_MAX - 1));
    EXPECT_EQ(AllocationWatch::sizes(), std::vector<size_t>{UINT32_MAX});
}

TEST(StringTruncateDeathTest, CuttingBeyondABufferThatCouldNotGrowIsABug) {
    string s("abc");
    {
        AllocationWatch watch(0);
        ASSERT_FALSE(s.truncate(1000));
    }
    EXPECT_EXIT(s.truncate(500), fixtures::ended_by_abort(),
                literally("string::truncate() BUG at file \"string\", line 349: assertion size <= "
                          "len failed!"));
}

TEST(StringTruncate, AppendingAfterFailedLengtheningFindsRoom) {
    string s("abc");
    {
        AllocationWatch watch(0);
        ASSERT_FALSE(s.truncate(1000));
    }
    EXPECT_TRUE(s += "def");
    EXPECT_EQ(s.length(), 1003u);
    EXPECT_STREQ(s.c_str(), "abc");
    EXPECT_STREQ(s.c_str() + 1000, "def");
}

TEST(StringUpdateLength, CountsWhatWasWrittenIntoTheBuffer) {
    string s;
    ASSERT_TRUE(s.truncate(64));
    std::snprintf(s.c_str(), s.capacity(), "%d charts", 12);
    s.update_length();
    EXPECT_EQ(s.length(), 9u);
    EXPECT_TRUE(s += "!");
    EXPECT_STREQ(s.c_str(), "12 charts!");
}

TEST(StringUpdateLength, WithoutABufferIsZero) {
    string s;
    s.update_length();
    EXPECT_EQ(s.length(), 0u);
}

} // namespace
