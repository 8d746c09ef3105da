/// The commands `script`, `-c` and `shell` of the built program, and scenes saved by one process
/// and opened by the next.
#include "tests/app/program_fixture.h"

#include <filesystem>
#include <sstream>

namespace {

using namespace test;

class Script : public Program {
protected:
    Ended script(const std::string& text, Words arguments = {}) {
        arguments.insert(arguments.begin(), {"script", dir.put("script.mel", text)});
        return run(arguments);
    }
    Ended shell(const std::string& input) {
        Process::Setup setup;
        setup.input = input;
        return run({"shell"}, setup);
    }
    /// Runs statements in a new process, expects success, and returns the printed text.
    std::string in_a_process(const std::string& statements) {
        const Ended ended = run({"-c", statements});
        EXPECT_EQ(0, ended.code) << ended.err;
        return ended.out;
    }
    /// `text` without the statements that unwrap nodes echo.
    static std::string without_results(const std::string& text) {
        std::istringstream in(text);
        std::string kept;
        for (std::string line; std::getline(in, line);)
            if (line.compare(0, 8, "setAttr ") != 0)
                kept += line + "\n";
        return kept;
    }
    std::string quoted(const std::string& name) const { return '"' + dir.path(name) + '"'; }
};

TEST_F(Script, ReceivesItsArgumentsInArgv) {
    const Ended ended = script("global string $argv[]; print $argv;", {"one", "two words", "-3"});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ("one\ntwo words\n-3\n", ended.out);
}

TEST_F(Script, QuitSetsTheExitCode) {
    EXPECT_EQ(9, script("quit -exitCode 9; print \"never\";").code);
}

TEST_F(Script, ErrorNamesFileLineAndColumn) {
    const Ended ended = script("print \"before\\n\";\nint $a[2];\n  nonsense;\nprint \"after\";\n");
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("before\n", ended.out);
    EXPECT_NE(std::string::npos,
              ended.err.find("script.mel:3:3: Cannot find procedure \"nonsense\"."))
        << ended.err;
}

TEST_F(Script, SyntaxErrorRunsNothing) {
    const Ended ended = script("print \"before\\n\";\nint $a = ;\n");
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("", ended.out);
    EXPECT_NE(std::string::npos, ended.err.find("script.mel:2:10: Syntax error")) << ended.err;
}

TEST_F(Script, MissingFileIsAnInputError) {
    const Ended ended = run({"script", dir.path("none.mel")});
    EXPECT_EQ(3, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("none.mel")) << ended.err;
}

TEST_F(Script, MissingOrSurplusArgumentsAreUsageErrors) {
    EXPECT_EQ(2, run({"script"}).code);
    EXPECT_EQ(2, run({"-c"}).code);
    EXPECT_EQ(2, run({"shell", "surplus"}).code);
}

TEST_F(Script, UnwrapsAndExports) {
    const Ended ended =
        script("global string $argv[]; loadPlugin tessora; polyTorus -n ring; tessora -pad 3; "
               "file -f -exportAll -type \"OBJexport\" $argv[0];",
               {dir.path("ring.obj")});
    EXPECT_EQ(0, ended.code) << ended.err;
    expect_unwrapped("ring.obj");
}

TEST_F(Script, UnwrapWhoseHistoryIsGoneIsToldWithoutFigures) {
    const Ended ended = shell("loadPlugin tessora; polyCube -n box; tessora; delete -ch;\n");
    EXPECT_NE(std::string::npos,
              ended.out.find("// boxShape: unwrapped, without a node in its history\n"))
        << ended.out;
}

TEST_F(Script, ShellTellsWhatBecameOfAnUnwrap) {
    const Ended ended = shell("loadPlugin tessora; polyCube -n box;\ntessora -pad 40 -cr 3;\n");
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_NE(std::string::npos, ended.out.find("// tessora_node1: ")) << ended.out;
    EXPECT_NE(std::string::npos, ended.out.find(", on boxShape\n")) << ended.out;
    EXPECT_NE(std::string::npos, ended.err.find("tessora: -padding 40 counts as 32.")) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("tessora: -charts is stored, but has no effect."))
        << ended.err;
}

TEST_F(Script, ShellTellsThatNothingIsSelected) {
    const Ended ended = shell("loadPlugin tessora;\ntessora;\n");
    EXPECT_NE(std::string::npos, ended.err.find("No mesh is selected")) << ended.err;
}

TEST_F(Script, ShellContinuesAfterAnErrorAndReturnsOneAtTheEnd) {
    const Ended ended = shell("nonsense;\nprint \"still here\\n\";\n");
    EXPECT_EQ(1, ended.code);
    EXPECT_EQ("still here\n", ended.out);
    EXPECT_NE(std::string::npos, ended.err.find("nonsense")) << ended.err;
}

TEST_F(Script, ShellStatementsMaySpanLines) {
    EXPECT_EQ("3\n5\n", shell("for ($i = 1; $i < 3; $i++) {\nint $odd = 1 + 2 * $i;\n"
                              "print ($odd + \"\\n\");\n}\n")
                            .out);
}

TEST_F(Script, ShellEndsWithQuit) {
    const Ended ended = shell("quit -exitCode 4;\nprint \"never\";\n");
    EXPECT_EQ(4, ended.code);
    EXPECT_EQ("", ended.out);
}

TEST_F(Script, SavedSceneOfATweakedUnwrapComputesTheSameUvsInANewProcess) {
    in_a_process("loadPlugin tessora; polySphere -n ball -sx 16 -sy 12; "
                 "move -r 0.1 0 0.05 ball.vtx[20]; tessora -pad 4 -stretch 0.05; "
                 "dgeval ballShape.outMesh; file -f -exportAll -type \"OBJexport\" " +
                 quoted("before.obj") + "; file -rename " + quoted("ball.ma") + "; file -save;");
    in_a_process("file -f -open " + quoted("ball.ma") +
                 "; setAttr tessora_node1.Skip_compute 0; dgeval ballShape.outMesh; "
                 "file -f -exportAll -type \"OBJexport\" " +
                 quoted("after.obj") + ";");
    expect_unwrapped("before.obj");
    EXPECT_EQ(dir.get("before.obj"), dir.get("after.obj"));
}

TEST_F(Script, UnknownNodesAreSavedUnchangedByANewProcess) {
    const std::string unknown = "createNode strangeLocator -n \"marker1\";\n"
                                "\taddAttr -ci true -sn \"mk\" -ln \"mark\" -at \"double\";\n"
                                "\tsetAttr \".mk\" 2.5;\n"
                                "\tsetAttr \".odd[0:2]\" -type \"strangeArray\" 1 \"two\" 3;\n";
    dir.put("old.ma", "//Maya ASCII 2008 scene\nrequires maya \"2008\";\n" + unknown +
                          "createNode transform -n \"known\";\n// End of old.ma\n");
    in_a_process("file -f -open " + quoted("old.ma") + "; file -rename " + quoted("new.ma") +
                 "; file -save;");
    const std::string saved = dir.get("new.ma");
    std::istringstream lines(unknown);
    for (std::string line; std::getline(lines, line);)
        EXPECT_NE(std::string::npos, saved.find(line + "\n")) << line << "\n" << saved;
}

TEST_F(Script, KeptSettingsDoNotChangeWhenTheSceneIsSavedAgain) {
    dir.put("0.ma",
            "//Maya ASCII 2008 scene\ncreateNode transform -n \"known\";\n"
            "\tsetAttr \".tx\" \"no\"\n\t\t\"number\";\n"
            "\tsetAttr -k off \".unknown\";\n"
            "createNode strange -n \"odd\";\n\tsetAttr \".text\" -type \"string\"\n\t\t\"x\";\n"
            "select -ne :missing;\n\tsetAttr \".o\" 3;\n");
    for (const int i : {0, 1, 2})
        in_a_process("file -f -open " + quoted(std::to_string(i) + ".ma") + "; file -rename " +
                     quoted(std::to_string(i + 1) + ".ma") + "; file -save;");
    const auto body = [&](const std::string& name) {
        const std::string text = dir.get(name);
        return text.substr(text.find("requires"), text.find("// End of") - text.find("requires"));
    };
    EXPECT_NE(std::string::npos, body("1.ma").find("\n\t\t\"number\";")) << body("1.ma");
    EXPECT_EQ(body("1.ma"), body("2.ma"));
    EXPECT_EQ(body("2.ma"), body("3.ma"));
}

/// A scene that requires a plug-in by this text.
std::string scene_that_requires(const std::string& name) {
    return "//Maya ASCII 2008 scene\nrequires maya \"2008\";\nrequires \"" + name +
           "\" \"1.0\";\ncreateNode transform -n \"rest\";\n";
}

TEST_F(Script, SceneDoesNotLoadLibrariesFromOutsideTheProgramsOwnFolder) {
    std::filesystem::copy_file(TESSORA_FOREIGN_PLUGIN, dir.path("foreign.so"));
    ::setenv("TESSORA_TEST_TRACE", dir.path("trace").c_str(), 1);
    Process::Setup setup;
    setup.directory = dir.root();
    for (const std::string& name :
         {dir.path("foreign.so"), dir.path("foreign"), std::string("./foreign"),
          std::string("foreign"), std::string("foreign.so")}) {
        dir.put("scene.ma", scene_that_requires(name));
        const Ended ended =
            run({"-c", "file -f -open \"scene.ma\"; print(`objExists rest`);"}, setup);
        EXPECT_EQ(0, ended.code) << ended.err;
        EXPECT_EQ("1", ended.out.substr(0, 1)) << name;
        EXPECT_FALSE(dir.has("trace")) << name;
        EXPECT_NE(std::string::npos, ended.err.find("scene.ma:3:1: The plug-in \"" + name + "\""))
            << ended.err;
    }
    // Naming a file to loadPlugin is the user's own act.
    run({"-c", "loadPlugin \"" + dir.path("foreign.so") + "\";"}, setup);
    EXPECT_TRUE(dir.has("trace"));
    ::unsetenv("TESSORA_TEST_TRACE");
}

TEST_F(Script, SceneLoadsThePluginFromTheProgramsOwnFolder) {
    dir.put("scene.ma", scene_that_requires("tessora"));
    EXPECT_EQ("1", in_a_process("file -f -open " + quoted("scene.ma") +
                                "; print(`pluginInfo -q -loaded tessora`);")
                       .substr(0, 1));
}

TEST_F(Script, RunawayRecursionIsAnErrorHoweverSmallTheStack) {
    dir.put("deep.mel", "global proc int f(int $n) { return $n <= 0 ? 0 : 1 + f($n - 1); }\n"
                        "print(catch(f(1000)) + \"\\n\");\n"
                        "string $nested = \"1\";\n"
                        "for ($i = 0; $i < 150; ++$i) $nested = \"(1 + \" + $nested + \")\";\n"
                        "catch(eval($nested));\nprint \"alive\\n\";\n");
#ifdef __SANITIZE_ADDRESS__
    const std::vector<unsigned long> sizes = {2048, 8192}; // its frames are larger
#else
    const std::vector<unsigned long> sizes = {128, 256, 512, 1024, 8192};
#endif
    for (const unsigned long kilobytes : sizes) {
        Process::Setup setup;
        setup.stack_limit = kilobytes * 1024;
        const Ended ended = run({"script", dir.path("deep.mel")}, setup);
        EXPECT_EQ(0, ended.code) << kilobytes << " kB, signal " << ended.signal;
        EXPECT_EQ("1\nalive\n", ended.out) << kilobytes << " kB";
        EXPECT_NE(std::string::npos, ended.err.find("ested too deeply")) << ended.err;
    }
}

const char* const k_furnished = "# made by hand\nmtllib wood.mtl\no chair\nv 0 0 0\nv 1 0 0\n"
                                "v 1 1 0 0.5 0.5 0.5\nv 0 1 0\nvn 0 0 1\ng seat\nusemtl oak\ns 1\n"
                                "f 1//1 2//1 3//1 4//1\n# end\n";

/// The lines of a file without texture coordinates: `vt` lines dropped, faces reduced to their
/// vertices and normals.
std::vector<std::string> other_lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.compare(0, 3, "vt ") == 0)
            continue;
        std::string kept;
        for (size_t i = 0; i < line.size(); ++i)
            if (line[0] != 'f' || line[i] != '/')
                kept += line[i];
            else if (line[i + 1] != '/') // the texture index
                while (i + 1 < line.size() && line[i + 1] != '/' && line[i + 1] != ' ')
                    ++i;
        lines.push_back(kept);
    }
    return lines;
}

TEST_F(Script, ExportKeepsAllLinesOfAnImportedMesh) {
    dir.put("chair.obj", k_furnished);
    for (const std::string flag : {"-exportAll", "-exportSelected"}) {
        in_a_process("file -import " + quoted("chair.obj") + "; file -f " + flag + " " +
                     quoted("plain.obj") + "; loadPlugin tessora; tessora; file -f " + flag + " " +
                     quoted("out.obj") + ";");
        EXPECT_EQ(k_furnished, dir.get("plain.obj")) << flag;
        EXPECT_EQ(other_lines(k_furnished), other_lines(dir.get("out.obj"))) << dir.get("out.obj");
        EXPECT_NE(std::string::npos, dir.get("out.obj").find("\nvt ")) << flag;
        expect_unwrapped("out.obj");
    }
    EXPECT_EQ(0, run({"unwrap", dir.path("chair.obj"), "-o", dir.path("unwrapped.obj")}).code);
    EXPECT_EQ(other_lines(dir.get("unwrapped.obj")), other_lines(dir.get("out.obj")));
}

TEST_F(Script, SceneKeepsAllLinesOfAnImportedMesh) {
    dir.put("chair.obj", k_furnished);
    in_a_process("file -import " + quoted("chair.obj") +
                 "; loadPlugin tessora; tessora; file -rename " + quoted("room.ma") +
                 "; file -save; file -f -exportAll " + quoted("first.obj") + ";");
    in_a_process("file -open " + quoted("room.ma") + "; file -rename " + quoted("again.ma") +
                 "; file -save;");
    in_a_process("file -open " + quoted("again.ma") + "; file -f -exportAll " + quoted("out.obj") +
                 ";");
    EXPECT_EQ(other_lines(k_furnished), other_lines(dir.get("out.obj"))) << dir.get("out.obj");
    EXPECT_EQ(dir.get("first.obj"), dir.get("out.obj"));
}

/// A script in the way of an artist who cuts a mesh by hand, and what the steps leave behind. $work
/// is the folder.
const char* const k_artist = R"(
proc float[] uvs() { return `polyEditUV -q model.map[*]`; }
proc string same(float $a[], float $b[]) {
    if (size($a) != size($b))
        return "other\n";
    for ($i = 0; $i < size($a); $i++)
        if ($a[$i] != $b[$i])
            return "other\n";
    return "same\n";
}
global string $argv[];
loadPlugin tessora;
file -open ($argv[0] + "/model.obj");
float $file[] = uvs();
polyMapSew model.e[*];
polyMapCut `polySelect -ns -ass -el 0 model`;
polyMapCut `polySelect -ns -ass -el 64 model`;
polyMapCut `polySelect -ns -ass -sep 0 64 model`;
select model;
tessora -keep_seams on -stretch 1;
print ("charts " + `polyEvaluate -us model` + " " + `getAttr tessora_node1.Charts_result` + "\n");
polyEditUV -u 0.01 -a 90 -pu 0.5 -pv 0.5 `polyListComponentConversion -toUV -uvShell model.f[0]`;
polyLayoutUV -gutter 4 -tw 1024 -th 1024 model;
print ("charts " + `polyEvaluate -us model` + "\n");
file -rename ($argv[0] + "/model.ma");
file -save;
file -f -exportAll ($argv[0] + "/saved.obj");
int $steps = 0;
while (`undoInfo -q -un` != "" && $steps++ < 100)
    undo;
print (same($file, uvs()));
print ("history " + size(`listHistory model`) + "\n");
file -f -exportAll ($argv[0] + "/undone.obj");
)";

TEST_F(Script, ArtistCutsUnwrapsMovesPacksSavesAndUndoes) {
    in_a_process("polyCylinder -sx 16 -sy 4 -n model; file -f -exportAll " + quoted("plain.obj") +
                 ";");
    const std::string plain = dir.get("plain.obj");
    const size_t half = plain.find("\nf ", plain.size() * 3 / 4) + 1;
    dir.put("model.obj", "mtllib wood.mtl\nusemtl oak\n" + plain.substr(0, half) + "usemtl cork\n" +
                             plain.substr(half));
    const Ended ended = script(k_artist, {dir.path("")});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ("charts 3 3\ncharts 3\nsame\nhistory 1\n", without_results(ended.out));
    EXPECT_EQ(dir.get("model.obj"), dir.get("undone.obj"));
    in_a_process("file -open " + quoted("model.ma") + "; file -f -exportAll " +
                 quoted("reopened.obj") + ";");
    EXPECT_EQ(dir.get("saved.obj"), dir.get("reopened.obj"));
    EXPECT_EQ(other_lines(dir.get("model.obj")), other_lines(dir.get("reopened.obj")));
    const Ended verified = run({"verify", dir.path("reopened.obj"), "--padding", "4", "--width",
                                "1024", "--height", "1024", "--stretch", "1"});
    EXPECT_EQ(0, verified.code) << verified.out << verified.err;
}

TEST_F(Script, ExportOfSeveralMeshesKeepsTheLinesOfEach) {
    dir.put("chair.obj", k_furnished);
    dir.put("table.obj", "usemtl glass\nv 5 0 0\nv 6 0 0\nv 5 1 0\nvn 0 0 2\nf 1//1 2//1 3//1\n"
                         "f -3 -2 -1\nl 1 2\n");
    in_a_process("file -import " + quoted("chair.obj") + "; file -import " + quoted("table.obj") +
                 "; polyCube; loadPlugin tessora; select table; tessora; file -f -exportAll " +
                 quoted("room.obj") + ";");
    const std::string room = dir.get("room.obj");
    EXPECT_EQ(0u, room.find(k_furnished)) << room;
    for (const char* line : {"usemtl glass\n", "v 5 0 0\n", "vn 0 0 2\n", "\nl 5 6\n", "f -3/"})
        EXPECT_NE(std::string::npos, room.find(line)) << line << "in\n" << room;
    EXPECT_NE(std::string::npos, room.find("f 5/1/2 ")) << room;
    EXPECT_NE(std::string::npos, room.find("o pCubeShape1\n")) << room;
    // What was written reads back with all polygons.
    EXPECT_EQ("9",
              in_a_process("file -import " + quoted("room.obj") + "; print(`polyEvaluate -face`);")
                  .substr(0, 1));
}

TEST_F(Script, ExportReplacesOnlyTheCoordinatesThatChanged) {
    dir.put("chair.obj", k_furnished);
    in_a_process("file -import " + quoted("chair.obj") +
                 "; move -r 0 0 2 chair.vtx[1]; file -f -exportAll " + quoted("edited.obj") +
                 "; undo; rotate 90 0 0 chair; move 0 0 3 chair; file -f -exportAll " +
                 quoted("moved.obj") + ";");
    std::string expected = k_furnished;
    expected.replace(expected.find("v 1 0 0"), 7, "v 1 0 2");
    EXPECT_EQ(expected, dir.get("edited.obj"));
    const std::string moved = dir.get("moved.obj");
    EXPECT_NE(std::string::npos, moved.find("v 0 0 3\nv 1 0 3\nv 1 ")) << moved;
    EXPECT_NE(std::string::npos, moved.find(" 4 0.5 0.5 0.5\n")) << moved;
    EXPECT_NE(std::string::npos, moved.find("vn 0 -1 ")) << moved;
    EXPECT_NE(std::string::npos, moved.find("usemtl oak\n")) << moved;
}

} // namespace
