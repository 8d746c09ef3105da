/// `tessora unwrap` with several meshes.
#include "tests/app/program_fixture.h"

#include <signal.h>
#include <sys/wait.h>
#include <thread>
#include <time.h>

namespace {

using test::Ended;
using test::Json;
using test::Names;
using test::Process;
using test::Words;

class BatchProgram : public test::Program {
protected:
    BatchProgram() {
        std::filesystem::create_directories(dir.path("in/sub"));
        dir.put("in/cube.obj", test::k_cube);
        dir.put("in/sub/dome.obj", test::dome(4));
    }
    Ended batch(Words words, const Process::Setup& setup = {}) {
        words.insert(words.begin(), {"unwrap", dir.path("in"), "--out_dir", dir.path("out")});
        return test::run(words, setup);
    }
    /// The objects that --json_lines printed.
    static std::vector<Json> lines_of(const Ended& ended) {
        std::vector<Json> lines;
        std::istringstream in(ended.out);
        for (std::string line; std::getline(in, line);)
            lines.push_back(Json::parse(line));
        return lines;
    }
    /// All files below a folder with their content; temporary ones under their own names.
    std::map<std::string, std::string> files(const std::string& folder) const {
        std::map<std::string, std::string> found;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path(folder)))
            if (entry.is_regular_file())
                found[entry.path().lexically_relative(dir.path(folder)).string()] =
                    dir.get(entry.path().lexically_relative(dir.root()).string());
        return found;
    }
    /// The meshes below a folder.
    std::map<std::string, std::string> meshes(const std::string& folder) const {
        std::map<std::string, std::string> found;
        for (const auto& [name, content] : files(folder))
            if (name.size() > 4 && name.substr(name.size() - 4) == ".obj")
                found[name] = content;
        return found;
    }
    void put_cubes(int count) {
        for (int i = 0; i < count; ++i)
            dir.put("in/c" + std::to_string(i) + ".obj", test::cube_grid(1 + i % 3));
    }
    static std::vector<pid_t> children_of(pid_t parent) {
        const std::string id = std::to_string(parent);
        std::ifstream in("/proc/" + id + "/task/" + id + "/children");
        std::vector<pid_t> children;
        for (pid_t child; in >> child;)
            children.push_back(child);
        return children;
    }
};

TEST_F(BatchProgram, FolderIsUnwrappedIntoAnother) {
    const Ended ended = batch({"--jobs", "2"});
    EXPECT_EQ(0, ended.code) << ended.err;
    const auto found = files("out");
    EXPECT_EQ(4u, found.size());
    for (const char* name : {"cube.obj", "cube.json", "sub/dome.obj", "sub/dome.json"})
        EXPECT_TRUE(found.count(name)) << name;
    expect_unwrapped("out/cube.obj");
    expect_unwrapped("out/sub/dome.obj");
    EXPECT_NE(ended.err.npos, ended.err.find("2 done, 0 up to date, 0 failed")) << ended.err;
    EXPECT_EQ("", ended.out);
}

TEST_F(BatchProgram, FilesOfFormatsThatAreNotReadAreWarnedOf) {
    dir.put("in/scene.usd", "");
    for (const Words& words : std::vector<Words>{{}, {"--one_atlas"}, {"--dry_run"}}) {
        const Ended ended = batch(words);
        EXPECT_EQ(0, ended.code) << ended.err;
        EXPECT_NE(ended.err.npos,
                  ended.err.find("tessora: warning: left out, as their formats are not read: " +
                                 dir.path("in/scene.usd") + "\n"))
            << ended.err;
    }
    EXPECT_EQ("", batch({"--quiet"}).err);
}

TEST_F(BatchProgram, ResultsEqualThoseOfSingleCalls) {
    EXPECT_EQ(0, batch({"--stretch", "0.05", "--padding", "4"}).code);
    EXPECT_EQ(dir.get("out/sub/dome.obj"),
              result(test::dome(4), {"--stretch", "0.05", "--padding", "4"}));
}

TEST_F(BatchProgram, BesideWritesPicturesToo) {
    EXPECT_EQ(0, batch({"--beside", "--picture", "stretch"}).code);
    EXPECT_EQ("\x89PNG", dir.get("out/cube.png").substr(0, 4));
    EXPECT_EQ("\x89PNG", dir.get("out/sub/dome.png").substr(0, 4));
}

TEST_F(BatchProgram, FailuresComeFirstInTheSummaryAndTheOthersAreDone) {
    dir.put("in/a.obj", "f 1 2 3\n");
    const Ended ended = batch({"--jobs", "1"});
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(dir.has("out/cube.obj"));
    EXPECT_FALSE(dir.has("out/a.obj"));
    const Json report = Json::parse(dir.get("out/a.json"));
    EXPECT_EQ("failed", report["status"]);
    EXPECT_EQ(3, report["code"]);
    const size_t summary = ended.err.find("1 of 3 failed:");
    ASSERT_NE(ended.err.npos, summary) << ended.err;
    EXPECT_LT(ended.err.find("code 3: " + dir.path("in/a.obj") + ":1: ", summary),
              ended.err.find("2 done, 0 up to date, 1 failed", summary));
}

TEST_F(BatchProgram, FailFastEndsTheBatch) {
    dir.put("in/a.obj", "f 1 2 3\n");
    const Ended ended = batch({"--jobs", "1", "--fail_fast"});
    EXPECT_EQ(1, ended.code);
    EXPECT_FALSE(dir.has("out/cube.obj"));
    EXPECT_NE(ended.err.npos, ended.err.find("0 done, 0 up to date, 1 failed, 2 not done"))
        << ended.err;
}

TEST_F(BatchProgram, MissingFileOfAListFailsAlone) {
    dir.put("list.txt", dir.path("gone.obj") + "\n");
    const Ended ended = batch({"--list", dir.path("list.txt")});
    EXPECT_EQ(1, ended.code);
    EXPECT_TRUE(dir.has("out/cube.obj"));
    EXPECT_EQ(3, Json::parse(dir.get("out/gone.json"))["code"]);
}

TEST_F(BatchProgram, NamesThatAreNotUtf8FailWithAReason) {
    dir.put("in/\xff.obj", test::k_cube);
    const Ended ended = batch({});
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("its name is not valid UTF-8, which a batch needs"));
    EXPECT_TRUE(dir.has("out/cube.obj"));
}

TEST_F(BatchProgram, JsonLinesTellOfEachMeshAndOfAll) {
    dir.put("in/a.obj", "f 1 2 3\n");
    const Ended ended = batch({"--json_lines", "--jobs", "1"});
    const std::vector<Json> lines = lines_of(ended);
    ASSERT_EQ(4u, lines.size()) << ended.out;
    EXPECT_EQ(dir.path("in/a.obj"), lines[0]["input"]);
    EXPECT_EQ("failed", lines[0]["status"]);
    EXPECT_EQ(3, lines[0]["code"]);
    EXPECT_NE("", lines[0]["reason"]);
    EXPECT_EQ("ok", lines[1]["status"]);
    EXPECT_EQ(dir.path("out/cube.obj"), lines[1]["output"]);
    EXPECT_GE(lines[1]["charts"], 1);
    EXPECT_TRUE(lines[3]["summary"]);
    EXPECT_EQ(2, lines[3]["done"]);
    EXPECT_EQ(1, lines[3]["failed"]);
}

TEST_F(BatchProgram, DryRunListsAndWritesNothing) {
    const Ended ended = batch({"--dry_run"});
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ(dir.path("in/cube.obj") + " -> " + dir.path("out/cube.obj") + "\n" +
                  dir.path("in/sub/dome.obj") + " -> " + dir.path("out/sub/dome.obj") + "\n",
              ended.out);
    EXPECT_NE(ended.err.npos, ended.err.find("2 of 2 to do; nothing was written"));
    EXPECT_FALSE(dir.has("out"));
}

TEST_F(BatchProgram, CollidingNamesAreRefusedBeforeAnythingRuns) {
    std::filesystem::create_directories(dir.path("more"));
    dir.put("more/cube.obj", test::k_cube);
    const Ended ended = batch({dir.path("more")});
    EXPECT_EQ(2, ended.code);
    EXPECT_NE(ended.err.npos,
              ended.err.find("would both write " + dir.path("out/cube.obj") +
                             "; batches of their own keep them apart; nothing was done"))
        << ended.err;
    EXPECT_FALSE(dir.has("out"));
}

/// How many meshes a second run with --skip_existing does again.
TEST_F(BatchProgram, ThreadsDoNotChangeTheResult) {
    for (const char* threads : {"1", "3"})
        ASSERT_EQ(0, test::run({"unwrap", dir.path("in/sub/dome.obj"), "--threads", threads, "-o",
                                dir.path(threads + std::string(".obj"))})
                         .code);
    EXPECT_EQ(dir.get("1.obj"), dir.get("3.obj"));
}

class SkipExisting : public BatchProgram {
protected:
    SkipExisting() { EXPECT_EQ(0, batch({"--jobs", "1"}).code); }
    int done_again(Words words = {}) {
        words.insert(words.end(), {"--skip_existing", "--json_lines", "--jobs", "1"});
        return lines_of(batch(words)).back()["done"];
    }
};

TEST_F(SkipExisting, NothingIfNothingChanged) {
    const auto before = files("out");
    EXPECT_EQ(0, done_again());
    EXPECT_EQ(before, files("out"));
}

TEST_F(SkipExisting, AMeshThatChanged) {
    dir.put("in/cube.obj", test::k_cube + "\n");
    EXPECT_EQ(1, done_again());
}

TEST_F(SkipExisting, AllIfASettingChanged) {
    EXPECT_EQ(2, done_again({"--padding", "3"}));
    EXPECT_EQ(0, done_again({"--padding", "3"}));
}

TEST_F(SkipExisting, AResultThatIsGoneOrChanged) {
    std::filesystem::remove(dir.path("out/cube.obj"));
    EXPECT_EQ(1, done_again());
    dir.put("out/cube.obj", test::k_cube);
    EXPECT_EQ(1, done_again());
}

TEST_F(SkipExisting, AReportThatIsGoneOrDamaged) {
    std::filesystem::remove(dir.path("out/cube.json"));
    EXPECT_EQ(1, done_again());
    for (const char* text : {"", "[]", "{}", R"({"hashes": 1})"}) {
        dir.put("out/cube.json", text);
        EXPECT_EQ(1, done_again()) << text;
    }
}

TEST_F(SkipExisting, AReportOfAnotherVersion) {
    Json report = Json::parse(dir.get("out/cube.json"));
    report["program"] = "tessora 0.1";
    dir.put("out/cube.json", report.dump());
    EXPECT_EQ(1, done_again());
}

/// A triangle, in/t.gltf: three positions in a file of their own.
void put_triangle(const test::Scratch& dir) {
    const float places[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    dir.put("in/t.bin", std::string(reinterpret_cast<const char*>(places), sizeof places));
    dir.put("in/t.gltf", R"({"asset": {"version": "2.0"},
        "buffers": [{"uri": "t.bin", "byteLength": 36}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}]})");
}

TEST_F(SkipExisting, AGltfWhoseBufferChanged) {
    put_triangle(dir);
    const Words words = {"--format", "obj"};
    EXPECT_EQ(1, done_again(words));
    EXPECT_TRUE(dir.has("out/t.obj"));
    EXPECT_EQ(0, done_again(words));
    dir.put("in/t.bin", std::string(36, '\1'));
    EXPECT_EQ(1, done_again(words));
}

TEST_F(BatchProgram, ResultThatItsFormatForbidsFailsBeforeTheWork) {
    put_triangle(dir);
    const Ended ended = batch({});
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("code 2: " + dir.path("out/t.gltf") + ": " +
                                             dir.path("in/t.gltf") + " names files beside it"))
        << ended.err;
}

TEST_F(SkipExisting, NoneIfTheSetOfCoordinatesIsAnother) {
    put_triangle(dir);
    const Words words = {"--format", "glb"};
    EXPECT_EQ(3, done_again(words));
    EXPECT_EQ(0, done_again(words));
    EXPECT_EQ(3, done_again({"--format", "glb", "--ply_uvs", "vertex"}));
}

TEST_F(SkipExisting, AllIfPicturesAreWantedForTheFirstTime) {
    EXPECT_EQ(2, done_again({"--beside"}));
    EXPECT_EQ(0, done_again({"--beside"}));
}

TEST_F(SkipExisting, AFailureIsTriedAgain) {
    dir.put("in/a.obj", "f 1 2 3\n");
    EXPECT_EQ(1, batch({"--skip_existing"}).code);
    dir.put("in/a.obj", test::k_cube);
    EXPECT_EQ(1, done_again());
}

TEST_F(SkipExisting, NothingAfterInPlace) {
    const Words words = {"unwrap", dir.path("in"), "--in_place", "--skip_existing", "--json_lines"};
    EXPECT_EQ(2, lines_of(test::run(words)).back()["done"]);
    EXPECT_EQ(0, lines_of(test::run(words)).back()["done"]);
}

TEST_F(BatchProgram, TimeLimitGivesUpAMesh) {
    dir.put("in/cube.obj", test::cube_grid(150));
    const Ended ended = batch({"--jobs", "1", "--time_limit", "0.2"});
    EXPECT_EQ(1, ended.code);
    const Json report = Json::parse(dir.get("out/cube.json"));
    EXPECT_EQ(4, report["code"]);
    EXPECT_EQ(dir.path("in/cube.obj") + ": not finished within the time limit of 0.2 s",
              report["reason"]);
    EXPECT_FALSE(dir.has("out/cube.obj"));
}

TEST_F(BatchProgram, CrashedWorkerCostsOneMesh) {
    put_cubes(3);
    dir.put("in/a.obj", test::cube_grid(150));
    Process process({"unwrap", dir.path("in"), "--out_dir", dir.path("out"), "--jobs", "1"});
    std::vector<pid_t> workers;
    while (workers.empty())
        workers = children_of(process.id());
    ::kill(workers[0], SIGKILL);
    const Ended ended = process.wait();
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("code 70: " + dir.path("in/a.obj") +
                                             ": the process that unwrapped it ended by signal 9"))
        << ended.err;
    EXPECT_EQ(70, Json::parse(dir.get("out/a.json"))["code"]);
    EXPECT_EQ(5u, meshes("out").size());
}

TEST_F(BatchProgram, InterruptEndsInOrderAndASecondRunGoesOn) {
    put_cubes(8);
    dir.put("in/z.obj", test::cube_grid(150));
    for (const int signal : {SIGINT, SIGTERM}) {
        std::filesystem::remove(dir.path("out/c3.obj"));
        Process process({"unwrap", dir.path("in"), "--out_dir", dir.path("out"), "--jobs", "2",
                         "--skip_existing"});
        while (!dir.has("out/c3.obj"))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        process.send(signal);
        const Ended ended = process.wait();
        EXPECT_EQ(128 + signal, ended.code) << ended.err;
        EXPECT_NE(ended.err.npos, ended.err.find("interrupted: the same command with "
                                                 "--skip_existing goes on"))
            << ended.err;
        for (const auto& [name, content] : files("out"))
            EXPECT_EQ(name.npos, name.find(".tmp.")) << name;
    }
    std::filesystem::remove(dir.path("in/z.obj"));
    EXPECT_EQ(0, batch({"--skip_existing"}).code);
    EXPECT_EQ(10u, meshes("out").size());
}

TEST_F(BatchProgram, KilledBatchesAddUpToAnUndisturbedOne) {
    put_cubes(12);
    Words words = {"unwrap", dir.path("in"), "--jobs", "2", "--skip_existing"};
    Words undisturbed = words;
    undisturbed.insert(undisturbed.end(), {"--out_dir", dir.path("whole")});
    ASSERT_EQ(0, test::run(undisturbed).code);
    const auto expected = meshes("whole");
    words.insert(words.end(), {"--out_dir", dir.path("out")});
    for (int kill = 1; kill <= 4; ++kill) {
        Process process(words);
        std::this_thread::sleep_for(std::chrono::milliseconds(37 * kill));
        process.send(SIGKILL);
        process.wait();
        if (!dir.has("out"))
            continue;
        for (const auto& [name, content] : meshes("out")) // whole or absent, at any moment
            EXPECT_EQ(expected.at(name), content) << name;
    }
    ASSERT_EQ(0, test::run(words).code);
    EXPECT_EQ(expected, meshes("out"));
}

TEST_F(BatchProgram, WorkersEndWithTheBatch) {
    dir.put("in/cube.obj", test::cube_grid(200));
    Process process({"unwrap", dir.path("in"), "--out_dir", dir.path("out"), "--jobs", "1"});
    std::vector<pid_t> workers;
    while (workers.empty())
        workers = children_of(process.id());
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    process.send(SIGKILL);
    process.wait();
    // The worker is nobody's child now; whoever collects it, it must not go on.
    bool is_alive = true;
    for (int i = 0; i < 12000 && is_alive; ++i) { // a minute at least
        std::ifstream status("/proc/" + std::to_string(workers[0]) + "/stat");
        std::string id, name, state;
        is_alive = bool(status >> id >> name >> state) && state != "Z";
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_FALSE(is_alive);
    EXPECT_FALSE(dir.has("out/cube.obj"));
}

TEST_F(BatchProgram, ShardsTogetherAreTheWhole) {
    put_cubes(5);
    EXPECT_EQ(0, batch({"--shard", "0/2"}).code);
    EXPECT_EQ(4u, meshes("out").size());
    EXPECT_EQ(0, batch({"--shard", "1/2"}).code);
    EXPECT_EQ(7u, meshes("out").size());
}

TEST_F(BatchProgram, WarningsNameTheirMesh) {
    dir.put("in/cube.obj", test::k_cube);
    const Ended ended = batch({"--keep_seams"});
    EXPECT_EQ(0, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("tessora: warning: " + dir.path("in/cube.obj") +
                                             ": --keep_seams: the mesh has"))
        << ended.err;
}

TEST_F(BatchProgram, UnwritableOutputFolderIsAFailureOfEachMesh) {
    dir.put("out", "a file");
    const Ended ended = batch({"--jobs", "1"});
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(ended.err.npos,
              ended.err.find("code 7: " + dir.path("out/cube.obj") + ": cannot be written"))
        << ended.err;
}

TEST_F(BatchProgram, NamesDoNotCommandTheTerminal) {
    dir.put("in/red\x1b[31m.obj", "x");
    dir.put("in/blue\xc2\x9b"
            "34m.obj",
            "x");
    dir.put("in/gone\x7f.obj", "x");
    dir.put("in/caf\xc3\xa9\xc2\xb2.obj", "x");
    const Ended ended = batch({});
    EXPECT_EQ(1, ended.code);
    for (const char* shown : {"red?[31m", "blue?34m", "gone?", "caf\xc3\xa9\xc2\xb2"})
        EXPECT_NE(ended.err.npos, ended.err.find(std::string("in/") + shown + ".obj: "))
            << ended.err;
    for (const char* command : {"\x1b", "\xc2\x9b", "\x7f"})
        EXPECT_EQ(ended.err.npos, ended.err.find(command)) << ended.err;
}

TEST_F(BatchProgram, ANameWithALineEndStaysInItsLine) {
    dir.put("in/two\ntessora: lines\r.obj", "x");
    const Ended ended = batch({});
    EXPECT_EQ(1, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find("in/two?tessora: lines?.obj: ")) << ended.err;
    EXPECT_EQ(ended.err.npos, ended.err.find("\ntessora: lines")) << ended.err;
    const Ended planned = batch({"--dry_run"});
    EXPECT_NE(planned.out.npos, planned.out.find("in/two?tessora: lines?.obj -> ")) << planned.out;
}

TEST_F(BatchProgram, FolderThatCannotBeSearchedIsRefused) {
    std::string folder = "in";
    for (int i = 0; i < 40; ++i) // each of them is open while those in it are searched
        folder += "/f";
    std::filesystem::create_directories(dir.path(folder));
    Process::Setup setup;
    setup.open_files = 20;
    const std::string reason = dir.path("in") + ": cannot be searched: Too many open files";
    Ended ended = batch({}, setup);
    EXPECT_EQ(3, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find(reason)) << ended.err;
    EXPECT_FALSE(dir.has("out"));
    ended = test::run({"report", "merge", dir.path("in")}, setup);
    EXPECT_EQ(3, ended.code);
    EXPECT_NE(ended.err.npos, ended.err.find(reason)) << ended.err;
}

#if !defined(__SANITIZE_ADDRESS__) // the sanitizer's shadow memory exceeds any limit
TEST_F(BatchProgram, MeshThatMemoryDoesNotSufficeForFailsAlone) {
    Process::Setup setup;
    setup.memory_limit = 200ul << 20; // less than a picture of 8192 x 8192 texels takes
    const Ended ended = batch({"--beside", "--width", "8192", "--height", "8192"}, setup);
    EXPECT_EQ(1, ended.code) << ended.err;
    EXPECT_NE(ended.err.npos, ended.err.find("code 4: not enough memory; no result was written"))
        << ended.err;
    EXPECT_NE(ended.err.npos, ended.err.find("0 done, 0 up to date, 2 failed")) << ended.err;
    EXPECT_TRUE(meshes("out").empty());
}
#endif

TEST_F(BatchProgram, WorkerAnswersWhatIsNoRequest) {
    Process::Setup setup;
    setup.input = "{\n{\"inputs\": 1}\n{\"mesh_follows\": true}";
    const Ended ended = test::run({"worker"}, setup);
    EXPECT_EQ(0, ended.code);
    const std::vector<Json> answers = lines_of(ended);
    ASSERT_EQ(3u, answers.size());
    EXPECT_EQ("the mesh is missing", answers[2]["reason"]);
    EXPECT_EQ("the request is not JSON", answers[0]["reason"]);
    EXPECT_EQ("requests have no 'inputs'", answers[1]["reason"]);
    EXPECT_EQ(2, answers[1]["code"]);
}

} // namespace
