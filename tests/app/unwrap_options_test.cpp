#include "app/presets.h"
#include "app/unwrap_options.h"
#include "tests/app/parsed_words.h"
#include "tests/app/scratch.h"

namespace {

using test::parsed;
using test::refusal;
using test::Words;

TEST(UnwrapOptions, DefaultsEqualThoseOfThePluginCommand) {
    const app::UnwrapRequest r = parsed({"m.obj"});
    EXPECT_EQ("map1", r.settings.mapchannel);
    EXPECT_EQ(0, r.settings.charts);
    EXPECT_EQ(0.15, r.settings.stretch);
    EXPECT_EQ(2, r.settings.padding);
    EXPECT_EQ(512, r.settings.width);
    EXPECT_EQ(512, r.settings.height);
    EXPECT_FALSE(r.settings.high_quality);
    EXPECT_FALSE(r.settings.keep_seams);
    EXPECT_FALSE(r.settings.use_grooves);
    EXPECT_EQ(90.0, r.settings.groove_angle);
    EXPECT_FALSE(r.settings.use_ridges);
    EXPECT_EQ(90.0, r.settings.ridge_angle);
    EXPECT_EQ(0, r.settings.adjacency_method);
    EXPECT_EQ(0.001, r.settings.epsilon);
    EXPECT_EQ("m_uv.obj", r.output);
    EXPECT_TRUE(r.warnings.empty());
}

TEST(UnwrapOptions, EverySettingIsRead) {
    const app::UnwrapRequest r = parsed({"--mapchannel",
                                         "uv2",
                                         "--charts",
                                         "3",
                                         "--stretch",
                                         "0.5",
                                         "--padding",
                                         "4",
                                         "--width",
                                         "1024",
                                         "--height",
                                         "256",
                                         "--high-quality",
                                         "--keep-seams",
                                         "on",
                                         "--use_grooves",
                                         "--groove_angle",
                                         "30",
                                         "--use_ridges",
                                         "yes",
                                         "--ridge_angle",
                                         "40",
                                         "--adjacency_method",
                                         "1",
                                         "--epsilon",
                                         "0.5",
                                         "--report",
                                         "r",
                                         "--layout",
                                         "l",
                                         "--quiet",
                                         "m.obj"});
    EXPECT_EQ("uv2", r.settings.mapchannel);
    EXPECT_EQ(3, r.settings.charts);
    EXPECT_EQ(0.5, r.settings.stretch);
    EXPECT_EQ(4, r.settings.padding);
    EXPECT_EQ(1024, r.settings.width);
    EXPECT_EQ(256, r.settings.height);
    EXPECT_TRUE(r.settings.high_quality);
    EXPECT_TRUE(r.settings.keep_seams);
    EXPECT_TRUE(r.settings.use_grooves);
    EXPECT_EQ(30.0, r.settings.groove_angle);
    EXPECT_TRUE(r.settings.use_ridges);
    EXPECT_EQ(40.0, r.settings.ridge_angle);
    EXPECT_EQ(1, r.settings.adjacency_method);
    EXPECT_EQ(0.5, r.settings.epsilon);
    EXPECT_EQ("r", r.report);
    EXPECT_EQ("l", r.layout);
    EXPECT_TRUE(r.quiet);
}

TEST(UnwrapOptions, OutOfRangeValuesAddWarnings) {
    EXPECT_EQ(Words{"--padding -1 counts as 0"}, parsed({"m.obj", "--padding", "-1"}).warnings);
    EXPECT_EQ((Words{"--stretch 1.5 counts as 1.0", "--width 4 counts as 8"}),
              parsed({"m.obj", "--width", "4", "--stretch", "1.5"}).warnings);
    EXPECT_EQ((Words{"--charts 100 counts as 64", "--height 10000 counts as 8192",
                     "--groove_angle 270.0 counts as 180.0", "--ridge_angle -1.0 counts as 0.0",
                     "--adjacency_method 2 counts as 1", "--epsilon 0.0 counts as 0.001",
                     "--charts is stored, but has no effect",
                     "--adjacency_method is stored, but has no effect",
                     "--epsilon is stored, but has no effect"}),
              parsed({"m.obj", "--charts", "100", "--height", "10000", "--groove_angle", "270",
                      "--ridge_angle", "-1", "--adjacency_method", "2", "--epsilon", "0"})
                  .warnings);
}

TEST(UnwrapOptions, OutputIsNamedAfterTheInput) {
    EXPECT_EQ("a/b.c/m_uv.OBJ", parsed({"a/b.c/m.OBJ"}).output);
    EXPECT_EQ("a/b.c/m_uv", parsed({"a/b.c/m"}).output);
    EXPECT_EQ("m.v2_uv.obj", parsed({"m.v2.obj"}).output);
    EXPECT_EQ("a/.obj_uv", parsed({"a/.obj"}).output);
    EXPECT_EQ("a/m_uv.obj.gz", parsed({"a/m.obj.gz"}).output);
    EXPECT_EQ("m_uv.gz", parsed({"m.gz"}).output);
    EXPECT_EQ("m_uv.obj.gz", parsed({"m.glb.gz", "--format", "obj"}).output);
    EXPECT_EQ("m_uv.obj", parsed({"m.stl"}).output) << "STL has no texture coordinates";
    EXPECT_EQ("m_uv.obj.gz", parsed({"m.STL.gz"}).output);
    EXPECT_EQ("m_uv.PLY", parsed({"m.PLY"}).output);
}

TEST(UnwrapOptions, BesideDerivesReportAndPictureNamesFromTheOutput) {
    const app::UnwrapRequest plain = parsed({"--beside", "a.b/m.obj"});
    EXPECT_EQ("a.b/m_uv.json", plain.report);
    EXPECT_EQ("a.b/m_uv.png", plain.layout);
    const app::UnwrapRequest named = parsed({"m", "--beside", "-o", "a.b/n", "--report", "r"});
    EXPECT_EQ("r", named.report);
    EXPECT_EQ("a.b/n.png", named.layout);
    const app::UnwrapRequest piped = parsed({"m.obj", "--beside", "-o", "-"});
    EXPECT_EQ("", piped.report);
    EXPECT_EQ("", piped.layout);
}

TEST(UnwrapOptions, InPlaceWritesOverTheInput) {
    EXPECT_EQ("m.obj", parsed({"--in-place", "m.obj"}).output);
}

TEST(UnwrapOptions, DashMeansStandardInputOrOutput) {
    const app::UnwrapRequest r = parsed({"-", "-o", "-"});
    EXPECT_EQ("-", r.input);
    EXPECT_EQ("-", r.output);
}

TEST(UnwrapOptions, NamesThatStartWithADashAreAcceptedAfterADoubleDash) {
    EXPECT_EQ("-m.obj", parsed({"--", "-m.obj"}).input);
}

TEST(UnwrapOptions, HelpNeedsNoInput) { EXPECT_TRUE(parsed({"--help"}).help); }

TEST(UnwrapOptions, HelpListsEveryOptionAndThoseWithoutEffect) {
    const std::string help = app::unwrap_help().text();
    for (const char* name : {"mapchannel",
                             "charts",
                             "stretch",
                             "padding",
                             "width",
                             "height",
                             "high_quality",
                             "keep_seams",
                             "use_grooves",
                             "groove_angle",
                             "use_ridges",
                             "ridge_angle",
                             "adjacency_method",
                             "epsilon",
                             "output",
                             "in_place",
                             "report",
                             "layout",
                             "quiet",
                             "help",
                             "view",
                             "view_panel",
                             "view_width",
                             "preset",
                             "out_dir",
                             "suffix",
                             "list",
                             "jobs",
                             "skip_existing",
                             "keep_going",
                             "fail_fast",
                             "time_limit",
                             "shard",
                             "dry_run",
                             "json_lines"})
        EXPECT_NE(help.npos, help.find("--" + std::string(name))) << name;
    const size_t without_effect = help.find("carried without effect:");
    ASSERT_NE(help.npos, without_effect);
    for (const char* name : {"--charts", "--adjacency_method", "--epsilon"})
        EXPECT_NE(help.npos, help.find(name, without_effect)) << name;
    for (const app::Preset& preset : app::presets())
        EXPECT_NE(help.npos, help.find(std::string("\n  ") + preset.name + ": ")) << preset.name;
    EXPECT_NE(help.npos, help.find("examples:"));
    EXPECT_NE(help.npos, help.find("exit codes:"));
}

TEST(UnwrapOptionsRefuse, MissingInputAndSecondInput) {
    EXPECT_EQ("which mesh? unwrap needs an INPUT file", refusal({}));
    EXPECT_EQ("which mesh? unwrap needs an INPUT file", refusal({""}));
    EXPECT_EQ("which mesh? unwrap needs an INPUT file", refusal({"a.obj", ""}));
}

TEST(UnwrapOptionsRefuse, OptionsOfOneMeshWithSeveral) {
    EXPECT_EQ("-o names one output; several meshes need --out_dir or --suffix",
              refusal({"a.obj", "b.obj", "-o", "c.obj"}));
    EXPECT_EQ("--report names one file; with several meshes reports are written beside the "
              "results, and --beside writes pictures",
              refusal({"a.obj", "b.obj", "--report", "c.json"}));
    EXPECT_EQ("--layout names one file; with several meshes reports are written beside the "
              "results, and --beside writes pictures",
              refusal({"a.obj", "b.obj", "--layout", "c.png"}));
    EXPECT_EQ("--view is for one mesh at a time", refusal({"a.obj", "b.obj", "--view", "c.png"}));
    EXPECT_EQ("--in_place excludes --out_dir and --suffix",
              refusal({"a.obj", "--in_place", "--out_dir", "d"}));
    EXPECT_EQ("standard input is one mesh; several come from files", refusal({"a.obj", "-"}));
}

TEST(UnwrapOptionsRefuse, FormatsThatCannotBeWritten) {
    EXPECT_EQ("--format: 'dae' is not one of OBJ, GLTF, GLB, PLY and FBX, in small letters",
              refusal({"m.obj", "--format", "dae"}));
    EXPECT_EQ("--in_place keeps the format", refusal({"m.glb", "--in_place", "--format", "obj"}));
    EXPECT_EQ("--format obj and the name m2.glb contradict each other",
              refusal({"m.glb", "-o", "m2.glb", "--format", "obj"}));
    EXPECT_EQ("--texcoord is 0 to 7", refusal({"m.glb", "--texcoord", "8"}));
    EXPECT_EQ("--ply_uvs: 'corner' is not as_read, face or vertex",
              refusal({"m.ply", "--ply_uvs", "corner"}));
    EXPECT_EQ("--max_input is more than 0 and at most 1000000 GiB",
              refusal({"m.glb", "--max_input", "0"}));
}

TEST(UnwrapOptionsRefuse, BatchValuesOutOfRange) {
    EXPECT_EQ("--suffix must not contain a slash", refusal({"a.obj", "--suffix", "a/b"}));
    EXPECT_EQ("--jobs is 0 to 1024", refusal({"a.obj", "--jobs", "-1"}));
    EXPECT_EQ("--threads is 0 to 1024", refusal({"a.obj", "--threads", "-4"}));
    EXPECT_EQ("--threads is 0 to 1024", refusal({"a.obj", "--threads", "1025"}));
    EXPECT_EQ("--time_limit must not be negative", refusal({"a.obj", "--time_limit", "-1"}));
    for (const char* shard : {"3/3", "-1/3", "1", "1/0", "1/2x", "a/b"})
        EXPECT_EQ(std::string("--shard: '") + shard + "' is not K/N with K from 0 to N-1",
                  refusal({"a.obj", "--shard", shard}));
}

TEST(UnwrapOptions, KeepGoingOffIsFailFast) {
    EXPECT_TRUE(parsed({"a.obj", "--keep_going", "off"}).batch.fail_fast);
    EXPECT_FALSE(parsed({"a.obj", "--keep_going", "--jobs", "2"}).batch.fail_fast);
}

TEST(UnwrapOptionsRefuse, UnknownKindsOfPicture) {
    EXPECT_EQ("checker", parsed({"a.obj", "--picture", "checker"}).picture);
    EXPECT_EQ("--picture: 'sketch' is not layout, checker or stretch",
              refusal({"a.obj", "--picture", "sketch"}));
}

TEST(UnwrapOptions, ViewShowsAllPanelsUnlessOneIsNamed) {
    const app::UnwrapRequest all = parsed({"m.obj", "--view", "v.png"});
    EXPECT_EQ("v.png", all.view);
    EXPECT_EQ("all", all.view_picture.panel);
    EXPECT_EQ(1280, all.view_picture.width);
    const app::UnwrapRequest one =
        parsed({"m.obj", "--view", "v.png", "--view_panel", "persp", "--view_width", "10000"});
    EXPECT_EQ("persp", one.view_picture.panel);
    EXPECT_EQ(8192, one.view_picture.width);
    EXPECT_EQ(Words{"--view_width 10000 counts as 8192"}, one.warnings);
}

TEST(UnwrapOptionsRefuse, UnknownPanels) {
    EXPECT_EQ("--view_panel: 'left' is not all, top, front, side or persp",
              refusal({"a.obj", "--view", "v.png", "--view_panel", "left"}));
}

TEST(UnwrapOptionsRefuse, InputAsOutput) {
    test::Scratch dir;
    const std::string file = dir.put("m.obj", "x");
    const std::string other = dir.root() + "/./m.obj";
    EXPECT_EQ("the input and the output would be the same file: " + other +
                  "; --in_place writes over the input",
              refusal({file, "-o", other}));
    EXPECT_EQ("the input and the report would be the same file: m.obj",
              refusal({"m.obj", "--report", "m.obj"}));
}

TEST(UnwrapOptionsRefuse, OneFileUnderTwoSpellings) {
    test::Scratch dir;
    const std::string mesh = dir.put("m.obj", "x"), missing = dir.path("q.obj");
    EXPECT_EQ("the output and the report would be the same file: " + dir.path("./q.obj"),
              refusal({mesh, "-o", missing, "--report", dir.path("./q.obj")}));
    std::filesystem::create_symlink("q.obj", dir.path("link.obj")); // to a file that does not exist
    EXPECT_EQ("the output and the layout would be the same file: " + dir.path("link.obj"),
              refusal({mesh, "-o", missing, "--layout", dir.path("link.obj")}));
    EXPECT_EQ("the backup and the report would be the same file: " + mesh + ".bak",
              refusal({mesh, "--in_place", "--report", mesh + ".bak"}));
    std::filesystem::create_symlink("m.obj", mesh + ".bak");
    EXPECT_EQ("the output and the backup would be the same file: " + mesh + ".bak",
              refusal({mesh, "--in_place"}));
}

TEST(UnwrapOptions, SeveralResultsMayGoToTheNullDevice) {
    EXPECT_EQ("/dev/null", parsed({"m.obj", "-o", "/dev/null", "--report", "/dev/null"}).report);
}

TEST(UnwrapOptionsRefuse, ContradictoryOutputs) {
    EXPECT_EQ("--in_place and -o exclude each other", refusal({"m.obj", "--in_place", "-o", "n"}));
    EXPECT_EQ("--in_place needs a file; standard input has no place", refusal({"-", "--in_place"}));
    EXPECT_EQ("standard input needs -o OUTPUT ('-o -' for standard output)", refusal({"-"}));
    EXPECT_EQ("the report and the layout would be the same file: r",
              refusal({"m.obj", "--report", "r", "--layout", "r"}));
    EXPECT_EQ("the layout and the view would be the same file: r",
              refusal({"m.obj", "--layout", "r", "--view", "r"}));
    EXPECT_EQ("the input and the view would be the same file: m.obj",
              refusal({"m.obj", "--view", "m.obj"}));
    EXPECT_EQ("only one of output, report and picture can go to standard output",
              refusal({"m.obj", "--view", "-", "--layout", "-"}));
    EXPECT_EQ("only one of output, report and picture can go to standard output",
              refusal({"m.obj", "-o", "-", "--report", "-"}));
    EXPECT_EQ("m.dae: files of this format are read, but not written; name an OBJ, GLB or FBX file "
              "instead",
              refusal({"m.obj", "-o", "m.dae"}));
}

} // namespace
