// Loading and unloading the plug-in library, and unwrapping by its command.
#include "faultpoint/faultpoint.h"
#include "tests/plugin_in_host/plugin_fixture.h"

namespace host::graph::testing {

TEST_F(PluginTest, LoadingRegistersCommandNodeAndMenuItem) {
    EXPECT_TRUE(Plugins::current().is_loaded("tessora"));
    EXPECT_TRUE(Commands::current().knows("tessora"));
    EXPECT_TRUE(scene.find_type("tessora_node"));
    EXPECT_TRUE(scene.find_type(0x113C40u));
    const auto items = MenuTree::current().items("mainModifyMenu");
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].label, "Tessora");
    EXPECT_EQ(items[0].command, "tessoraMenuItemClicked");
    PluginInfo info;
    ASSERT_TRUE(Plugins::current().info("tessora", info));
    EXPECT_EQ(info.vendor, "Brightfold Labs");
    EXPECT_EQ(info.version, "2.11");
    EXPECT_EQ(info.api_version, "200800");
}

TEST_F(PluginTest, UnloadingRemovesEverything) {
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess) << error;
    EXPECT_FALSE(Plugins::current().is_loaded("tessora"));
    EXPECT_FALSE(Commands::current().knows("tessora"));
    EXPECT_FALSE(scene.find_type("tessora_node"));
    EXPECT_TRUE(MenuTree::current().items("mainModifyMenu").empty());
}

TEST_F(PluginTest, APluginCanBeLoadedAgainAfterUnloading) {
    ASSERT_EQ(Plugins::current().unload("tessora", false, error), MS::kSuccess);
    EXPECT_EQ(load(), MS::kSuccess) << error;
    EXPECT_TRUE(Commands::current().knows("tessora"));
}

TEST_F(PluginTest, LoadingTwiceFailsAtTheFirstRegistration) {
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(load());
    EXPECT_EQ(::testing::internal::GetCapturedStderr().rfind("registerCommand: ", 0), 0u);
    EXPECT_TRUE(Plugins::current().is_loaded("tessora"));
    EXPECT_EQ(MenuTree::current().items("mainModifyMenu").size(), 1u);
}

TEST_F(PluginTest, UnloadingFailsWhileNodesAreInUse) {
    add("tessora_node", "unwrap1");
    EXPECT_FALSE(Plugins::current().unload("tessora", false, error));
    EXPECT_NE(error.find("unwrap1"), std::string::npos);
    EXPECT_TRUE(Plugins::current().is_loaded("tessora"));
}

TEST_F(PluginTest, NodesOfAnUnloadedPluginBecomeUnknownAndKeepTheirValues) {
    Node& node = add("tessora_node");
    set(node, "Padding", 7);
    ASSERT_EQ(Plugins::current().unload("tessora", true, error), MS::kSuccess) << error;
    EXPECT_EQ(node.type(), MFn::kUnknown);
    EXPECT_TRUE(node.node_type().is_unknown);
    EXPECT_EQ(std::string(node.type_name().asChar()), "tessora_node");
    EXPECT_EQ(pull(node, "Padding"), 7.0);
}

TEST_F(PluginTest, AMeshWithHistoryGetsANodeInItsHistory) {
    MeshNode& shape = add_cube_with_history();
    select(*shape.parents().front());
    ASSERT_EQ(run("tessora -pad 4"), MS::kSuccess);
    Slot* source = plug(shape, "inMesh").source();
    ASSERT_NE(source, nullptr);
    Node& node = source->node();
    EXPECT_EQ(std::string(node.type_name().asChar()), "tessora_node");
    EXPECT_EQ(pull(node, "Padding"), 4.0);
    EXPECT_EQ(plug(node, "inMesh").source()->node().name_text(), "polyCube1");
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(plug(shape, "inMesh").source()->node().name_text(), "polyCube1");
    EXPECT_FALSE(node.is_valid());
    EXPECT_EQ(undo.redo(), MS::kSuccess);
    EXPECT_EQ(plug(shape, "inMesh").source()->node().name_text(), "tessora_node1");
}

TEST_F(PluginTest, AMeshWithoutHistoryGetsAHiddenCopyThatUndoRemoves) {
    MeshNode& shape = add_cube("box");
    DagNode& transform = *shape.parents().front();
    select(transform);
    const size_t before = scene.nodes().size();
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    ASSERT_EQ(transform.children().size(), 2u);
    EXPECT_TRUE(transform.children()[1]->is_intermediate());
    EXPECT_EQ(scene.nodes().size(), before + 2);
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(transform.children().size(), 1u);
    EXPECT_EQ(scene.nodes().size(), before);
    EXPECT_EQ(undo.redo(), MS::kSuccess);
    EXPECT_EQ(transform.children().size(), 2u);
    EXPECT_EQ(scene.nodes().size(), before + 2);
}

TEST_F(PluginTest, AnUnknownFlagLeavesTheSceneUnchanged) {
    MeshNode& shape = add_cube("box");
    select(*shape.parents().front());
    const size_t before = scene.nodes().size();
    EXPECT_EQ(run("tessora -nonsense 1"), MS::kFailure);
    EXPECT_EQ(scene.nodes().size(), before);
    ASSERT_FALSE(script.lines.empty());
    EXPECT_EQ(script.lines.back(), "Invalid flag '-nonsense'.");
}

} // namespace host::graph::testing
