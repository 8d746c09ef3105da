#include "app/glob.h"
#include "tests/app/scratch.h"

namespace {

using test::Names;

TEST(Glob, StarMatchesAnyCharactersAlsoNone) {
    EXPECT_TRUE(app::glob_matches("*.obj", ".obj"));
    EXPECT_TRUE(app::glob_matches("a*c*.obj", "abbcc.c.obj"));
    EXPECT_FALSE(app::glob_matches("a*c.obj", "abc.ob"));
    EXPECT_FALSE(app::glob_matches("a*c", "abcd"));
}

TEST(Glob, QuestionMarkMatchesOneCharacter) {
    EXPECT_TRUE(app::glob_matches("a?.obj", "ab.obj"));
    EXPECT_FALSE(app::glob_matches("a?.obj", "a.obj"));
}

TEST(Glob, SetsMatchTheirCharactersAndRanges) {
    EXPECT_TRUE(app::glob_matches("m[0-9x].obj", "m7.obj"));
    EXPECT_TRUE(app::glob_matches("m[0-9x].obj", "mx.obj"));
    EXPECT_FALSE(app::glob_matches("m[0-9x].obj", "my.obj"));
    EXPECT_TRUE(app::glob_matches("m[!0-9].obj", "my.obj"));
    EXPECT_FALSE(app::glob_matches("m[!0-9].obj", "m5.obj"));
    EXPECT_TRUE(app::glob_matches("[]]", "]"));
}

TEST(Glob, BracketWithoutEndStandsForItself) {
    EXPECT_TRUE(app::glob_matches("a[b", "a[b"));
    EXPECT_FALSE(app::glob_matches("a[b", "ab"));
}

TEST(Glob, ManyStarsTakeNoLongTime) {
    const std::string name(5000, 'a');
    EXPECT_FALSE(app::glob_matches("*a*a*a*a*a*a*a*a*a*a*a*a*b", name));
}

TEST(Glob, BaseEndsBeforeTheFirstPattern) {
    EXPECT_EQ("a/b", app::glob_base("a/b/*.obj"));
    EXPECT_EQ("", app::glob_base("*.obj"));
    EXPECT_EQ("/a", app::glob_base("/a/b?/c.obj"));
}

class GlobFiles : public testing::Test {
protected:
    GlobFiles() {
        std::filesystem::create_directories(dir.path("a/b"));
        std::filesystem::create_directories(dir.path(".hidden"));
        for (const char* name :
             {"2.obj", "1.obj", "note.txt", "a/3.obj", "a/b/4.obj", ".hidden/5.obj", ".6.obj"})
            dir.put(name, "");
    }
    /// Found files, relative to the folder.
    Names found(const std::string& pattern) const {
        Names names;
        for (const std::string& file : app::expand_glob(dir.path(pattern)))
            names.push_back(file.substr(dir.root().size() + 1));
        return names;
    }
    test::Scratch dir;
};

TEST_F(GlobFiles, FilesOfOneFolderInByteOrder) {
    EXPECT_EQ((Names{"1.obj", "2.obj"}), found("*.obj"));
}

TEST_F(GlobFiles, PatternInAFolderName) { EXPECT_EQ(Names{"a/3.obj"}, found("?/*.obj")); }

TEST_F(GlobFiles, TwoStarsSearchAllFolders) {
    EXPECT_EQ((Names{"1.obj", "2.obj", "a/3.obj", "a/b/4.obj"}), found("**/*.obj"));
    EXPECT_EQ(Names{"a/b/4.obj"}, found("**/b/*.obj"));
}

TEST_F(GlobFiles, HiddenNamesOnlyWhenAskedFor) {
    EXPECT_EQ(Names{".6.obj"}, found(".*.obj"));
    EXPECT_EQ(Names{".hidden/5.obj"}, found(".h*/*.obj"));
}

TEST_F(GlobFiles, TwoStarsFollowNoLinks) {
    std::filesystem::create_directory_symlink(dir.root(), dir.path("a/loop"));
    EXPECT_EQ((Names{"1.obj", "2.obj", "a/3.obj", "a/b/4.obj"}), found("**/*.obj"));
}

} // namespace
