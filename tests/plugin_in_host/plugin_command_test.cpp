// The plug-in's command and its registration: flags, attribute writes, results, menu, failures.
#include "tests/plugin_in_host/plugin_fixture.h"

#include <maya/MSyntax.h>

#include <cmath>
#include <filesystem>
#include <fstream>

namespace host::graph::testing {

namespace {

/// A flag, its attribute's default as text, an argument for it, and the attribute's text then.
struct FlagRow {
    const char* short_name;
    const char* long_name;
    const char* attribute;
    const char* standard;
    const char* given;
    const char* shows;
};

constexpr FlagRow k_flags[] = {
    {"-mc", "-mapchannel", "UV_Set", "map1", "other", "other"},
    {"-cr", "-charts", "Charts", "0", "10", "10"},
    {"-st", "-stretch", "Stretch", "0.15", "5.0", "5"},
    {"-pad", "-padding", "Padding", "2", "4", "4"},
    {"-w", "-width", "Texture_Width", "512", "0", "0"},
    {"-h", "-height", "Texture_Height", "512", "1024", "1024"},
    {"-hq", "-high_quality", "High_Quality", "0", "true", "1"},
    {"-adm", "-adjacency_method", "Adjacency_Method", "0", "1", "1"},
    {"-e", "-epsilon", "Epsilon", "0.001", "0.5", "0.5"},
    {"-ks", "-keep_seams", "Keep_Borders", "0", "on", "1"},
    {"-ug", "-use_grooves", "Cut_Grooves", "0", "yes", "1"},
    {"-ga", "-groove_angle", "Groove_Angle", "90", "45.5", "45.5"},
    {"-ur", "-use_ridges", "Cut_Ridges", "0", "1", "1"},
    {"-ra", "-ridge_angle", "Ridge_Angle", "90", "-3", "-3"},
};

/// Attributes that the command always sets to the same values.
constexpr const char* k_constant_writes[][2] = {
    {"Skip_compute", "1"},  {"Stretch_result", "0"},
    {"Charts_result", "0"}, {"Mesh_path", "|pCube1|pCubeShape1"},
    {"Visualization", "1"},
};

} // namespace

class PluginCommandTest : public PluginTest {
protected:
    PluginCommandTest() : shape_(add_cube_with_history()) { select(*shape_.parents().front()); }

    Node& node() { return plug(shape_, "inMesh").source()->node(); }
    std::string shows(Node& node, const char* attribute) {
        const PlugValue& value = plug(node, attribute).value;
        if (value.kind() == ValueKind::text)
            return value.as_text().asChar();
        char text[32];
        std::snprintf(text, sizeof(text), "%.6g", value.number());
        return text;
    }
    std::string errors_of(const std::function<void()>& action) {
        ::testing::internal::CaptureStderr();
        action();
        return ::testing::internal::GetCapturedStderr();
    }
    std::string result_text() {
        std::string text;
        EXPECT_TRUE(Commands::current().result().to(text));
        return text;
    }

    MeshNode& shape_;
};

// === Flags ===================================================================================

class PluginFlagTest : public PluginCommandTest, public ::testing::WithParamInterface<FlagRow> {};

TEST_P(PluginFlagTest, DefaultsWhenAbsent) {
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(shows(node(), GetParam().attribute), GetParam().standard);
}

TEST_P(PluginFlagTest, ShortNameSetsTheAttribute) {
    ASSERT_EQ(run(std::string("tessora ") + GetParam().short_name + " " + GetParam().given),
              MS::kSuccess);
    EXPECT_EQ(shows(node(), GetParam().attribute), GetParam().shows);
}

TEST_P(PluginFlagTest, LongNameSetsTheAttribute) {
    ASSERT_EQ(run(std::string("tessora ") + GetParam().long_name + " " + GetParam().given),
              MS::kSuccess);
    EXPECT_EQ(shows(node(), GetParam().attribute), GetParam().shows);
}

TEST_P(PluginFlagTest, ValueIsNotKeptForLaterRuns) {
    ASSERT_EQ(run(std::string("tessora ") + GetParam().short_name + " " + GetParam().given),
              MS::kSuccess);
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(shows(node(), GetParam().attribute), GetParam().standard);
}

TEST_P(PluginFlagTest, MissingArgumentFailsTheCommandWithoutEffect) {
    const size_t before = scene.nodes().size();
    EXPECT_EQ(run(std::string("tessora ") + GetParam().short_name), MS::kFailure);
    EXPECT_EQ(run(std::string("tessora ") + GetParam().short_name + " -ks true"), MS::kFailure);
    EXPECT_EQ(scene.nodes().size(), before);
    EXPECT_FALSE(script.lines.empty());
}

INSTANTIATE_TEST_SUITE_P(Table, PluginFlagTest, ::testing::ValuesIn(k_flags),
                         [](const auto& row) { return std::string(row.param.long_name + 1); });

TEST_F(PluginCommandTest, DeclaresExactlyFourteenFlags) {
    const MSyntax syntax = Commands::current().syntax_of("tessora");
    ASSERT_EQ(syntax.host_flags().size(), std::size(k_flags));
    for (size_t i = 0; i < std::size(k_flags); ++i) {
        EXPECT_EQ(syntax.host_flags()[i].short_name, k_flags[i].short_name + 1);
        EXPECT_EQ(syntax.host_flags()[i].long_name, k_flags[i].long_name + 1);
        EXPECT_EQ(syntax.host_flags()[i].arguments.size(), 1u);
    }
    EXPECT_TRUE(syntax.host_arguments().empty());
    EXPECT_EQ(run("tessora pCube1"), MS::kFailure); // the mesh is taken from the selection
}

TEST_F(PluginCommandTest, ArgumentsOfWrongTypeAreRejected) {
    for (const char* text : {"tessora -cr many", "tessora -cr 1.5", "tessora -st wide",
                             "tessora -hq perhaps", "tessora -w 1 -w 2"})
        EXPECT_EQ(run(text), MS::kFailure) << text;
}

TEST_F(PluginCommandTest, AnArgumentThatCannotBeReadLeavesTheDefault) {
    faultpoint::Scope scope("MArgParser::getFlagArgument", MS::kFailure);
    ASSERT_EQ(run("tessora -pad 9 -w 64"), MS::kSuccess);
    EXPECT_EQ(shows(node(), "Padding"), "2");
    EXPECT_EQ(shows(node(), "Texture_Width"), "64");
}

TEST_F(PluginCommandTest, AFailingParserFailsTheCommand) {
    faultpoint::Scope scope("MArgDatabase::MArgDatabase", MS::kLicenseFailure);
    EXPECT_EQ(run("tessora"), MS::kFailure);
    EXPECT_EQ(undo.undo_count(), 0u);
}

// === Selected mesh ===========================================================================

TEST_F(PluginCommandTest, WithoutASelectedMeshItSucceedsWithoutEffect) {
    const size_t before = scene.nodes().size();
    for (const char* name : {"", "persp"}) {
        scene.select(*name == '\0' ? Selection() : resolve(name));
        EXPECT_EQ(run("tessora"), MS::kSuccess);
        EXPECT_EQ(scene.nodes().size(), before);
        EXPECT_EQ(undo.undo(), MS::kSuccess); // nothing to undo
        EXPECT_EQ(undo.redo(), MS::kSuccess);
    }
    EXPECT_TRUE(script.lines.empty());
}

TEST_F(PluginCommandTest, OnlyTheFirstSelectedMeshIsUnwrapped) {
    scene.records_history = true;
    MeshNode& other = add_cube("other");
    scene.select(
        {SelectionItem(*other.parents().front()), SelectionItem(*shape_.parents().front())});
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(plug(other, "inMesh").source()->node().name_text(), "tessora_node1");
    EXPECT_EQ(node().name_text(), "polyCube1");
}

TEST_F(PluginCommandTest, TheDirectPathWritesTheUvSetAtOnceAndMakesNoNode) {
    scene.records_history = false;
    MeshNode& box = add_cube("box");
    const std::string before = shown(box);
    select(*box.parents().front());
    const size_t nodes = scene.nodes().size();
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(scene.nodes().size(), nodes);
    EXPECT_NE(shown(box), before);
}

TEST_F(PluginCommandTest, TheDirectPathReturnsTheStatusOfTheUnwrap) {
    scene.records_history = false;
    MeshNode& box = add_cube("box");
    select(*box.parents().front());
    errors_of(
        [&] { EXPECT_FALSE(run("tessora -mc newset")); }); // createUVSetDataMesh fails on a node
    EXPECT_EQ(undo.undo_count(), 0u);
}

TEST_F(PluginCommandTest, ZeroTweaksCountAsNoTweaks) {
    set(shape_, "pnts[3].pntx", 0.0);
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(scene.find("polyTweak1"), nullptr);
}

// === Attribute writes ========================================================================

TEST_F(PluginCommandTest, NanTweaksCountAsNone) {
    set(shape_, "pnts[3].pntx", std::nan(""));
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(scene.find("polyTweak1"), nullptr);
}

TEST_F(PluginCommandTest, EveryAttributeIsWritten) {
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    for (const auto& write : k_constant_writes)
        EXPECT_EQ(shows(node(), write[0]), write[1]) << write[0];
}

class PluginWriteFaultTest : public PluginCommandTest,
                             public ::testing::WithParamInterface<unsigned> {};

TEST_P(PluginWriteFaultTest, ReportsWhichWriteFailedAndStillConnects) {
    static const char* const k_tags[] = {
        "uv set",      "charts",       "stretch",          "padding",      "tex_width",
        "tex_height",  "high_quality", "keep_seams",       "use_grooves",  "groove_angle",
        "use_ridges",  "ridge_angle",  "adjacency_method", "epsilon",      "skip_compute",
        "res_stretch", "res_charts",   "mesh_path",        "visualization"};
    faultpoint::Scope scope("MPlug::setValue", MS::kEndOfFile, GetParam() + 1);
    const std::string text = errors_of([&] { EXPECT_EQ(run("tessora"), MS::kSuccess); });
    EXPECT_EQ(text, std::string("Failed to connect node attribute: ") + k_tags[GetParam()] + "\n");
    EXPECT_EQ(node().node_type().name, "tessora_node");
    EXPECT_EQ(shows(node(), "Visualization"), "0"); // writes after the failed one were skipped
}

INSTANTIATE_TEST_SUITE_P(Writes, PluginWriteFaultTest, ::testing::Range(0u, 19u));

TEST_F(PluginCommandTest, FailuresOfThePathAndTheNodeAreReported) {
    faultpoint::Scope path("MDagPath::fullPathName", MS::kEndOfFile);
    const std::string text = errors_of([&] { EXPECT_EQ(run("tessora"), MS::kSuccess); });
    EXPECT_EQ(text, "Failed to retrieve mesh_path\n");
    EXPECT_EQ(shows(node(), "Charts_result"), "0");
    EXPECT_EQ(shows(node(), "Mesh_path"), "");
    EXPECT_EQ(shows(node(), "Visualization"), "0");
}

TEST_F(PluginCommandTest, AFailureToCreateTheNodeIsReportedAndTheConnectionFails) {
    faultpoint::Scope scope("MDGModifier::createNode", MS::kFailure);
    errors_of([&] { EXPECT_FALSE(run("tessora")); });
    ASSERT_FALSE(script.lines.empty());
    EXPECT_EQ(script.lines.front(),
              "Invalid Modifier Node: inMesh and outMesh attributes are required.");
    EXPECT_EQ(node().name_text(), "polyCube1");
}

// === Results =================================================================================

TEST_F(PluginCommandTest, DoUndoAndRedoReturnDifferentResults) {
    CommandResult result;
    ASSERT_EQ(Commands::current().run("tessora", {}, result), MS::kSuccess);
    EXPECT_EQ(result.kind, CommandResult::Kind::none);
    undo.undo();
    EXPECT_EQ(result_text(), "tmod undo succeeded!");
    undo.redo();
    EXPECT_EQ(Commands::current().result().kind, CommandResult::Kind::integer);
    EXPECT_EQ(result_text(), "1");
}

TEST_F(PluginCommandTest, AFailedUndoAndRedoAreReported) {
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    {
        faultpoint::Scope scope("MDGModifier::undoIt", MS::kLicenseFailure);
        EXPECT_EQ(undo.undo(), MS::kLicenseFailure);
        EXPECT_EQ(result_text(), "tmod undo failed!");
    }
    faultpoint::Scope scope("MDGModifier::doIt", MS::kEndOfFile);
    EXPECT_EQ(undo.redo(), MS::kEndOfFile);
    EXPECT_EQ(result_text(), "0");
}

// === Registration ============================================================================

struct StepFault {
    const char* point;
    const char* text;
    bool command_stays;
    bool node_stays;
};

class PluginRegistrationTest : public PluginCommandTest,
                               public ::testing::WithParamInterface<StepFault> {};

TEST_P(PluginRegistrationTest, AFailingStepIsReportedAndEarlierStepsStay) {
    scene.clear();
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess) << error;
    const StepFault& fault = GetParam();
    MStatus status;
    std::string text;
    {
        faultpoint::Scope scope(fault.point, MS::kLicenseFailure);
        text = errors_of([&] { status = load(); });
    }
    EXPECT_EQ(status, MS::kLicenseFailure);
    EXPECT_EQ(text, std::string(fault.text) + ": " +
                        MStatus(MS::kLicenseFailure).errorString().asChar() + "\n");
    EXPECT_FALSE(Plugins::current().is_loaded("tessora"));
    EXPECT_EQ(Commands::current().knows("tessora"), fault.command_stays);
    EXPECT_EQ(bool(scene.find_type("tessora_node")), fault.node_stays);
    EXPECT_TRUE(MenuTree::current().items("mainModifyMenu").empty());
    errors_of([&] { Plugins::current().unload("tessora", true, error); });
}

INSTANTIATE_TEST_SUITE_P(
    Steps, PluginRegistrationTest,
    ::testing::Values(StepFault{"MFnPlugin::registerCommand", "registerCommand", false, false},
                      StepFault{"MFnPlugin::registerNode", "Failed to register \"tessora_node\"\n",
                                true, false},
                      StepFault{"MFnPlugin::registerUI", "registerUI", true, true},
                      StepFault{"MFnPlugin::addMenuItem", "addMenuItem", true, true}));

TEST_F(PluginCommandTest, ACopyOfTheLibraryFailsBecauseNamesAreTaken) {
    namespace files = std::filesystem;
    const files::path copy = files::temp_directory_path() / "tessora_copy.so";
    files::copy_file(TESSORA_PLUGIN_FILE, copy, files::copy_options::overwrite_existing);
    const std::string text =
        errors_of([&] { EXPECT_FALSE(Plugins::current().load(copy.string(), error)); });
    EXPECT_EQ(text.rfind("registerCommand: ", 0), 0u);
    EXPECT_EQ(Plugins::current().names(), std::vector<std::string>{"tessora"});
    files::remove(copy);
}

TEST_F(PluginCommandTest, AFailingCommandDeregistrationStopsUnloading) {
    scene.clear();
    faultpoint::Scope scope("MFnPlugin::deregisterCommand", MS::kEndOfFile);
    const std::string text = errors_of(
        [&] { EXPECT_EQ(Plugins::current().unload("tessora", false, error), MS::kEndOfFile); });
    EXPECT_EQ(text.rfind("deregisterCommand: ", 0), 0u);
    EXPECT_TRUE(Commands::current().knows("tessora"));
    EXPECT_TRUE(scene.find_type("tessora_node"));
}

TEST_F(PluginCommandTest, AFailingNodeDeregistrationLeavesTheMenuItem) {
    scene.clear();
    std::string text;
    {
        faultpoint::Scope scope("MFnPlugin::deregisterNode", MS::kEndOfFile);
        text = errors_of(
            [&] { EXPECT_EQ(Plugins::current().unload("tessora", false, error), MS::kEndOfFile); });
    }
    EXPECT_EQ(text.rfind("failed to deregister \"tessora_node\"\n: ", 0), 0u);
    EXPECT_FALSE(Commands::current().knows("tessora"));
    EXPECT_EQ(MenuTree::current().items("mainModifyMenu").size(), 1u);
    EXPECT_TRUE(Plugins::current().is_loaded("tessora"));
    errors_of([&] { Plugins::current().unload("tessora", true, error); });
    EXPECT_FALSE(Plugins::current().is_loaded("tessora"));
    EXPECT_TRUE(MenuTree::current().items("mainModifyMenu").empty());
}

TEST_F(PluginCommandTest, UserInterfaceProceduresRunOnlyInInteractiveMode) {
    scene.clear();
    EXPECT_TRUE(script.called.empty());
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess);
    EXPECT_TRUE(script.called.empty());
    Plugins::current().mode = AppMode::interactive;
    EXPECT_EQ(load(), MS::kSuccess); // a missing procedure does not fail the load
    // Before, a statement that fills the Modify menu.
    EXPECT_EQ(script.called, (std::vector<std::string>{"if", "tessoraCreateUI"}));
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess);
    EXPECT_EQ(script.called.back(), "tessoraDeleteUI");
    Plugins::current().mode = AppMode::batch;
}

TEST_F(PluginCommandTest, TheScriptLanguageIsNotifiedOfTheCommand) {
    scene.clear();
    script.commands.clear();
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess);
    ASSERT_EQ(load(), MS::kSuccess);
    EXPECT_EQ(script.commands, (std::vector<std::string>{"-tessora", "+tessora"}));
}

TEST_F(PluginCommandTest, AFileThatIsNotAPluginIsRejected) {
    namespace files = std::filesystem;
    EXPECT_EQ(Plugins::current().load("no_such_plugin", error), MS::kNotFound);
    EXPECT_EQ(error, "Plug-in \"no_such_plugin\" was not found on MAYA_PLUG_IN_PATH.");
    const files::path text = files::temp_directory_path() / "tessora_text.so";
    std::ofstream(text) << "not a library";
    EXPECT_EQ(Plugins::current().load(text.string(), error), MS::kFailure);
    EXPECT_NE(error.find("could not be loaded"), std::string::npos);
    files::remove(text);
}

} // namespace host::graph::testing
