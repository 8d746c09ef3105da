/// The built program in hostile surroundings: closed streams, pipes without readers, devices that
/// are full, links planted in its way, and files of its own names in the working directory.
#include "tests/app/program_fixture.h"

#include <csignal>
#include <sys/stat.h>
#include <thread>

namespace {

using namespace test;

class Surroundings : public Program {};

TEST_F(Surroundings, ClosedStandardStreamsNeverReachTheMesh) {
    const std::vector<std::vector<int>> cases = {{0}, {1}, {2}, {0, 2}, {1, 2}, {0, 1, 2}};
    for (const std::vector<int>& closed : cases) {
        Scratch fresh;
        Process::Setup setup;
        setup.closed = closed;
        const std::string mesh = fresh.put("cube.obj", k_cube);
        const Ended ended =
            run({"unwrap", mesh, "--in_place", "--report", fresh.path("r.json")}, setup);
        EXPECT_EQ(0, ended.code);
        EXPECT_EQ(k_cube, fresh.get("cube.obj.bak"));
        EXPECT_EQ("ok", Json::parse(fresh.get("r.json"))["status"]);
        EXPECT_EQ(without_texture(k_cube), without_texture(fresh.get("cube.obj")));
    }
}

TEST_F(Surroundings, ClosedStandardOutputIsAnOutputError) {
    Process::Setup setup;
    setup.closed = {1};
    const Ended ended = run({"unwrap", dir.put("cube.obj", k_cube), "-o", "-"}, setup);
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("-: cannot be written: Bad file descriptor"))
        << ended.err;
}

TEST_F(Surroundings, ClosedStandardInputIsAnInputError) {
    Process::Setup setup;
    setup.closed = {0};
    EXPECT_EQ(3, run({"unwrap", "-", "-o", dir.path("out.obj")}, setup).code);
    EXPECT_TRUE(dir.names().empty());
}

/// Waits until the process sleeps, and goes on sleeping.
void wait_until_asleep(pid_t process) {
    for (int looks = 0; looks < 5;) {
        std::ifstream status("/proc/" + std::to_string(process) + "/stat");
        std::string id, name, state;
        ASSERT_TRUE(status >> id >> name >> state);
        ASSERT_NE("Z", state) << "it has ended";
        looks = state == "S" ? looks + 1 : 0;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

TEST_F(Surroundings, InterruptEndsAWriteToAPipeWithoutReader) {
    const std::string mesh = dir.put("cube.obj", k_cube), pipe = dir.path("pipe.obj");
    ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
    Process process({"unwrap", mesh, "-o", pipe, "--report", dir.path("r.json")});
    while (dir.names().size() < 3) // until the report is begun
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    wait_until_asleep(process.id()); // it waits for a reader
    process.send(SIGINT);
    EXPECT_TRUE(process.ends_within(std::chrono::seconds(60)));
    EXPECT_EQ(130, process.wait().code);
    EXPECT_EQ((Names{"cube.obj", "pipe.obj"}), dir.names());
}

TEST_F(Surroundings, ReportThatCannotBeWrittenLeavesTheOutputAsItWas) {
    const std::string mesh = dir.put("cube.obj", k_cube);
    const std::string older = dir.put("cube_uv.obj", "older result");
    const Ended ended = run({"unwrap", mesh, "--report", "/dev/full", "--layout", dir.path("l")});
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(std::string::npos,
              ended.err.find("/dev/full: cannot be written: No space left on device"));
    EXPECT_EQ("older result", dir.get("cube_uv.obj"));
    EXPECT_EQ((Names{"cube.obj", "cube_uv.obj"}), dir.names());
    EXPECT_EQ(7, run({"unwrap", mesh, "--in_place", "--report", "/dev/full"}).code);
    EXPECT_EQ(k_cube, dir.get("cube.obj"));
    EXPECT_FALSE(dir.has("cube.obj.bak"));
}

TEST_F(Surroundings, ReportOverTheBackupIsAUsageErrorThatTouchesNothing) {
    const std::string mesh = dir.put("cube.obj", k_cube);
    const Ended ended = run({"unwrap", mesh, "--in_place", "--report", mesh + ".bak"});
    EXPECT_EQ(2, ended.code) << ended.err;
    EXPECT_EQ(k_cube, dir.get("cube.obj"));
    EXPECT_EQ(Names{"cube.obj"}, dir.names());
}

// Code ----------------------------------------------------------------------------------------

/// Runs in a directory that contains files under the names of the program's own parts.
class WorkingDirectory : public Program {
protected:
    WorkingDirectory() { setup.directory = dir.root(); }
    Process::Setup setup;
};

TEST_F(WorkingDirectory, IsNotSearchedForThePlugin) {
    dir.put("tessora.so", "not a plug-in");
    dir.put("cube.obj", k_cube);
    const Ended ended = run({"unwrap", "cube.obj"}, setup);
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(0, run({"-c", "loadPlugin tessora; polyCube; tessora;"}, setup).code);
    EXPECT_EQ(1, run({"-c", "loadPlugin \"./tessora.so\";"}, setup).code); // a path is obeyed
}

TEST_F(WorkingDirectory, IsNotSearchedForProcedures) {
    std::filesystem::create_directory(dir.path("scripts"));
    for (const char* place : {"", "scripts/"})
        dir.put(std::string(place) + "tessoraCreateUI.mel", "print \"planted\\n\";");
    EXPECT_EQ("", run({"-c", "tessoraCreateUI;"}, setup).out);
    EXPECT_EQ("", run({"-c", "source \"tessoraCreateUI.mel\";"}, setup).out);
    EXPECT_EQ("planted\n", run({"-c", "source \"./tessoraCreateUI.mel\";"}, setup).out);
}

TEST_F(WorkingDirectory, IsNotSearchedForLibraries) {
    for (const char* name : {"libEGL.so.1", "libpng16.so.16", "libtessora_host.so", "libc.so.6",
                             "libOpenGL.so.0", "libtessora_d3dx9.so"})
        dir.put(name, "not a library");
    const Ended ended = run({"--version"}, setup);
    EXPECT_EQ(0, ended.code) << ended.err;
    dir.put("cube.obj", k_cube);
    EXPECT_EQ(0, run({"unwrap", "cube.obj"}, setup).code);
}

} // namespace
