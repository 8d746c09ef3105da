/// Tests of the options dialog in the built program: settings persist between processes, and the
/// dialog edits the node of an earlier unwrap.
#include "tests/app/program_fixture.h"

#include <cstdlib>

namespace {

using namespace test;

class DialogMemory : public Program {
protected:
    void SetUp() override {
        ::setenv("TESSORA_PREFERENCES", dir.path("preferences.mel").c_str(), 1);
    }
    void TearDown() override { ::unsetenv("TESSORA_PREFERENCES"); }

    /// Runs statements in a new process with a cube and the open dialog; returns the printed text.
    std::string in_a_process(const std::string& statements) {
        const Ended ended =
            run({"-c", "loadPlugin tessora; polyCube; tessoraMenuItemClicked; " + statements});
        EXPECT_EQ(0, ended.code) << ended.err;
        return ended.out;
    }
};

TEST_F(DialogMemory, AppliedValuesAreRestoredInANewProcess) {
    in_a_process("uiSet tessora_padding 9; uiSet tessora_stretch 0.33; uiSet tessora_keepSeams on; "
                 "uiSet tessora_uvSet \"my \\\"set\\\"\"; uiSet tessora_uvSet \"map1\"; "
                 "uiPress tessora_apply;");
    EXPECT_EQ("9 0.33 1 map1\n",
              in_a_process("print (`intSliderGrp -q -value tessora_padding` + \" \" + "
                           "`floatSliderGrp -q -value tessora_stretch` + \" \" + "
                           "`checkBoxGrp -q -value1 tessora_keepSeams` + \" \" + "
                           "`textFieldGrp -q -text tessora_uvSet` + \"\\n\");"));
}

TEST_F(DialogMemory, PresetIsRestoredInANewProcessWithItsValues) {
    in_a_process("uiSet tessora_preset \"Paint\"; uiPress tessora_unwrap;");
    EXPECT_EQ("Paint 4 2048\n",
              in_a_process("print (`optionMenuGrp -q -value tessora_preset` + \" \" + "
                           "`intSliderGrp -q -value tessora_padding` + \" \" + "
                           "`intSliderGrp -q -value tessora_width` + \"\\n\");"));
}

TEST_F(DialogMemory, ResetIsRestoredInANewProcess) {
    in_a_process("uiSet tessora_padding 9; uiPress tessora_apply;");
    in_a_process("uiPress tessora_reset;");
    EXPECT_EQ("2\n", in_a_process("print (`intSliderGrp -q -value tessora_padding` + \"\\n\");"));
}

TEST_F(DialogMemory, ClosingWithoutApplyingStoresNothing) {
    in_a_process("uiSet tessora_padding 9; uiPress tessora_close;");
    EXPECT_EQ("2\n", in_a_process("print (`intSliderGrp -q -value tessora_padding` + \"\\n\");"));
}

TEST_F(DialogMemory, ApplyingToAnExistingNodeUnwrapsAgain) {
    const Ended ended = run({"-c", R"(
        loadPlugin tessora;
        polySphere -n ball -sx 30 -sy 20;
        tessora -stretch 0.6;
        dgeval ballShape.outMesh;
        int $before = `getAttr tessora_node1.Charts_result`;
        tessoraMenuItemClicked;
        uiSet tessora_target "tessora_node1";
        float $shown = `floatSliderGrp -q -value tessora_stretch`;
        print ("own stretch " + (abs($shown - 0.6) < 0.001) + "\n");
        uiSet tessora_stretch 0.02;
        uiPress tessora_apply;
        print ("more charts " + (`getAttr tessora_node1.Charts_result` > $before) + "\n");
        print ("in limit " + (`getAttr tessora_node1.Stretch_result` <= 0.02) + "\n");
        print ("nodes " + size(`ls -type tessora_node`) + "\n");
        undo;
        print ("after undo " + (abs(`getAttr tessora_node1.Stretch` - 0.6) < 0.001) + "\n");
    )"});
    EXPECT_EQ(0, ended.code) << ended.err;
    for (const char* line :
         {"own stretch 1\n", "more charts 1\n", "in limit 1\n", "nodes 1\n", "after undo 1\n"})
        EXPECT_NE(std::string::npos, ended.out.find(line)) << line << ended.out;
}

TEST_F(DialogMemory, PresetsAreThoseOfTheProgram) {
    for (const auto& [shown, name] : {std::pair{"Bake", "bake"},
                                      {"Paint", "paint"},
                                      {"Hard surface", "hard_surface"},
                                      {"Organic", "organic"},
                                      {"Lightmap", "lightmap"}}) {
        std::istringstream words(
            in_a_process("string $names[] = tessoraSettingFlags(); string $values[] = "
                         "tessoraPreset(\"" +
                         std::string(shown) +
                         "\"); for ($i = 1; $i < size($names); $i++) print ($names[$i] + \" \" + "
                         "$values[$i] + \"\\n\");"));
        ASSERT_EQ(0,
                  unwrap("t.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n", {"--preset", name}).code);
        const Json settings = report("t.obj")["settings"];
        int count = 0;
        double value = 0.0;
        for (std::string setting; words >> setting >> value; ++count) {
            const Json& wanted = settings[setting.substr(1)];
            EXPECT_EQ(wanted.is_boolean() ? double(wanted.get<bool>()) : wanted.get<double>(),
                      value)
                << name << setting;
        }
        EXPECT_EQ(13, count) << name;
    }
}

} // namespace
