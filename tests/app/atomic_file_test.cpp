#include "app/atomic_file.h"
#include "tests/app/scratch.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using app::AtomicFile;
using test::Names;
using test::Scratch;

bool publish(const std::string& path, const std::string& bytes, std::string& error) {
    AtomicFile file;
    return file.open(path, error) && file.write(bytes, error) && file.commit(error);
}

TEST(AtomicFile, AppearsOnlyWhenCommitted) {
    Scratch dir;
    AtomicFile file;
    std::string error;
    ASSERT_TRUE(file.open(dir.path("m.obj"), error)) << error;
    EXPECT_TRUE(file.is_open());
    ASSERT_TRUE(file.write("bytes", error)) << error;
    EXPECT_FALSE(dir.has("m.obj"));
    EXPECT_EQ(Names{"m.obj.tessora-tmp." + std::to_string(::getpid())}, dir.names());
    ASSERT_TRUE(file.commit(error)) << error;
    EXPECT_FALSE(file.is_open());
    EXPECT_EQ(Names{"m.obj"}, dir.names());
    EXPECT_EQ("bytes", dir.get("m.obj"));
}

TEST(AtomicFile, LeavesTheOldFileWhenNotCommitted) {
    Scratch dir;
    dir.put("m.obj", "old");
    std::string error;
    {
        AtomicFile file;
        ASSERT_TRUE(file.open(dir.path("m.obj"), error));
        ASSERT_TRUE(file.write("new", error));
    }
    EXPECT_EQ("old", dir.get("m.obj"));
    EXPECT_EQ(Names{"m.obj"}, dir.names());
}

TEST(AtomicFile, DiscardRemovesTheTemporaryFile) {
    Scratch dir;
    AtomicFile file;
    std::string error;
    ASSERT_TRUE(file.open(dir.path("m.obj"), error));
    file.discard();
    EXPECT_FALSE(file.is_open());
    EXPECT_TRUE(dir.names().empty());
}

TEST(AtomicFile, ReplacesAnOldFileAndKeepsItsPermissions) {
    Scratch dir;
    ::chmod(dir.put("m.obj", "old").c_str(), 0640);
    std::string error;
    ASSERT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    struct stat info = {};
    ASSERT_EQ(0, ::stat(dir.path("m.obj").c_str(), &info));
    EXPECT_EQ(0640u, info.st_mode & 07777u);
    EXPECT_EQ("new", dir.get("m.obj"));
}

TEST(AtomicFile, FollowsASymbolicLink) {
    Scratch dir;
    dir.put("real.obj", "old");
    std::filesystem::create_symlink("real.obj", dir.path("link.obj"));
    std::string error;
    ASSERT_TRUE(publish(dir.path("link.obj"), "new", error)) << error;
    EXPECT_TRUE(std::filesystem::is_symlink(dir.path("link.obj")));
    EXPECT_EQ("new", dir.get("real.obj"));
}

TEST(AtomicFile, CreatesTheFileBehindADanglingLink) {
    Scratch dir;
    std::filesystem::create_directory(dir.path("d"));
    std::filesystem::create_symlink("d/real.obj", dir.path("link.obj"));
    std::string error;
    ASSERT_TRUE(publish(dir.path("link.obj"), "new", error)) << error;
    EXPECT_TRUE(std::filesystem::is_symlink(dir.path("link.obj")));
    EXPECT_EQ("new", dir.get("d/real.obj"));
}

TEST(AtomicFile, LinkToItselfIsAnErrorThatNamesThePath) {
    Scratch dir;
    std::filesystem::create_symlink("loop.obj", dir.path("loop.obj"));
    std::string error;
    EXPECT_FALSE(publish(dir.path("loop.obj"), "new", error));
    EXPECT_EQ(dir.path("loop.obj") + ": cannot be written: Too many levels of symbolic links",
              error);
    EXPECT_EQ(Names{"loop.obj"}, dir.names());
}

TEST(AtomicFile, DoesNotWriteThroughALinkUnderTheTemporaryName) {
    Scratch dir;
    dir.put("victim", "untouched");
    std::filesystem::create_symlink("victim",
                                    dir.path("m.obj.tessora-tmp." + std::to_string(::getpid())));
    std::string error;
    ASSERT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    EXPECT_EQ("untouched", dir.get("victim"));
    EXPECT_FALSE(std::filesystem::is_symlink(dir.path("m.obj")));
}

/// The id of a process that has ended.
pid_t ended_process() {
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    ::waitpid(child, nullptr, 0);
    return child;
}

TEST(AtomicFile, RemovesWhatKilledProcessesLeftInTheFolder) {
    Scratch dir;
    const std::string gone = std::to_string(ended_process());
    dir.put("m.obj.tessora-tmp." + gone, "half");
    dir.put("other.obj.tessora-tmp." + gone + ".2", "half");
    std::string error;
    ASSERT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    EXPECT_EQ(Names{"m.obj"}, dir.names());
}

TEST(AtomicFile, RemovesWhatAnEndedProcessLeftThatNobodyHasCollected) {
    Scratch dir;
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(0);
    siginfo_t info;
    ASSERT_EQ(0, ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOWAIT));
    dir.put("m.obj.tessora-tmp." + std::to_string(child), "half");
    std::string error;
    EXPECT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    EXPECT_EQ(Names{"m.obj"}, dir.names());
    ::waitpid(child, nullptr, 0);
}

TEST(AtomicFile, KeepsFilesThatMayBelongToOthers) {
    Scratch dir;
    const std::string gone = std::to_string(ended_process());
    const Names kept = {
        "a.tessora-tmp.",
        "a.tessora-tmp.1", // a process that runs
        "a.tessora-tmp." + gone + "x",
        "a.tessora-tmp." + gone + ".",
        "a.tessora-tmp.0",
        "a.tmp." + gone,
        "tessora-tmp." + gone,
    };
    for (const std::string& name : kept)
        dir.put(name, "theirs");
    std::filesystem::create_directory(dir.path("d.tessora-tmp." + gone));
    std::filesystem::create_symlink("a.tmp." + gone, dir.path("l.tessora-tmp." + gone));
    std::string error;
    ASSERT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    EXPECT_EQ(dir.names().size(), kept.size() + 3);
}

TEST(AtomicFile, KeepsALockedFileOfAnotherComputer) {
    Scratch dir;
    const std::string path =
        dir.put("m.obj.tessora-tmp." + std::to_string(ended_process()), "being written");
    const int file = ::open(path.c_str(), O_RDONLY);
    ASSERT_EQ(0, ::flock(file, LOCK_EX));
    std::string error;
    ASSERT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    EXPECT_EQ(dir.names().size(), 2u);
    ::close(file);
}

TEST(AtomicFile, LocksItsTemporaryFile) {
    Scratch dir;
    AtomicFile writer;
    std::string error;
    ASSERT_TRUE(writer.open(dir.path("m.obj"), error));
    const int file = ::open(dir.path(dir.names().front()).c_str(), O_RDONLY);
    EXPECT_EQ(-1, ::flock(file, LOCK_EX | LOCK_NB));
    ::close(file);
}

TEST(AtomicFile, KeepRefusesToReplaceAFileThatAppearsMeanwhile) {
    Scratch dir;
    AtomicFile file;
    std::string error;
    ASSERT_TRUE(file.open(dir.path("m.obj"), error, AtomicFile::keep));
    ASSERT_TRUE(file.write("new", error));
    dir.put("m.obj", "appeared");
    EXPECT_FALSE(file.commit(error));
    EXPECT_EQ(dir.path("m.obj") + ": cannot be written: File exists", error);
    EXPECT_EQ("appeared", dir.get("m.obj"));
    EXPECT_EQ(Names{"m.obj"}, dir.names());
}

TEST(AtomicFile, WorksDespiteAStaleTemporaryFileOfTheSameName) {
    Scratch dir;
    const std::string stale = "m.obj.tessora-tmp." + std::to_string(::getpid());
    dir.put(stale, "stale");
    std::string error;
    ASSERT_TRUE(publish(dir.path("m.obj"), "new", error)) << error;
    EXPECT_EQ("new", dir.get("m.obj"));
    EXPECT_EQ("stale", dir.get(stale));
}

TEST(AtomicFile, WritesFilesWithNamesOf255Bytes) {
    Scratch dir;
    const std::string name(255, 'n');
    std::string error;
    ASSERT_TRUE(publish(dir.path(name), "new", error)) << error;
    EXPECT_EQ(Names{name}, dir.names());
}

TEST(AtomicFile, WritesFilesWithBlanksAndUnicodeInTheirNames) {
    Scratch dir;
    std::string error;
    ASSERT_TRUE(publish(dir.path("Stra\xC3\x9F"
                                 "e \xE5\xBD\xA2.obj"),
                        "x", error));
    EXPECT_EQ("x", dir.get("Stra\xC3\x9F"
                           "e \xE5\xBD\xA2.obj"));
}

TEST(AtomicFile, MissingDirectoryIsAnErrorThatNamesThePath) {
    Scratch dir;
    std::string error;
    EXPECT_FALSE(publish(dir.path("none/m.obj"), "x", error));
    EXPECT_EQ(dir.path("none/m.obj") + ": cannot be written: No such file or directory", error);
    EXPECT_TRUE(dir.names().empty());
}

TEST(AtomicFile, DirectoryIsRefused) {
    Scratch dir;
    std::string error;
    EXPECT_FALSE(publish(dir.root(), "x", error));
    EXPECT_EQ(dir.root() + ": cannot be written: Is a directory", error);
}

TEST(AtomicFile, TooLongNameIsAnErrorThatNamesThePath) {
    Scratch dir;
    const std::string path = dir.path(std::string(300, 'n'));
    std::string error;
    EXPECT_FALSE(publish(path, "x", error));
    EXPECT_EQ(path + ": cannot be written: File name too long", error);
    EXPECT_TRUE(dir.names().empty());
}

TEST(AtomicFile, DevicesAreWrittenDirectly) {
    std::string error;
    EXPECT_TRUE(publish("/dev/null", "x", error)) << error;
    EXPECT_FALSE(publish("/dev/full", "x", error));
    EXPECT_EQ("/dev/full: cannot be written: No space left on device", error);
}

TEST(AtomicFile, FailedWriteLeavesTheOldFileAndNoTemporary) {
    Scratch dir;
    dir.put("m.obj", "old");
    rlimit before = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &before));
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 4096;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &small));
    std::string error;
    const bool good = publish(dir.path("m.obj"), std::string(10000, 'x'), error);
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, handler);
    EXPECT_FALSE(good);
    EXPECT_EQ(dir.path("m.obj") + ": cannot be written: File too large", error);
    EXPECT_EQ("old", dir.get("m.obj"));
    EXPECT_EQ(Names{"m.obj"}, dir.names());
}

TEST(AtomicFile, FailedRenameLeavesNoTemporary) {
    Scratch dir;
    AtomicFile file;
    std::string error;
    ASSERT_TRUE(file.open(dir.path("m.obj"), error));
    ASSERT_TRUE(file.write("x", error));
    std::filesystem::create_directory(dir.path("m.obj")); // rename cannot replace a directory
    EXPECT_FALSE(file.commit(error));
    EXPECT_EQ(dir.path("m.obj") + ": cannot be written: Is a directory", error);
    EXPECT_EQ(Names{"m.obj"}, dir.names());
}

TEST(SameFile, IgnoresLinksAndSpellingOfThePath) {
    Scratch dir;
    const std::string file = dir.put("m.obj", "x");
    std::filesystem::create_symlink("m.obj", dir.path("link.obj"));
    EXPECT_TRUE(app::same_file(file, dir.root() + "/./m.obj"));
    EXPECT_TRUE(app::same_file(file, dir.path("link.obj")));
    EXPECT_FALSE(app::same_file(file, dir.put("n.obj", "x")));
    EXPECT_TRUE(app::same_file(dir.path("missing"), dir.root() + "/./missing"));
    EXPECT_FALSE(app::same_file(dir.path("missing"), dir.path("other")));
    EXPECT_FALSE(app::same_file("/dev/null", "/dev/null"));
    EXPECT_FALSE(app::same_file("", ""));
}

} // namespace
