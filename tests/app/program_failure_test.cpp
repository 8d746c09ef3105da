/// Failures of the built program: exit codes, messages and the files left behind.
#include "tests/app/program_fixture.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>

namespace {

using namespace test;

class ProgramFailure : public Program {
protected:
    /// Expects that unwrapping `text` fails with `code`, keeps an older output and writes only the
    /// report, with the same reason as standard error. Returns the reason without the file name.
    std::string expect_refused(const std::string& text, int code, const Words& words = {}) {
        dir.put("bad_uv.obj", "older result");
        const Ended ended = unwrap("bad.obj", text, words);
        EXPECT_EQ(code, ended.code) << ended.err;
        EXPECT_EQ("", ended.out);
        EXPECT_EQ((Names{"bad.obj", "bad.obj.json", "bad_uv.obj"}), dir.names());
        EXPECT_TRUE(dir.get("bad_uv.obj") == "older result");
        EXPECT_TRUE(dir.get("bad.obj") == text);
        const Json json = report("bad.obj");
        EXPECT_EQ("failed", json["status"]);
        EXPECT_EQ(code, json["code"]);
        const std::string reason = json.value("reason", "");
        EXPECT_NE(std::string::npos, ended.err.find("tessora: " + reason + "\n")) << ended.err;
        const std::string prefix = dir.path("bad.obj") + ":";
        EXPECT_EQ(0u, reason.find(prefix)) << reason;
        return reason.substr(std::min(prefix.size(), reason.size()));
    }
    void expect_usage_error(const Words& words, const std::string& sentence) {
        const Ended ended = run(words);
        EXPECT_EQ(2, ended.code);
        EXPECT_EQ("", ended.out);
        EXPECT_EQ(0u, ended.err.find("tessora: " + sentence)) << ended.err;
    }
};

// Usage ---------------------------------------------------------------------------------------

TEST_F(ProgramFailure, NoCommandIsAUsageErrorThatPrintsTheHelp) {
    const Ended ended = run({});
    EXPECT_EQ(2, ended.code);
    EXPECT_EQ("", ended.out);
    EXPECT_NE(std::string::npos, ended.err.find("usage: tessora COMMAND"));
}

TEST_F(ProgramFailure, UnknownCommandIsAUsageError) {
    expect_usage_error({"unrwap", "m.obj"}, "unknown command unrwap; did you mean unwrap?");
    expect_usage_error({"m.obj"}, "unknown command m.obj; did you mean 'tessora unwrap m.obj'?");
    expect_usage_error({"frobnicate"}, "unknown command frobnicate\nsee 'tessora --help'");
}

TEST_F(ProgramFailure, InvalidOptionIsAUsageError) {
    expect_usage_error({"unwrap"}, "which mesh? unwrap needs an INPUT file");
    expect_usage_error({"unwrap", "m.obj", "--paddin", "2"},
                       "unknown option --paddin; did you mean --padding?");
    expect_usage_error({"unwrap", "m.obj", "--padding"}, "--padding needs a value: TEXELS");
    expect_usage_error({"unwrap", "m.obj", "--width", "big"},
                       "--width: 'big' is not a whole number");
    expect_usage_error({"unwrap", "m.obj", "-pad", "2"}, "unknown option -pad");
}

TEST_F(ProgramFailure, WordsWithoutAMeaningAreAUsageError) {
    expect_usage_error({"-c", "print 1", "more"}, "-c takes one text; see 'tessora script --help'");
    expect_usage_error({"shell", "more"}, "shell takes no arguments; see 'tessora shell --help'");
    expect_usage_error({"verify", "m.obj", "--tiles", "0"}, "--tiles must be between 1 and 100");
    expect_usage_error({"verify", "m.obj", "--tiles", "2", "--layout", "m.png"},
                       "--layout draws one texture; --tiles has several");
}

TEST_F(ProgramFailure, OutputOverTheInputIsAUsageError) {
    const std::string file = dir.put("cube.obj", k_cube);
    expect_usage_error({"unwrap", file, "-o", file},
                       "the input and the output would be the same file: " + file);
    EXPECT_EQ(k_cube, dir.get("cube.obj"));
}

// Input ---------------------------------------------------------------------------------------

TEST_F(ProgramFailure, MissingInputIsAnInputError) {
    const Ended ended = run({"unwrap", dir.path("none.obj")});
    EXPECT_EQ(3, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("tessora: " + dir.path("none.obj") +
                                                ": cannot be read: No such file or directory"));
    EXPECT_TRUE(dir.names().empty());
}

TEST_F(ProgramFailure, DirectoryAsInputHasNoSingleOutput) {
    const Ended ended = run({"unwrap", dir.root(), "-o", dir.path("x.obj")});
    EXPECT_EQ(2, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("-o names one output; several meshes need"));
    EXPECT_EQ(3, run({"measure", dir.root()}).code);
}

TEST_F(ProgramFailure, OtherMeshFormatsAreInputErrors) {
    const Ended ended = run({"unwrap", dir.put("m.USD", "x"), "-o", dir.path("x.obj")});
    EXPECT_EQ(3, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("m.USD: USD files cannot be read, only OBJ, "));
    EXPECT_NE(std::string::npos, ended.err.find("; this converts it"));
}

TEST_F(ProgramFailure, PolygonsThatAreChangedInsideAreWarnedOf) {
    const std::string points = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 2 1\nv 2 2 -1\n";
    const Ended twice = unwrap("m.obj", points + "f 1 2 3 2 4\n");
    EXPECT_EQ(0, twice.code) << twice.err;
    EXPECT_NE(std::string::npos, twice.err.find("polygons that name a vertex twice: 1; each repeat "
                                                "counts as a vertex of its own"));
    const Ended apart = unwrap("m.obj", points + "f 1 2 3 4\nf 1 3 5\nf 2 4 6\n");
    EXPECT_EQ(0, apart.code) << apart.err;
    EXPECT_NE(std::string::npos, apart.err.find("polygons that other polygons leave no way to "
                                                "divide: 1; each is laid out by itself"));
}

TEST_F(ProgramFailure, FileWithoutAMeshIsAnInputError) {
    EXPECT_EQ(" no mesh in the file: it is empty", expect_refused("", 3));
    EXPECT_EQ(" no mesh in the file: it has neither vertices nor faces",
              expect_refused("# nothing\n\n", 3));
    EXPECT_EQ(" no faces in the file, only 8 vertices", expect_refused(k_cube_vertices, 3));
    EXPECT_EQ("1: no faces in the file: none has three corners or more",
              expect_refused("f 1 2\n" + k_cube_vertices, 3));
    std::string noise;
    uint32_t state = 3;
    for (int i = 0; i < 4096; ++i)
        noise += static_cast<char>((state = state * 1664525u + 1013904223u) >> 24);
    EXPECT_EQ(" this is not an OBJ file: it has neither vertices nor faces",
              expect_refused(noise, 3));
}

TEST_F(ProgramFailure, InvalidNumberIsAnErrorWithItsLine) {
    EXPECT_EQ("9: vertex 9: 'nan' is not a finite number",
              expect_refused(k_cube_vertices + "v 0 nan 0\n" + k_cube_faces, 3));
    EXPECT_EQ("9: vertex 9: '-inf' is not a finite number",
              expect_refused(k_cube_vertices + "v 0 0 -inf\n" + k_cube_faces, 3));
    EXPECT_EQ("9: vertex 9: '1e999' is too large",
              expect_refused(k_cube_vertices + "v 1e999 0 0\n" + k_cube_faces, 3));
    EXPECT_EQ("9: vertex 9: '1,5' is not a number",
              expect_refused(k_cube_vertices + "v 1,5 1 1\n" + k_cube_faces, 3));
    EXPECT_EQ("9: vertex 9 needs three coordinates and has 2",
              expect_refused(k_cube_vertices + "v 1 0", 3));
}

TEST_F(ProgramFailure, InvalidIndexIsAnErrorWithItsLine) {
    EXPECT_EQ("9: face uses vertex 9, but the file has 8",
              expect_refused(k_cube_vertices + "f 1 2 9\n", 3));
    EXPECT_EQ("9: face uses vertex 0, but numbers start at 1",
              expect_refused(k_cube_vertices + "f 0 1 2\n", 3));
    EXPECT_EQ("9: face uses vertex '-9', which the file does not have (8 up to this line)",
              expect_refused(k_cube_vertices + "f -9 1 2\n", 3));
    EXPECT_EQ("9: face uses vertex '4294967297', which the file does not have (8 up to this line)",
              expect_refused(k_cube_vertices + "f 4294967297 2 3\n", 3));
    EXPECT_EQ("10: face uses texture coordinate 5, but the file has 1",
              expect_refused(k_cube_vertices + "vt 0 0\nf 1/5 2/1 3/1\n", 3));
}

// Output --------------------------------------------------------------------------------------

TEST_F(ProgramFailure, UnwritableOutputIsFoundBeforeTheUnwrap) {
    const std::string file = dir.put("cube.obj", k_cube), bad = dir.path("none/x");
    for (const Words& words : {Words{"-o", bad}, Words{"--report", bad}, Words{"--layout", bad}}) {
        Words all = {"unwrap", file};
        all.insert(all.end(), words.begin(), words.end());
        const Ended ended = run(all);
        EXPECT_EQ(7, ended.code);
        EXPECT_NE(
            std::string::npos,
            ended.err.find("tessora: " + bad + ": cannot be written: No such file or directory\n"))
            << ended.err;
        EXPECT_EQ(std::string::npos, ended.err.find("extracting"));
        EXPECT_EQ(Names{"cube.obj"}, dir.names());
    }
}

TEST_F(ProgramFailure, FullDiskIsAnOutputError) {
    const std::string file = dir.put("cube.obj", k_cube);
    const Ended ended = run({"unwrap", file, "-o", "/dev/full"});
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(std::string::npos,
              ended.err.find("/dev/full: cannot be written: No space left on device"));
}

TEST_F(ProgramFailure, ReachingTheFileSizeLimitLeavesNoPartialFile) {
    Process::Setup setup;
    setup.file_limit = 4096;
    const std::string file = dir.put("sheet.obj", dome(20));
    const Ended ended = run({"unwrap", file}, setup);
    EXPECT_EQ(7, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("sheet_uv.obj: cannot be written: File too large"));
    EXPECT_EQ(Names{"sheet.obj"}, dir.names());
}

// Limits --------------------------------------------------------------------------------------

#if !defined(__SANITIZE_ADDRESS__) // the sanitizer's shadow memory exceeds any limit
TEST_F(ProgramFailure, DeviceWithoutEndIsReadNoFurtherThanAllowed) {
    Process::Setup setup;
    setup.memory_limit = 128ul << 20; // of a device, no more than 256 MiB are read in any case
    const Ended ended =
        run({"unwrap", "/dev/zero", "-o", dir.path("out.obj"), "--max_input", "0.001"}, setup);
    EXPECT_EQ(4, ended.code);
    EXPECT_NE(ended.err.npos,
              ended.err.find("/dev/zero: more than 1073741 bytes; --max_input allows more"))
        << ended.err;
}

TEST_F(ProgramFailure, RunningOutOfMemoryForAPictureLeavesNoResult) {
    Process::Setup setup;
    setup.memory_limit = 200ul << 20; // less than a picture of 8192 x 8192 texels takes
    const Ended ended = run({"unwrap", dir.put("cube.obj", k_cube), "--layout", dir.path("l.png"),
                             "--width", "8192", "--height", "8192"},
                            setup);
    EXPECT_EQ(4, ended.code);
    EXPECT_NE(std::string::npos,
              ended.err.find("tessora: not enough memory; no result was written\n"))
        << ended.err;
    EXPECT_EQ(Names{"cube.obj"}, dir.names());
}

TEST_F(ProgramFailure, DeviceWithoutEndIsRefusedInEveryPlaceOfAFile) {
    Process::Setup setup;
    setup.memory_limit = 2ul << 30;
    const std::string cube = dir.put("cube.obj", k_cube), zero = "/dev/zero";
    const std::string preset = dir.path("zero.json");
    std::filesystem::create_symlink(zero, preset);
    for (const Words& words :
         {Words{"unwrap", zero, "-o", dir.path("out.obj")}, Words{"script", zero},
          Words{"-c", "source \"/dev/zero\""},
          Words{"-c", "file -open -force -type \"mayaAscii\" \"/dev/zero\""},
          Words{"-c", "file -import -type \"OBJ\" \"/dev/zero\""},
          Words{"unwrap", cube, "--preset", preset}, Words{"unwrap", "--list", zero},
          Words{"report", "merge", zero, "-o", dir.path("page")}}) {
        const Ended ended = run(words, setup);
        EXPECT_NE(0, ended.code) << words[0] << " " << words[1];
        EXPECT_NE(ended.err.npos, ended.err.find(": more than 268435456 bytes"))
            << words[0] << " " << words[1] << ": " << ended.err;
    }
}

TEST_F(ProgramFailure, SceneStaysIfAnotherCannotBeRead) {
    const Ended ended = run({"-c", "polyCube -name \"box\"; catchQuiet(`file -open -force -type "
                                   "\"mayaAscii\" \"/\"`); print (`objExists \"box\"`);"});
    EXPECT_EQ("1", ended.out);
}

TEST_F(ProgramFailure, RunningOutOfMemoryReturnsTheLimitCode) {
    Process::Setup setup;
    setup.memory_limit = 64ul << 20;
    const std::string file = dir.put("long.obj", "#" + std::string(80 << 20, 'x') + "\n" + k_cube);
    const Ended ended = run({"unwrap", file}, setup);
    EXPECT_EQ(4, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("long.obj: not enough memory for the file"))
        << ended.err;
    EXPECT_EQ(Names{"long.obj"}, dir.names());
}
#endif

#if !defined(__SANITIZE_ADDRESS__) // the sanitizer has an allocator of its own
TEST_F(ProgramFailure, RunningOutOfMemoryInThePluginReturnsTheLimitCode) {
    const int triangles = 800; // of the dome
    ::setenv("LD_PRELOAD", TESSORA_FAILING_MALLOC, 1);
    ::setenv("TESSORA_FAIL_SIZE", std::to_string(4 * 4 * 3 * triangles).c_str(), 1);
    std::string messages;
    for (const char* call : {"1", "2", "3", "4"}) {
        ::setenv("TESSORA_FAIL_CALL", call, 1);
        const Ended ended = run({"unwrap", dir.put("dome.obj", dome(20))});
        messages += ended.err;
        const bool said = ended.err.find("ut of memory") != std::string::npos;
        EXPECT_EQ(said ? 4 : 0, ended.code) << ended.err;
    }
    for (const char* name : {"LD_PRELOAD", "TESSORA_FAIL_SIZE", "TESSORA_FAIL_CALL"})
        ::unsetenv(name);
    EXPECT_NE(std::string::npos, messages.find("Out of memory, can not generate false edges"))
        << messages;
}
#endif

#if !defined(__SANITIZE_ADDRESS__) // the sanitizer has an allocator of its own
class FailingAllocation : public ProgramFailure {
protected:
    ~FailingAllocation() override {
        for (const char* name : {"LD_PRELOAD", "TESSORA_FAIL_NEW", "TESSORA_FAIL_NEW_SIZE"})
            ::unsetenv(name);
    }
    /// Runs the program again and again, each time with a later one of its larger allocations
    /// failing, until none fails. Whatever fails, the program says so, ends with the code of limits
    /// or with `other`, and leaves no file. Returns all that was said.
    std::string fail_each(const Words& words, int other = 4) {
        const Names before = dir.names();
        ::setenv("LD_PRELOAD", TESSORA_FAILING_MALLOC, 1);
        ::setenv("TESSORA_FAIL_NEW_SIZE", "8192", 1);
        std::string said;
        for (int call = 1; call < 10000; call += 1 + call / 24) {
            ::setenv("TESSORA_FAIL_NEW", std::to_string(call).c_str(), 1);
            const Ended ended = run(words);
            if (ended.err.find("allocation failed") == ended.err.npos)
                break; // there are no more
            said += ended.err;
            if (ended.code == 0)
                continue; // it could do without
            EXPECT_TRUE(ended.code == 4 || ended.code == other) << ended.code << ended.err;
            if (ended.err.find("E_OUTOFMEMORY") != ended.err.npos) {
                EXPECT_EQ(4, ended.code);
            }
            const size_t end_of_line = ended.err.find('\n', ended.err.find("allocation failed"));
            EXPECT_LT(end_of_line + 1, ended.err.size()) << "what follows is not said";
            EXPECT_EQ(before, dir.names()) << ended.err;
        }
        return said;
    }
    static void expect_said(const std::string& sentence, const std::string& said) {
        EXPECT_NE(std::string::npos, said.find(sentence)) << sentence;
    }
};

TEST_F(FailingAllocation, OfUnwrapLeavesNoResult) {
    // Code 5: the plug-in has sentences of its own, which do not tell why.
    const std::string said =
        fail_each({"unwrap", dir.put("m.obj", dome(20)), "-o", "/dev/null", "--align"}, 5);
    expect_said("m.obj: not enough memory for the file", said);
    expect_said("m.obj: not enough memory for the mesh", said);
    expect_said("m.obj: memory ran out", said);
    expect_said("m.obj: not enough memory to pack the charts", said);
    expect_said("not enough memory; no result was written", said);
}

TEST_F(FailingAllocation, OfPackLeavesNoResult) {
    result(dome(20));
    const std::string said = fail_each({"pack", dir.path("result.obj"), "-o", dir.path("p.obj")});
    expect_said("result.obj: not enough memory for the mesh", said);
    expect_said("not enough memory to pack the charts", said);
}

TEST_F(FailingAllocation, OfScriptsIsAnErrorOfTheScript) {
    const std::string said =
        fail_each({"-c", "polySphere -sx 40 -sy 40; polyLayoutUV pSphere1;"}, 1);
    expect_said("polyLayoutUV: not enough memory for the mesh", said);
    expect_said("polyLayoutUV: The charts cannot be packed: memory ran out.", said);
}

TEST_F(FailingAllocation, OfVerifyLeavesNoPicture) {
    result(dome(20));
    const std::string said =
        fail_each({"verify", dir.path("result.obj"), "--layout", dir.path("l.png")}, 7);
    expect_said("result.obj: not enough memory for the mesh", said);
    expect_said("the picture cannot be made: not enough memory", said);
}
#endif

#if !defined(__SANITIZE_ADDRESS__) // whose library must come first
TEST_F(ProgramFailure, LayoutThatBreaksAPromiseIsNotWritten) {
    ::setenv("LD_PRELOAD", TESSORA_SPOILING_ATLAS, 1);
    const std::string reason = expect_refused(k_cube, 6);
    ::unsetenv("LD_PRELOAD");
    EXPECT_EQ(0u, reason.find(" the result is not good enough to be written:\n  ")) << reason;
    EXPECT_NE(std::string::npos, reason.find("12 triangles have no area in the texture")) << reason;
}
#endif

TEST_F(ProgramFailure, TooManyChartsForTheTextureIsAnUnwrapError) {
    const std::string reason = expect_refused(
        cube_grid(4), 5, {"--keep_seams", "--width", "8", "--height", "8", "--padding", "32"});
    EXPECT_NE(std::string::npos, reason.find("charts")) << reason;
    EXPECT_EQ(96, report("bad.obj")["polygons"]);
    EXPECT_EQ(0u, report("bad.obj").count("charts"));
}

// Signals -------------------------------------------------------------------------------------

class ProgramSignal : public Program {
protected:
    /// Starts a long unwrap, sends a signal once its temporary file exists, and checks that the
    /// temporary file is gone and the older output kept.
    Ended interrupted(int signal, int code) {
        dir.put("sheet_uv.obj", "older result");
        const std::string file = dir.put("sheet.obj", dome(300));
        Process process({"unwrap", file, "--beside", "--high_quality"});
        const std::string temporary = "sheet_uv.obj.tessora-tmp." + std::to_string(process.id());
        for (int i = 0; i < 20000 && !dir.has(temporary); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        EXPECT_TRUE(dir.has(temporary));
        process.send(signal);
        const Ended ended = process.wait();
        EXPECT_EQ(code, ended.code) << ended.err;
        EXPECT_EQ((Names{"sheet.obj", "sheet_uv.obj"}), dir.names());
        EXPECT_EQ("older result", dir.get("sheet_uv.obj"));
        return ended;
    }
};

TEST_F(ProgramSignal, InterruptRemovesUnfinishedFiles) {
    const Ended ended = interrupted(SIGINT, 130);
    EXPECT_NE(std::string::npos, ended.err.find("tessora: interrupted"));
}

TEST_F(ProgramSignal, TerminationRemovesUnfinishedFiles) { interrupted(SIGTERM, 143); }

TEST_F(ProgramSignal, AbortReturnsTheCodeOfAnInternalError) {
    const Ended ended = interrupted(SIGABRT, 70);
    EXPECT_NE(std::string::npos, ended.err.find("tessora: internal error"));
}

/// Copies the program to home/bin, with links to its modules in home/lib/tessora, as it is
/// installed.
void install(const Scratch& dir) {
    namespace fs = std::filesystem;
    fs::create_directories(dir.path("home/bin"));
    fs::create_directories(dir.path("home/lib/tessora"));
    fs::copy_file(TESSORA_PROGRAM, dir.path("home/bin/tessora"));
    for (const auto& entry : fs::directory_iterator(fs::path(TESSORA_PROGRAM).parent_path()))
        if (entry.path().extension() == ".so")
            fs::create_symlink(entry.path(),
                               dir.path("home/lib/tessora/") + entry.path().filename().string());
}

Ended run_installed(const Scratch& dir, const std::string& words) {
    const std::string err = dir.path("err");
    const int status =
        std::system(("cd " + dir.root() + " && home/bin/tessora " + words + " 2>" + err).c_str());
    Ended ended;
    ended.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    ended.err = dir.get("err");
    return ended;
}

TEST_F(ProgramFailure, PlugInThatIsNotInstalledIsTold) {
    install(dir);
    std::filesystem::remove(dir.path("home/lib/tessora/tessora.so"));
    dir.put("cube.obj", k_cube);
    const Ended ended = run_installed(dir, "unwrap cube.obj");
    EXPECT_NE(0, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("the plug-in cannot be loaded: ")) << ended.err;
    EXPECT_FALSE(dir.has("cube_uv.obj"));
}

TEST_F(ProgramFailure, CrashInTheLibraryThatReadsAFormatIsAnInputErrorWithTheFilesName) {
    install(dir);
    dir.put("home/lib/tessora/tessora_import", "#!/bin/sh\ncat > /dev/null; kill -SEGV $$\n");
    std::filesystem::permissions(dir.path("home/lib/tessora/tessora_import"),
                                 std::filesystem::perms::all);
    dir.put("bad.fbx", "; FBX 7.4.0 project file\n");
    const Ended ended = run_installed(dir, "unwrap bad.fbx -o bad.obj --report bad.json");
    const std::string reason = "bad.fbx: the library that reads this format ended by signal 11; "
                               "the file is probably damaged";
    EXPECT_EQ(3, ended.code) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("tessora: " + reason + "\n")) << ended.err;
    EXPECT_EQ(reason, Json::parse(dir.get("bad.json"))["reason"]);
    EXPECT_FALSE(dir.has("bad.obj"));
}

TEST_F(ProgramFailure, ClosedPipeIsAWriteError) {
    Process::Setup setup;
    setup.closed_output = true;
    const Ended ended = run({"unwrap", dir.put("cube.obj", k_cube), "-o", "-"}, setup);
    EXPECT_EQ(7, ended.code) << ended.signal;
    EXPECT_NE(std::string::npos, ended.err.find("-: cannot be written: Broken pipe"));
}

TEST_F(ProgramFailure, InputOfAnotherFormatIsNamedAlsoWhereTheOutputHasItsName) {
    for (const char* name : {"a.blend", "a.step"}) {
        const std::string file = dir.put(name, "x");
        const Ended ended = run({"unwrap", file});
        EXPECT_EQ(3, ended.code);
        EXPECT_NE(std::string::npos, ended.err.find(file + ": ")) << ended.err;
        EXPECT_NE(std::string::npos, ended.err.find("files cannot be read, only OBJ")) << ended.err;
    }
}

TEST_F(ProgramFailure, TextForAReaderWhoLeftEndsWithoutAWord) {
    Process::Setup setup;
    setup.closed_output = true;
    const Ended ended = run({"--help"}, setup);
    EXPECT_EQ(7, ended.code);
    EXPECT_EQ("", ended.err);
}

TEST_F(ProgramFailure, TextThatCannotBeWrittenIsAnOutputError) {
    Process::Setup setup;
    setup.full_output = true;
    const Ended ended = run({"--help"}, setup);
    EXPECT_EQ(7, ended.code);
    EXPECT_EQ("tessora: standard output cannot be written: No space left on device\n", ended.err);
}

} // namespace
