#include "host/io/write_file.h"
#include "tests/app/scratch.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using test::Names;
using test::Scratch;

bool write(const std::string& path, const std::string& bytes, std::string& reason) {
    return host::write_file(path, bytes, host::Durability::process, reason);
}

TEST(WriteFile, ReplacesTheOldFileAndKeepsItsPermissions) {
    Scratch dir;
    std::string reason;
    ::chmod(dir.put("scene.ma", "old").c_str(), 0640);
    ASSERT_TRUE(write(dir.path("scene.ma"), "new", reason)) << reason;
    struct stat info = {};
    ASSERT_EQ(0, ::stat(dir.path("scene.ma").c_str(), &info));
    EXPECT_EQ(0640u, info.st_mode & 07777u);
    EXPECT_EQ("new", dir.get("scene.ma"));
    EXPECT_EQ(Names{"scene.ma"}, dir.names());
}

TEST(WriteFile, LeavesALinkPlantedUnderTheTemporaryNameAlone) {
    Scratch dir;
    const std::string planted = "scene.ma.tessora-tmp." + std::to_string(::getpid());
    dir.put("victim", "untouched");
    std::filesystem::create_symlink("victim", dir.path(planted));
    std::string reason;
    ASSERT_TRUE(write(dir.path("scene.ma"), "new", reason)) << reason;
    EXPECT_EQ("untouched", dir.get("victim"));
    EXPECT_TRUE(std::filesystem::is_symlink(dir.path(planted)));
    EXPECT_FALSE(std::filesystem::is_symlink(dir.path("scene.ma")));
    EXPECT_EQ("new", dir.get("scene.ma"));
}

TEST(WriteFile, RemovesWhatKilledProcessesLeftInTheFolder) {
    Scratch dir;
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    dir.put("other.ma.tessora-tmp." + std::to_string(child), "half");
    std::string reason;
    ASSERT_TRUE(write(dir.path("scene.ma"), "new", reason)) << reason;
    EXPECT_EQ(Names{"scene.ma"}, dir.names());
}

TEST(WriteFile, WritesFilesWithNamesOf255Bytes) {
    Scratch dir;
    const std::string name(255, 'n');
    std::string reason;
    ASSERT_TRUE(write(dir.path(name), "new", reason)) << reason;
    EXPECT_EQ(Names{name}, dir.names());
}

TEST(WriteFile, WritesBehindLinksToExistingAndMissingFiles) {
    Scratch dir;
    std::filesystem::create_directory(dir.path("d"));
    dir.put("d/old", "old");
    std::string reason;
    for (const char* name : {"old", "missing"}) {
        const std::string link = dir.path(std::string("link_") + name);
        std::filesystem::create_symlink(std::string("d/") + name, link);
        ASSERT_TRUE(write(link, "new", reason)) << reason;
        EXPECT_TRUE(std::filesystem::is_symlink(link));
        EXPECT_EQ("new", dir.get(std::string("d/") + name));
    }
}

TEST(WriteFile, WritesDevicesWithoutReplacingThem) {
    std::string reason;
    EXPECT_TRUE(write("/dev/null", "bytes", reason)) << reason;
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_FALSE(write("/dev/full", "bytes", reason));
    EXPECT_EQ("No space left on device", reason);
}

TEST(WriteFile, FailureLeavesTheOldFileAndGivesTheReason) {
    Scratch dir;
    std::string reason;
    EXPECT_FALSE(write(dir.path("missing/scene.ma"), "new", reason));
    EXPECT_EQ("No such file or directory", reason);
    EXPECT_FALSE(write(dir.root(), "new", reason));
    EXPECT_EQ("Is a directory", reason);
    std::filesystem::create_symlink("loop", dir.path("loop"));
    EXPECT_FALSE(write(dir.path("loop"), "new", reason));
    EXPECT_EQ("Too many levels of symbolic links", reason);
    EXPECT_EQ(Names{"loop"}, dir.names());
}

} // namespace
