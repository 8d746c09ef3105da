// Graph modifiers: recording, doIt, undoIt.
#include "faultpoint/faultpoint.h"
#include "tests/host/graph/fixture.h"

#include <maya/MDGModifier.h>
#include <maya/MDagModifier.h>
#include <maya/MFnDagNode.h>
#include <maya/MGlobal.h>
#include <maya/MObjectHandle.h>

namespace host::graph::testing {

using ModifierTest = SceneTest;

TEST_F(ModifierTest, ANodeIsUsableBeforeDoIt) {
    MDGModifier modifier;
    const MObject object = modifier.createNode("scaleNode");
    Node& node = *node_of(object);
    EXPECT_EQ(node.name_text(), "scaleNode1");
    EXPECT_FALSE(MObjectHandle(object).isValid());
    set(node, "input", 3.0);
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_TRUE(MObjectHandle(object).isValid());
    EXPECT_EQ(pull(node, "result"), 6.0);
}

TEST_F(ModifierTest, ANodeAfterUndoIsAliveButNotValid) {
    MDGModifier modifier;
    const MObjectHandle handle(modifier.createNode(MTypeId(0x1234)));
    modifier.doIt();
    EXPECT_EQ(modifier.undoIt(), MS::kSuccess);
    EXPECT_TRUE(handle.isAlive());
    EXPECT_FALSE(handle.isValid());
    EXPECT_TRUE(handle.object().isNull());
}

TEST_F(ModifierTest, RepeatedDoItAccumulatesChanges) {
    Node& first = add("scaleNode");
    MDGModifier modifier;
    Node& second = *node_of(modifier.createNode("scaleNode"));
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    modifier.connect(MPlug(&plug(first, "result")), MPlug(&plug(second, "input")));
    EXPECT_EQ(plug(second, "input").source(), nullptr);
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_EQ(plug(second, "input").source(), &plug(first, "result"));

    EXPECT_EQ(modifier.undoIt(), MS::kSuccess);
    EXPECT_FALSE(second.is_valid());
    EXPECT_EQ(plug(second, "input").source(), nullptr);
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_TRUE(second.is_valid());
    EXPECT_EQ(plug(second, "input").source(), &plug(first, "result"));
}

TEST_F(ModifierTest, AFailureLeavesEarlierChangesInPlace) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    MDGModifier modifier;
    Node& third = *node_of(modifier.createNode("scaleNode"));
    modifier.connect(MPlug(&plug(first, "other")), MPlug(&plug(second, "input")));
    EXPECT_EQ(modifier.doIt(), MS::kFailure); // already connected
    EXPECT_TRUE(third.is_valid());
    scene.disconnect(plug(first, "result"), plug(second, "input"));
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_EQ(modifier.undoIt(), MS::kSuccess);
    EXPECT_FALSE(third.is_valid());
}

TEST_F(ModifierTest, UndoOfAConnectionKeepsTheValueThatCameThroughIt) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    MDGModifier modifier;
    modifier.connect(MPlug(&plug(first, "result")), MPlug(&plug(second, "input")));
    modifier.doIt();
    pull(second, "input");
    modifier.undoIt();
    EXPECT_EQ(pull(second, "input"), 2.0);
}

TEST_F(ModifierTest, DestroyingAModifierChangesNothing) {
    Node* node = nullptr;
    {
        MDGModifier modifier;
        node = node_of(modifier.createNode("scaleNode"));
        modifier.doIt();
    }
    EXPECT_TRUE(node->is_valid());
}

TEST_F(ModifierTest, DagTypesRequireTheDagModifier) {
    MDGModifier modifier;
    MStatus status;
    EXPECT_TRUE(modifier.createNode("transform", &status).isNull());
    EXPECT_EQ(status, MS::kInvalidParameter);
    EXPECT_TRUE(modifier.createNode("noSuchType", &status).isNull());
    EXPECT_EQ(status, MS::kInvalidParameter);
}

TEST_F(ModifierTest, ConnectingTheNullPlugFails) {
    MDGModifier modifier;
    EXPECT_EQ(modifier.connect(MPlug(), MPlug()), MS::kInvalidParameter);
    EXPECT_EQ(modifier.disconnect(MPlug(), MPlug()), MS::kInvalidParameter);
}

TEST_F(ModifierTest, DeletingANodeRestoresItsConnectionsOnUndo) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    Node& third = add("scaleNode");
    connect(first, "result", second, "input");
    connect(second, "result", third, "input");
    EXPECT_EQ(pull(third, "result"), 8.0);
    MDGModifier modifier;
    modifier.deleteNode(MObject(&second));
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_EQ(plug(third, "input").source(), nullptr);
    EXPECT_EQ(pull(third, "input"), 4.0);
    modifier.undoIt();
    EXPECT_EQ(plug(second, "input").source(), &plug(first, "result"));
    EXPECT_EQ(plug(third, "input").source(), &plug(second, "result"));
    set(first, "input", 2.0);
    EXPECT_EQ(pull(third, "result"), 16.0);
}

TEST_F(ModifierTest, RenamingAndSettingAreUndone) {
    Node& node = add("scaleNode", "old");
    MDGModifier modifier;
    modifier.renameNode(MObject(&node), "fresh");
    modifier.newPlugValueDouble(MPlug(&plug(node, "input")), 8.0);
    modifier.doIt();
    EXPECT_EQ(node.name_text(), "fresh");
    EXPECT_EQ(pull(node, "input"), 8.0);
    modifier.undoIt();
    EXPECT_EQ(node.name_text(), "old");
    EXPECT_EQ(pull(node, "input"), 1.0);
    modifier.doIt();
    EXPECT_EQ(pull(node, "input"), 8.0);
}

TEST_F(ModifierTest, AddedAttributesAreUndone) {
    Node& node = add("scaleNode");
    MFnNumericAttribute number;
    const MObject extra = number.create("extra", "ex", MFnNumericData::kLong, 5);
    MDGModifier modifier;
    modifier.addAttribute(MObject(&node), extra);
    modifier.doIt();
    EXPECT_EQ(pull(node, "extra"), 5.0);
    set(node, "extra", 9);
    modifier.undoIt();
    EXPECT_EQ(node.find_attribute("extra"), nullptr);
    modifier.doIt();
    EXPECT_EQ(pull(node, "extra"), 9.0);
}

TEST_F(ModifierTest, AShapeWithoutAParentGetsATransform) {
    MDagModifier modifier;
    const MObject made = modifier.createNode("mesh");
    modifier.doIt();
    EXPECT_EQ(made.apiType(), MFn::kTransform);
    ASSERT_EQ(node_of(made)->as_dag_node()->children().size(), 1u);
    EXPECT_EQ(MObject(node_of(made)->as_dag_node()->children()[0]).apiType(), MFn::kMesh);
    modifier.undoIt();
    EXPECT_FALSE(node_of(made)->is_valid());
}

TEST_F(ModifierTest, ReparentingIsUndoneToTheOldPosition) {
    DagNode& a = add_dag("transform", "a");
    DagNode& b = add_dag("transform", "b");
    DagNode& first = add_dag("transform", "first", &a);
    add_dag("transform", "second", &a);
    MDagModifier modifier;
    modifier.reparentNode(MObject(&first), MObject(&b));
    EXPECT_EQ(modifier.doIt(), MS::kSuccess);
    EXPECT_EQ(full_name(first.path()), "|b|first");
    modifier.undoIt();
    EXPECT_EQ(full_name(first.path()), "|a|first");
    EXPECT_EQ(a.children()[0], &first);
}

TEST_F(ModifierTest, ShapesCannotMoveToTheTopLevelNorNodesBelowThemselves) {
    MeshNode& shape = add_cube();
    DagNode& outer = add_dag("transform", "outer");
    DagNode& inner = add_dag("transform", "inner", &outer);
    MDagModifier one, two;
    one.reparentNode(MObject(&shape));
    EXPECT_EQ(one.doIt(), MS::kInvalidParameter);
    two.reparentNode(MObject(&outer), MObject(&inner));
    EXPECT_EQ(two.doIt(), MS::kInvalidParameter);
}

TEST_F(ModifierTest, FaultPointsFailRecordingAndDoIt) {
    MDGModifier modifier;
    MStatus status;
    {
        faultpoint::Scope scope("MDGModifier::createNode", MS::kInsufficientMemory);
        EXPECT_TRUE(modifier.createNode("scaleNode", &status).isNull());
        EXPECT_EQ(status, MS::kInsufficientMemory);
    }
    Node& node = *node_of(modifier.createNode("scaleNode"));
    faultpoint::Scope scope("MDGModifier::doIt", MS::kLicenseFailure);
    EXPECT_EQ(modifier.doIt(), MS::kLicenseFailure);
    EXPECT_FALSE(node.is_valid());
}

} // namespace host::graph::testing
