#include "corelib/file.h"
#include "tests/corelib/streams.h"
#include "tests/corelib/support.h"

#include <gtest/gtest.h>

namespace {

bool put(file& f, const std::string& text) { return f.write(text.data(), text.size()); }

TEST(FileConstruction, StartsClosedAndNameless) {
    const file f;
    EXPECT_FALSE(f.is_open());
    EXPECT_EQ(f.name().length(), 0u);
    EXPECT_EQ(f.error().length(), 0u);
}

TEST(FileClose, SucceedsIfNeverOpened) {
    file f;
    EXPECT_TRUE(f.close());
}

TEST(FileOpen, ModeTwoWritesANewFile) {
    const TemporaryFile path;
    file f;
    ASSERT_TRUE(f.open(path.path(), 2));
    EXPECT_TRUE(f.is_open());
    EXPECT_TRUE(put(f, "first"));
    EXPECT_TRUE(f.close());
    EXPECT_FALSE(f.is_open());
    EXPECT_EQ(path.text(), "first");
    ASSERT_TRUE(f.open(path.path(), 2));
    EXPECT_TRUE(put(f, "2"));
    EXPECT_TRUE(f.close());
    EXPECT_EQ(path.text(), "2");
}

TEST(FileOpen, ModeFourAppends) {
    const TemporaryFile path;
    for (int i = 0; i < 2; ++i) {
        file f;
        ASSERT_TRUE(f.open(path.path(), 4));
        EXPECT_TRUE(put(f, "ab\n"));
    }
    EXPECT_EQ(path.text(), "ab\nab\n");
}

TEST(FileOpen, ModeThreeWritesIntoAnExistingFile) {
    const TemporaryFile path;
    file f;
    EXPECT_FALSE(f.open(path.path(), 3));
    ASSERT_TRUE(f.open(path.path(), 2));
    ASSERT_TRUE(put(f, "abcdef"));
    ASSERT_TRUE(f.close());
    ASSERT_TRUE(f.open(path.path(), 3));
    EXPECT_TRUE(put(f, "XY"));
    EXPECT_TRUE(f.close());
    EXPECT_EQ(path.text(), "XYcdef");
}

TEST(FileOpen, ModeOneOnlyReads) {
    const TemporaryFile path;
    file f;
    ASSERT_TRUE(f.open(path.path(), 2));
    ASSERT_TRUE(f.close());
    ASSERT_TRUE(f.open(path.path(), 1));
    EXPECT_FALSE(put(f, "x"));
    EXPECT_STREQ(f.error().c_str(), "Bad file descriptor");
}

TEST(FileOpen, FailureStoresTheSystemsMessage) {
    file f;
    EXPECT_FALSE(f.open("/tmp/no_such_folder_of_tessora/x", 2));
    EXPECT_FALSE(f.is_open());
    EXPECT_STREQ(f.error().c_str(), "No such file or directory");
    EXPECT_EQ(f.name().length(), 0u);
}

TEST(FileOpen, ClosesTheStreamThatWasOpen) {
    const TemporaryFile first;
    const TemporaryFile second;
    file f;
    ASSERT_TRUE(f.open(first.path(), 2));
    ASSERT_TRUE(put(f, "kept"));
    ASSERT_TRUE(f.open(second.path(), 2));
    EXPECT_EQ(first.text(), "kept");
    EXPECT_EQ(descriptor_of(first.path()), -1);
}

TEST(FileOpen, FailureKeepsTheStreamThatWasOpen) {
    const TemporaryFile path;
    file f;
    ASSERT_TRUE(f.open(path.path(), 2));
    EXPECT_FALSE(f.open("/tmp/no_such_folder_of_tessora/x", 2));
    EXPECT_TRUE(f.is_open());
    EXPECT_TRUE(put(f, "x"));
}

TEST(FileDestruction, ClosesTheStream) {
    const TemporaryFile path;
    {
        file f;
        ASSERT_TRUE(f.open(path.path(), 2));
        ASSERT_TRUE(put(f, "kept"));
        EXPECT_NE(descriptor_of(path.path()), -1);
    }
    EXPECT_EQ(descriptor_of(path.path()), -1);
    EXPECT_EQ(path.text(), "kept");
}

TEST(FileWrite, WithoutAStreamFails) {
    file f;
    EXPECT_FALSE(put(f, "x"));
    EXPECT_STREQ(f.error().c_str(), "Bad file descriptor");
}

TEST(FileWrite, ZeroBytesFail) {
    const TemporaryFile path;
    file f;
    ASSERT_TRUE(f.open(path.path(), 2));
    EXPECT_FALSE(f.write("x", 0));
}

TEST(FileWrite, FullDiskStoresTheSystemsMessage) {
    file f;
    ASSERT_TRUE(f.open("/dev/full", 2));
    EXPECT_FALSE(put(f, std::string(1 << 20, 'x')));
    EXPECT_STREQ(f.error().c_str(), "No space left on device");
}

TEST(FileClose, FullDiskFailsAndKeepsTheHandle) {
    file f;
    ASSERT_TRUE(f.open("/dev/full", 2));
    ASSERT_TRUE(put(f, "x"));
    EXPECT_FALSE(f.close());
    EXPECT_STREQ(f.error().c_str(), "No space left on device");
    EXPECT_TRUE(f.is_open());
}

TEST(FileClose, AfterAFailedFcloseTheHandleIsKeptButNotUsed) {
    const TemporaryFile path;
    file f;
    ASSERT_TRUE(f.open(path.path(), 2));
    ASSERT_EQ(close(descriptor_of(path.path())), 0);
    EXPECT_FALSE(f.close());
    EXPECT_STREQ(f.error().c_str(), "Bad file descriptor");
    EXPECT_TRUE(f.is_open());
    EXPECT_FALSE(put(f, "x"));
    EXPECT_FALSE(f.close());
    ASSERT_TRUE(f.open(path.path(), 2));
    EXPECT_TRUE(put(f, "x"));
    EXPECT_TRUE(f.close());
}

class FileOpenDeathTest : public testing::TestWithParam<int> {};

TEST_P(FileOpenDeathTest, UnknownModeIsABug) {
    file f;
    EXPECT_EXIT(f.open("/dev/null", GetParam()), fixtures::ended_by_abort(),
                literally("file::open() BUG at file \"file\", line 48: \"unsupported open flag "
                          "combination\"!"));
}

INSTANTIATE_TEST_SUITE_P(Modes, FileOpenDeathTest, testing::Values(0, 5, -1, 1000));

} // namespace
