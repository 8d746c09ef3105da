/// Successful runs of the built program: files, messages and exit codes.
#include "tests/app/program_fixture.h"

namespace {

using namespace test;

TEST_F(Program, VersionGoesToStandardOutput) {
    for (const Words& words : {Words{"--version"}, Words{"unwrap", "--version"}}) {
        const Ended ended = run(words);
        EXPECT_EQ(0, ended.code);
        EXPECT_EQ("tessora 2.11\n", ended.out);
        EXPECT_EQ("", ended.err);
    }
}

TEST_F(Program, HelpGoesToStandardOutput) {
    for (const Words& words :
         {Words{"--help"}, Words{"help"}, Words{"unwrap", "--help"}, Words{"help", "unwrap"}}) {
        const Ended ended = run(words);
        EXPECT_EQ(0, ended.code);
        EXPECT_NE(std::string::npos, ended.out.find("usage: tessora")) << words[0];
        EXPECT_NE(std::string::npos, ended.out.find("examples:"));
        EXPECT_EQ("", ended.err);
    }
}

TEST_F(Program, ShortFlagsForHelpAndVersionWorkEverywhere) {
    for (const char* command : {"unwrap", "measure", "verify", "view", "script", "shell", "-c"}) {
        const Ended help = run({command, "-h"});
        EXPECT_EQ(0, help.code) << command;
        EXPECT_NE(std::string::npos, help.out.find("usage: tessora")) << command;
    }
    EXPECT_EQ(run({"--help"}).out, run({"-h"}).out);
    const std::string version = run({"--version"}).out;
    EXPECT_EQ(version, run({"-V"}).out);
    EXPECT_EQ(version, run({"unwrap", "-V"}).out);
}

TEST_F(Program, TextureWithoutRoomIsAnsweredByOneWithRoom) {
    std::string mesh;
    for (int i = 0; i < 40; ++i) {
        const std::string x = std::to_string(3 * i), next = std::to_string(3 * i + 1);
        mesh += "v " + x + " 0 0\nv " + next + " 0 0\nv " + next + " 1 0\nv " + x + " 1 0\n";
        mesh += "f -4 -3 -2 -1\n";
    }
    const std::string file = dir.put("many.obj", mesh);
    const Words words = {"unwrap", file, "--width", "16", "--height", "8", "--padding", "8"};
    const Ended ended = run(words);
    EXPECT_EQ(5, ended.code);
    const size_t at = ended.err.find("(40 charts); ");
    ASSERT_NE(std::string::npos, at) << ended.err;
    int width = 0, height = 0;
    ASSERT_EQ(2, std::sscanf(ended.err.c_str() + at, "(40 charts); %d x %d texels have room",
                             &width, &height))
        << ended.err;
    EXPECT_EQ(width, 2 * height);
    const auto with_width = [&](int w) {
        return run({"unwrap", file, "--width", std::to_string(w), "--height", std::to_string(w / 2),
                    "--padding", "8"})
            .code;
    };
    EXPECT_EQ(0, with_width(width));
    EXPECT_EQ(5, with_width(width / 2));
}

TEST_F(Program, PlyResultsHaveTheirCoordinatesWhereTheOptionSays) {
    const std::string mesh = dir.put("cube.obj", k_cube), ply = dir.path("cube.ply");
    const auto has_lists = [&](const Words& words) {
        const Ended ended = run(words);
        EXPECT_EQ(0, ended.code) << ended.err;
        const bool lists = dir.get("cube.ply").find("float texcoord") != std::string::npos;
        EXPECT_EQ(lists, dir.get("cube.ply").find("property float s") == std::string::npos);
        return lists;
    };
    EXPECT_TRUE(has_lists({"unwrap", mesh, "-o", ply, "--ply_uvs", "face"}));
    EXPECT_FALSE(has_lists({"unwrap", mesh, "-o", ply, "--ply_uvs", "vertex"}));
    EXPECT_FALSE(has_lists({"unwrap", "--in_place", ply}));
    EXPECT_TRUE(has_lists({"unwrap", "--in_place", ply, "--ply_uvs", "face"}));
}

TEST_F(Program, WritesBesideTheInputByDefault) {
    const Ended ended = run({"unwrap", dir.put("cube.obj", k_cube)});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ("", ended.out);
    EXPECT_EQ((Names{"cube.obj", "cube_uv.obj"}), dir.names());
    EXPECT_EQ(k_cube, dir.get("cube.obj"));
    expect_unwrapped("cube_uv.obj");
}

TEST_F(Program, ChangesNothingButTextureCoordinates) {
    const std::string text = "# made by hand\nmtllib a.mtl\no box\n" + k_cube_vertices +
                             "vn 0 0 1\ng side\nusemtl red\nf 1//1 4//1 3//1 2//1\ns 1\n" +
                             k_cube_faces.substr(10) + "# end";
    const std::string out = result(text);
    EXPECT_EQ(without_texture(text), without_texture(out));
    EXPECT_NE(text, out);
    expect_unwrapped("result.obj");
}

TEST_F(Program, OldTextureCoordinatesAreReplaced) {
    result(k_cube_with_uvs);
    const host::ObjDocument document = read("result.obj");
    std::vector<bool> used(document.texture_count());
    for (const uint32_t id : document.corner_texture)
        used[id] = true;
    EXPECT_EQ(used.end(), std::find(used.begin(), used.end(), false));
    expect_unwrapped("result.obj");
}

TEST_F(Program, InPlaceReplacesTheInputAndKeepsABackup) {
    const Ended ended = run({"unwrap", "--in_place", dir.put("cube.obj", k_cube)});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ((Names{"cube.obj", "cube.obj.bak"}), dir.names());
    EXPECT_EQ(k_cube, dir.get("cube.obj.bak"));
    expect_unwrapped("cube.obj");
}

TEST_F(Program, SecondInPlaceKeepsTheBackupOfTheOriginal) {
    const std::string file = dir.put("cube.obj", k_cube);
    ASSERT_EQ(0, run({"unwrap", "--in_place", file}).code);
    const Ended ended = run({"unwrap", "--in_place", file, "--stretch", "0.5"});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(k_cube, dir.get("cube.obj.bak"));
    EXPECT_NE(std::string::npos, ended.err.find("warning: " + file + ".bak exists and is kept"))
        << ended.err;
    expect_unwrapped("cube.obj");
}

TEST_F(Program, FolderUnderTheNameOfTheBackupIsAnOutputError) {
    const std::string file = dir.put("cube.obj", k_cube_with_uvs);
    std::filesystem::create_directory(file + ".bak");
    for (const char* command : {"unwrap", "pack"}) {
        const Ended ended = run({command, "--in_place", file});
        EXPECT_EQ(7, ended.code) << command;
        EXPECT_NE(std::string::npos,
                  ended.err.find(file + ".bak: cannot be written: Is a directory"))
            << ended.err;
        EXPECT_EQ(k_cube_with_uvs, dir.get("cube.obj"));
    }
}

TEST_F(Program, ReportContainsTheFigures) {
    const Ended ended = unwrap("cube.obj", k_cube);
    ASSERT_EQ(0, ended.code) << ended.err;
    const Json json = report("cube.obj");
    EXPECT_EQ("ok", json["status"]);
    EXPECT_EQ(dir.path("cube.obj"), json["input"]);
    EXPECT_EQ(dir.path("cube_uv.obj"), json["output"]);
    EXPECT_EQ(6, json["polygons"]);
    EXPECT_EQ(12, json["triangles"]);
    EXPECT_EQ(8, json["vertices"]);
    EXPECT_GE(json["charts"].get<int>(), 1);
    EXPECT_LE(json["stretch"].get<double>(), 0.15);
    EXPECT_EQ(Json::array(), json["over_limit"]);
    EXPECT_EQ(0, json["existing_seam_edges"]);
    EXPECT_GT(json["new_seam_edges"].get<int>(), 0);
    EXPECT_EQ("map1", json["settings"]["mapchannel"]);
    EXPECT_GT(json["peak_mb"].get<double>(), 1.0);
}

// Fails if the plug-in changes the text of a stage (see app/stage_times.h).
TEST_F(Program, ReportContainsTheTimeOfEveryStage) {
    ASSERT_EQ(0, unwrap("cube.obj", k_cube).code);
    const Json seconds = report("cube.obj")["seconds"];
    for (const char* stage : {"read", "collect", "generate", "apply", "verify", "write", "total"})
        EXPECT_GE(seconds.value(stage, -1.0), 0.0) << stage;
}

TEST_F(Program, LayoutPictureHasTheAspectRatioOfTheTexture) {
    const Ended ended =
        unwrap("cube.obj", k_cube,
               {"--width", "300", "--height", "200", "--layout", dir.path("cube.png")});
    ASSERT_EQ(0, ended.code) << ended.err;
    const std::string png = dir.get("cube.png");
    ASSERT_GT(png.size(), 33u);
    EXPECT_EQ("\x89PNG\r\n\x1A\n", png.substr(0, 8));
    const auto number = [&](size_t at) {
        return (uint32_t(uint8_t(png[at])) << 24) | (uint32_t(uint8_t(png[at + 1])) << 16) |
               (uint32_t(uint8_t(png[at + 2])) << 8) | uint8_t(png[at + 3]);
    };
    EXPECT_GE(number(16), 300u);
    EXPECT_EQ(number(16) * 2, number(20) * 3);
    EXPECT_EQ(dir.path("cube.png"), report("cube.obj")["layout"]);
}

TEST_F(Program, BesideAlsoWritesReportAndPicture) {
    const Ended ended = run({"unwrap", "--beside", dir.put("cube.obj", k_cube)});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ((Names{"cube.obj", "cube_uv.json", "cube_uv.obj", "cube_uv.png"}), dir.names());
    for (const char* name : {"cube_uv.json", "cube_uv.obj", "cube_uv.png"})
        EXPECT_NE(std::string::npos, ended.err.find(dir.path(name)));
}

TEST_F(Program, QuietPrintsNothing) {
    const Ended ended = unwrap("cube.obj", k_cube, {"--quiet", "--padding", "99"});
    EXPECT_EQ(0, ended.code);
    EXPECT_EQ("", ended.err);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ(Json{"--padding 99 counts as 32"}, report("cube.obj")["warnings"]);
}

TEST_F(Program, ProgressLinesContainFileAndStage) {
    const Ended ended = unwrap("cube.obj", k_cube);
    for (const char* stage :
         {"reading", "extracting required data", "generating UV set", "applying UV set", "writing"})
        EXPECT_NE(std::string::npos,
                  ended.err.find("tessora: " + dir.path("cube.obj") + ": " + stage + "\n"))
            << ended.err;
    EXPECT_EQ(std::string::npos, ended.err.find('\033'));
    EXPECT_EQ(std::string::npos, ended.err.find('\r'));
}

TEST_F(Program, TerminalShowsABarThatIsCleared) {
    Process::Setup setup;
    setup.terminal = true;
    const Ended ended = unwrap("sheet.obj", dome(40), {}, setup);
    EXPECT_EQ(0, ended.code);
    EXPECT_NE(std::string::npos, ended.err.find("\r["));
    EXPECT_NE(std::string::npos, ended.err.find("] 100%"));
    EXPECT_NE(std::string::npos, ended.err.find("generating UV set"));
    // Only the result follows the last clearing of the line.
    const std::string rest = ended.err.substr(ended.err.rfind("\033[K") + 3);
    EXPECT_EQ(0u, rest.find("tessora: ")) << rest;
    EXPECT_EQ(std::string::npos, rest.find('\r'));
}

TEST_F(Program, ReadsStandardInputAndWritesStandardOutput) {
    const std::string expected = result(k_cube);
    Process::Setup setup;
    setup.input = k_cube;
    const Ended ended = run({"unwrap", "-", "-o", "-"}, setup);
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(expected, ended.out);
}

TEST_F(Program, AcceptsPathsWithBlanksUnicodeAndDashes) {
    Process::Setup setup;
    setup.directory = dir.root();
    dir.put("-a \xC3\xA9\xE5\xBD\xA2.obj", k_cube);
    const Ended ended = run({"unwrap", "--", "-a \xC3\xA9\xE5\xBD\xA2.obj"}, setup);
    EXPECT_EQ(0, ended.code) << ended.err;
    expect_unwrapped("-a \xC3\xA9\xE5\xBD\xA2_uv.obj");
}

TEST_F(Program, SameInputGivesSameBytes) {
    const std::string text = dome(20);
    EXPECT_EQ(result(text, {"--layout", dir.path("1.png")}),
              result(text, {"--layout", dir.path("2.png")}));
    EXPECT_EQ(dir.get("1.png"), dir.get("2.png"));
}

TEST_F(Program, ScalingTheMeshDoesNotChangeTheUvs) {
    const auto uvs = [this](double scale) {
        result(dome(12, scale), {"--stretch", "0.02"});
        return read("result.obj").texture_coords;
    };
    const std::vector<float> expected = uvs(1.0);
    EXPECT_EQ(expected, uvs(1000.0));
    EXPECT_EQ(expected, uvs(0.001));
}

TEST_F(Program, FineMeshFarFromTheOriginKeepsItsLinesAndGetsFewCharts) {
    std::string text;
    char line[80];
    for (int i = 0; i <= 20; ++i)
        for (int j = 0; j <= 20; ++j) {
            std::snprintf(line, sizeof line, "v %.4f %.4f %.4f\n", 1e6 + 1e-3 * i, 1e6 + 1e-3 * j,
                          -1e6 + 1e-4 * (i % 2));
            text += line;
        }
    for (int i = 0; i < 20; ++i)
        for (int j = 0; j < 20; ++j) {
            const int a = 21 * i + j + 1;
            std::snprintf(line, sizeof line, "f %d %d %d %d\n", a, a + 21, a + 22, a + 1);
            text += line;
        }
    const Ended ended = unwrap("far.obj", text);
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(without_texture(text), without_texture(dir.get("far_uv.obj")));
    EXPECT_LT(report("far.obj")["charts"].get<int>(), 10);
    EXPECT_GT(report("far.obj")["measures"]["coverage"].get<double>(), 0.5);
    EXPECT_EQ(std::string::npos, ended.err.find("single precision")) << ended.err;
}

TEST_F(Program, OldUvsHaveNoEffectUnlessSeamsAreKept) {
    EXPECT_EQ(result(k_cube), result(k_cube_with_uvs));
}

TEST_F(Program, KeepSeamsCutsWhereTheOldUvsWereCut) {
    const Ended ended = unwrap("cube.obj", k_cube_with_uvs, {"--keep_seams"});
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_GT(report("cube.obj")["existing_seam_edges"].get<int>(), 0);
    EXPECT_EQ(std::string::npos, ended.err.find("warning"));
}

TEST_F(Program, KeepSeamsOnAMeshWithoutUvsWarnsBeforeTheUnwrap) {
    const Ended ended = unwrap("cube.obj", k_cube, {"--keep_seams"});
    ASSERT_EQ(0, ended.code) << ended.err;
    const size_t warning = ended.err.find("warning: " + dir.path("cube.obj") +
                                          ": --keep_seams: the mesh has no texture coordinates");
    ASSERT_NE(std::string::npos, warning) << ended.err;
    EXPECT_LT(warning, ended.err.find("extracting required data"));
    EXPECT_EQ(6, report("cube.obj")["charts"]);
    EXPECT_EQ(1u, report("cube.obj")["warnings"].size());
}

TEST_F(Program, RidgesAndGroovesAreCutAtTheirAngleAndAbove) {
    EXPECT_EQ(6, charts(cube_grid(2), {"--use_ridges", "--ridge_angle", "40"}));
    EXPECT_LT(charts(cube_grid(2), {"--use_ridges", "--ridge_angle", "100"}), 6);
    EXPECT_LT(charts(cube_grid(2), {"--use_ridges", "off", "--ridge_angle", "40"}), 6);
    const int sides = charts(l_shape(), {"--use_ridges", "--ridge_angle", "40"});
    EXPECT_EQ(8, charts(l_shape(), {"--use_ridges", "--ridge_angle", "40", "--use_grooves",
                                    "--groove_angle", "40"}));
    EXPECT_EQ(7, sides); // the faces beside the groove share a chart
}

TEST_F(Program, SmallStretchLimitIsMetWithMoreCharts) {
    const std::string text = dome(12);
    const int loose = charts(text, {"--stretch", "1"});
    const int tight = charts(text, {"--stretch", "0.0001"});
    EXPECT_GT(tight, loose);
    EXPECT_LE(report("charts.obj")["stretch"].get<double>(), 0.0001 + 1e-6);
}

TEST_F(Program, TextureSizeAndPaddingChangeTheUvs) {
    const std::string text = cube_grid(3);
    const std::string plain = result(text);
    EXPECT_NE(plain, result(text, {"--padding", "20"}));
    EXPECT_NE(plain, result(text, {"--width", "1024"}));
    EXPECT_NE(plain, result(text, {"--height", "64"}));
}

TEST_F(Program, HighQualityIsAcceptedAndReported) {
    const Ended ended = unwrap("cube.obj", k_cube, {"--high-quality"});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(true, report("cube.obj")["settings"]["high_quality"]);
}

TEST_F(Program, SettingsWithoutEffectDoNotChangeTheResult) {
    const std::string plain = result(k_cube);
    EXPECT_EQ(plain, result(k_cube, {"--charts", "5"}));
    EXPECT_EQ(plain, result(k_cube, {"--adjacency_method", "1"}));
    EXPECT_EQ(plain, result(k_cube, {"--epsilon", "10"}));
}

TEST_F(Program, MapchannelDoesNotChangeTheWrittenUvs) {
    const std::string plain = result(k_cube);
    EXPECT_EQ(plain, result(k_cube, {"--mapchannel", "lightmap"}));
    EXPECT_EQ("lightmap", report("source.obj")["settings"]["mapchannel"]);
    EXPECT_EQ(plain, result(k_cube_with_uvs, {"--mapchannel", "lightmap"}));
}

TEST_F(Program, OutOfRangeValuesAreClampedWithAWarning) {
    const Ended ended = unwrap("cube.obj", k_cube, {"--width", "4", "--stretch", "7"});
    EXPECT_EQ(0, ended.code) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("warning: --width 4 counts as 8"));
    const Json json = report("cube.obj");
    EXPECT_EQ(8, json["settings"]["width"]);
    EXPECT_EQ(1.0, json["settings"]["stretch"]);
    EXPECT_EQ(2u, json["warnings"].size());
}

TEST_F(Program, PolygonsThatRepeatAVertexAreUnwrapped) {
    const std::string text = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 0 1\n"
                             "f 1 1 2 3\nf 1 3 4 4\nf 2 5 3\n";
    const Ended ended = unwrap("odd.obj", text);
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(without_texture(text), without_texture(dir.get("odd_uv.obj")));
    expect_unwrapped("odd_uv.obj");
    EXPECT_EQ(5, report("odd.obj")["vertices"]);
    EXPECT_EQ(1u, report("odd.obj")["warnings"].size());
}

TEST_F(Program, CoincidentPolygonsAreNotTorn) {
    const std::string text = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 2 0 1\n"
                             "f 1 1 2 3\nf 1 2 3 2\nf 2 5 3\n" +
                             std::string("f 1 2 3 4\nf 1 2 3 4\nf 4 3 2 1\n");
    const Ended ended = unwrap("crowd.obj", text);
    ASSERT_EQ(0, ended.code) << ended.err;
    EXPECT_EQ(without_texture(text), without_texture(dir.get("crowd_uv.obj")));
    expect_unwrapped("crowd_uv.obj");
    EXPECT_EQ(1u, report("crowd.obj")["warnings"].size()); // of repeated vertices only
}

TEST_F(Program, SeveralProcessesCanWriteIntoOneDirectory) {
    std::vector<std::unique_ptr<Process>> all;
    for (int i = 0; i < 4; ++i)
        all.push_back(std::make_unique<Process>(
            Words{"unwrap", dir.put("m" + std::to_string(i) + ".obj", dome(8 + i)), "-o",
                  dir.path("out" + std::to_string(i / 2) + ".obj")}));
    for (const auto& process : all)
        EXPECT_EQ(0, process->wait().code);
    EXPECT_EQ((Names{"m0.obj", "m1.obj", "m2.obj", "m3.obj", "out0.obj", "out1.obj"}), dir.names());
}

} // namespace
