// The behaviours that differ between a strict and a lenient host, each tested in both.
#include "host/base/strictness.h"
#include "host/graph/callbacks.h"
#include "host/ui/menus.h"
#include "tests/host/graph/fixture.h"
#include "tests/host/graph/small_script.h"

#include <maya/MArgList.h>
#include <maya/MDGModifier.h>
#include <maya/MFnDagNode.h>
#include <maya/MFnNumericData.h>
#include <maya/MNodeMessage.h>
#include <maya/MPxCommand.h>

namespace host::graph::testing {

class StrictnessTest : public SceneTest, public ::testing::WithParamInterface<bool> {
protected:
    StrictnessTest() : before_(is_strict()) { set_strict(GetParam()); }
    ~StrictnessTest() override { set_strict(before_); }

private:
    bool before_;
};

INSTANTIATE_TEST_SUITE_P(Host, StrictnessTest, ::testing::Bool(), [](const auto& info) {
    return std::string(info.param ? "Strict" : "Lenient");
});

namespace {

/// Duplicates the mesh shape "boxShape" and hides the copy, without a modifier.
class DuplicateCommand : public MPxCommand {
public:
    MStatus doIt(const MArgList&) override {
        const MObject copy = MFnDagNode(MObject(Scene::current().find("boxShape"))).duplicate();
        return MFnDagNode(MFnDagNode(copy).child(0)).setIntermediateObject(true);
    }
    MStatus undoIt() override { return MS::kSuccess; }
    bool isUndoable() const override { return true; }
    static void* create() { return new DuplicateCommand; }
};

int g_calls = 0;
void count_call(MObject&, void*) { g_calls += 1; }

bool is_here(const void* code) { return code == reinterpret_cast<const void*>(count_call); }

} // namespace

TEST_P(StrictnessTest, ApiCallsOfACommandAreUndoneOnlyByALenientHost) {
    add_cube();
    const size_t before = scene.nodes().size();
    Commands::current().add("duplicateBox", DuplicateCommand::create, nullptr);
    CommandResult result;
    EXPECT_EQ(Commands::current().run("duplicateBox", {}, result), MS::kSuccess);
    EXPECT_EQ(scene.nodes().size(), before + 2);
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(scene.nodes().size(), GetParam() ? before + 2 : before);
    Commands::current().remove("duplicateBox");
}

TEST_P(StrictnessTest, DuplicatingAShapeCopiesTweaksOnlyInAStrictHost) {
    MeshNode& shape = add_cube();
    set(shape, "pnts[0].pntx", 10);
    EXPECT_EQ(point(shape, 0).x, 9.5f);
    MStatus status;
    const MObject made = MFnDagNode(MObject(&shape)).duplicate(false, false, &status);
    ASSERT_EQ(status, MS::kSuccess);
    DagNode& copy = *node_of(made)->as_dag_node();
    EXPECT_EQ(copy.name_text(), "box1");
    ASSERT_EQ(copy.children().size(), 1u);
    auto& copied = static_cast<MeshNode&>(*copy.children()[0]);
    EXPECT_EQ(copied.name_text(), "boxShape1");
    EXPECT_EQ(point(copied, 0).x, GetParam() ? 9.5f : -0.5f);
    EXPECT_EQ(copied.has_tweaks(), GetParam());
}

TEST_P(StrictnessTest, UndoOfACreationCallsPreRemovalCallbacksOnlyInALenientHost) {
    g_calls = 0;
    EditPtr creation = add_node_edit(*scene.make_node(scene.find_type("scaleNode")), nullptr);
    creation->redo();
    MObject object(scene.find("scaleNode1"));
    const MCallbackId id = MNodeMessage::addNodePreRemovalCallback(object, count_call);
    creation->undo();
    EXPECT_EQ(g_calls, GetParam() ? 0 : 1);
    creation->redo();
    g_calls = 0;
    EditPtr deletion = remove_node_edit(*node_of(object));
    deletion->redo();
    EXPECT_EQ(g_calls, 1);
    EXPECT_EQ(MMessage::removeCallback(id), MS::kSuccess);
}

TEST_P(StrictnessTest, CallbacksLeftByAPluginAreReportedByAStrictHost) {
    SmallScript script;
    g_calls = 0;
    Node& node = add("scaleNode", "watched");
    MObject object(&node);
    MNodeMessage::addNodePreRemovalCallback(object, count_call);
    Callbacks::current().unload_code(is_here, "left");
    scene.remove(node);
    EXPECT_EQ(g_calls, 0);
    if (GetParam())
        EXPECT_EQ(script.lines,
                  std::vector<std::string>{"Callback of the unloaded plug-in \"left\" on "
                                           "\"watched\": the application would crash here."});
    else
        EXPECT_TRUE(script.lines.empty());
    EXPECT_EQ(Callbacks::current().of_node(node).size(), GetParam() ? 1u : 0u);
}

TEST_P(StrictnessTest, CallbacksOnNodesOfARemovedTypeAreReportedByAStrictHost) {
    SmallScript script;
    g_calls = 0;
    register_node_type(
        "shortLived", 0x4321, ScaleNode::create, [] { return MStatus(); }, "left");
    Node& node = add("shortLived", "watched");
    MObject object(&node);
    MNodeMessage::addNodePreRemovalCallback(object, count_call);
    scene.remove_type("shortLived");
    scene.remove(node);
    EXPECT_EQ(g_calls, 0);
    EXPECT_EQ(script.lines.size(), GetParam() ? 1u : 0u);
}

TEST_P(StrictnessTest, ACompoundWithAConnectedComponentCanBeSetOnlyInALenientHost) {
    Node& driver = add("scaleNode");
    MeshNode& shape = add_cube();
    set(shape, "pnts[2].pntx", 0.5);
    connect(driver, "result", shape, "pnts[2].pntx");
    EXPECT_EQ(pull(shape, "pnts[2].pntx"), 2.0);

    MFnNumericData data;
    const MObject zero = data.create(MFnNumericData::k3Float);
    EXPECT_EQ(set_value(plug(shape, "pnts[2]"), PlugValue::of_data(zero.host_object())),
              GetParam() ? MS::kFailure : MS::kSuccess);
    EXPECT_EQ(pull(shape, "pnts[2].pntx"), 2.0);
    scene.disconnect(plug(driver, "result"), plug(shape, "pnts[2].pntx"));
    EXPECT_EQ(pull(shape, "pnts[2].pntx"), GetParam() ? 2.0 : 0.0);
    EXPECT_EQ(set_value(plug(shape, "pnts[2]"), PlugValue::of_data(zero.host_object())),
              MS::kSuccess);
    EXPECT_EQ(pull(shape, "pnts[2].pntx"), 0.0);
}

TEST_P(StrictnessTest, UndoingAModifierThatWasNotDoneFailsInAStrictHost) {
    MDGModifier modifier;
    EXPECT_EQ(modifier.undoIt(), GetParam() ? MS::kFailure : MS::kSuccess);
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_EQ(modifier.undoIt(), MS::kSuccess);
    EXPECT_EQ(modifier.undoIt(), GetParam() ? MS::kFailure : MS::kSuccess);
}

TEST_P(StrictnessTest, AnItemAddedBeforeTheFirstOpeningKeepsBuiltInItemsAwayInAStrictHost) {
    MenuTree& menus = MenuTree::current();
    EXPECT_EQ(menus.is_filled_on_opening("mainModifyMenu"), GetParam());
    const std::string early = menus.add("mainModifyMenu", "Early", "");
    menus.open("mainModifyMenu");
    EXPECT_EQ(menus.items("mainModifyMenu").size(), 1u);
    menus.remove(early);
    menus.open("mainModifyMenu");
    EXPECT_EQ(menus.items("mainModifyMenu").size(), GetParam() ? 1u : 0u);
    const std::string late = menus.add("mainModifyMenu", "Late", "");
    menus.open("mainModifyMenu");
    EXPECT_EQ(menus.items("mainModifyMenu").size(), GetParam() ? 2u : 1u);
    for (const MenuItem& item : menus.items("mainModifyMenu"))
        menus.remove(item.name);
}

} // namespace host::graph::testing
