// Loading and unloading while the scene contains unwraps.
#include "host/base/strictness.h"
#include "host/graph/command_registry.h"
#include "host/ui/menus.h"
#include "tests/plugin_in_host/fixture.h"

#include <cstdlib>

namespace plugin_in_host {

using host::graph::Callbacks;
using host::graph::Plugins;

class InHostRegistrationTest : public InHostTest {
protected:
    /// A box that is unwrapped and evaluated: callbacks are attached and the command is in the undo
    /// queue.
    void unwrap_box() {
        ASSERT_TRUE(run("polyCube -n box; tessora")) << last_error;
        shown("boxShape");
        ASSERT_EQ(callbacks_attached(), 4u);
    }
};

TEST_F(InHostRegistrationTest, ForcedUnloadingRemovesTheCallbacksOfExistingNodes) {
    unwrap_box();
    ASSERT_TRUE(run("unloadPlugin -f tessora")) << last_error;
    EXPECT_EQ(callbacks_attached(), 0u);
    Callbacks::current().fire_post_render("modelPanel1");
    EXPECT_TRUE(run("delete tessora_node1"))
        << last_error; // must not call into the unloaded library
}

TEST_F(InHostRegistrationTest, TheModifyMenuKeepsItsOwnItemsBesideThePluginsOne) {
    const bool was_strict = host::is_strict();
    host::set_strict(true); // the menu is then filled on first opening, if it is empty
    ASSERT_TRUE(run("unloadPlugin tessora")) << last_error;
    host::MenuTree& menus = host::MenuTree::current();
    ASSERT_TRUE(menus.items("mainModifyMenu").empty());
    Plugins::current().mode = host::graph::AppMode::interactive;
    EXPECT_TRUE(run("loadPlugin tessora")) << last_error;
    Plugins::current().mode = host::graph::AppMode::batch;
    menus.open("mainModifyMenu");
    std::vector<std::string> labels;
    for (const host::MenuItem& item : menus.items("mainModifyMenu"))
        labels.push_back(item.label);
    EXPECT_EQ(labels, (std::vector<std::string>{"Reset Transformations", "Tessora"}));
    menus.remove(menus.items("mainModifyMenu").front().name);
    host::set_strict(was_strict);
}

TEST_F(InHostRegistrationTest, ForcedUnloadingClearsTheUndoQueue) {
    unwrap_box();
    ASSERT_TRUE(run("unloadPlugin -f tessora")) << last_error;
    EXPECT_EQ(undo_queue.undo_count(), 0u);
    EXPECT_FALSE(run("undo"));
}

TEST_F(InHostRegistrationTest, AfterForcedUnloadingTheMeshIsStillDisplayed) {
    unwrap_box();
    const std::string before = shown("boxShape");
    ASSERT_TRUE(run("unloadPlugin -f tessora")) << last_error;
    EXPECT_EQ(shown("boxShape"), before);
}

TEST_F(InHostRegistrationTest, LoadingAgainWorksBesideUnknownNodesOfTheFirstLoading) {
    unwrap_box();
    ASSERT_TRUE(run("unloadPlugin -f tessora; loadPlugin tessora")) << last_error;
    ASSERT_TRUE(run("polyCube -n other; tessora")) << last_error;
    publications();
    shown("otherShape");
    EXPECT_EQ(publications(), 1u);
    EXPECT_EQ(callbacks_attached(), 4u);
}

TEST_F(InHostRegistrationTest, TheFifthLoadingWorksLikeTheFirst) {
    std::string first;
    for (int round = 0; round < 5; ++round) {
        unwrap_box();
        const std::string mesh = shown("boxShape");
        first = first.empty() ? mesh : first;
        EXPECT_EQ(mesh, first);
        ASSERT_TRUE(run("file -f -new; unloadPlugin tessora; loadPlugin tessora")) << last_error;
        EXPECT_EQ(host::MenuTree::current().items("mainModifyMenu").size(), 1u);
    }
}

TEST_F(InHostRegistrationTest, LoadingTwiceKeepsTheFirstOneWorking) {
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(run("loadPlugin tessora"));
    EXPECT_EQ(::testing::internal::GetCapturedStderr().rfind("registerCommand: ", 0), 0u);
    unwrap_box();
    ASSERT_TRUE(run("file -f -new; unloadPlugin tessora")) << last_error;
    EXPECT_TRUE(host::MenuTree::current().items("mainModifyMenu").empty());
    EXPECT_FALSE(host::graph::Commands::current().knows("tessora"));
}

TEST_F(InHostRegistrationTest, AFailedNodeDeregistrationRemovesOnlyTheCommand) {
    ::testing::internal::CaptureStderr();
    {
        faultpoint::Scope refusal("MFnPlugin::deregisterNode", MS::kNotImplemented);
        EXPECT_FALSE(run("unloadPlugin tessora"));
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              std::string("failed to deregister \"tessora_node\"\n: ") +
                  MStatus(MS::kNotImplemented).errorString().asChar() + "\n");
    EXPECT_FALSE(host::graph::Commands::current().knows("tessora"));
    EXPECT_TRUE(scene.find_type("tessora_node"));
    EXPECT_EQ(host::MenuTree::current().items("mainModifyMenu").size(), 1u);
}

TEST_F(InHostRegistrationTest, AFailedMenuRemovalDoesNotStopTheUnloading) {
    faultpoint::Scope refusal("MFnPlugin::removeMenuItem", MS::kFailure);
    EXPECT_TRUE(run("unloadPlugin tessora")) << last_error;
    EXPECT_FALSE(Plugins::current().is_loaded("tessora"));
}

TEST_F(InHostRegistrationTest, LoadingSucceedsWithoutALoadPath) {
    ASSERT_TRUE(run("unloadPlugin tessora"));
    faultpoint::Scope refusal("MFnPlugin::loadPath", MS::kFailure);
    EXPECT_TRUE(run("loadPlugin tessora")) << last_error;
}

} // namespace plugin_in_host
