#include "tests/host/graph/fixture.h"

namespace host::graph::testing {

using EvaluationTest = SceneTest;

TEST_F(EvaluationTest, ANewNodeHasTheDefaultsOfItsAttributes) {
    Node& node = add("scaleNode");
    EXPECT_EQ(pull(node, "input"), 1.0);
    EXPECT_EQ(pull(node, "factor"), 2.0);
    EXPECT_EQ(pull(node, "other"), 0.0);
}

TEST_F(EvaluationTest, AnOutputIsComputedOnFirstReadOnly) {
    Node& node = add("scaleNode");
    set(node, "input", 3.0);
    EXPECT_EQ(ScaleNode::computes, 0);
    EXPECT_EQ(pull(node, "result"), 6.0);
    EXPECT_EQ(pull(node, "result"), 6.0);
    EXPECT_EQ(ScaleNode::computes, 1);
}

TEST_F(EvaluationTest, SettingAnInputDirtiesTheOutputsItAffects) {
    Node& node = add("scaleNode");
    pull(node, "result");
    set(node, "factor", 5.0);
    EXPECT_FALSE(is_clean(plug(node, "result")));
    EXPECT_EQ(pull(node, "result"), 5.0);
}

TEST_F(EvaluationTest, SettingAnInputThatAffectsNoOutputLeavesOutputsClean) {
    Node& node = add("scaleNode");
    pull(node, "result");
    set(node, "other", 5.0);
    EXPECT_TRUE(is_clean(plug(node, "result")));
}

TEST_F(EvaluationTest, ValuesTravelAlongConnections) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    set(first, "input", 10.0);
    EXPECT_EQ(pull(second, "result"), 40.0);
    set(first, "input", 1.0);
    EXPECT_EQ(pull(second, "result"), 4.0);
    EXPECT_EQ(ScaleNode::computes, 4);
}

TEST_F(EvaluationTest, DirtyMarksPropagateThroughSeveralNodes) {
    Node* chain[4];
    for (Node*& node : chain)
        node = &add("scaleNode");
    for (int i = 0; i < 3; ++i)
        connect(*chain[i], "result", *chain[i + 1], "input");
    EXPECT_EQ(pull(*chain[3], "result"), 16.0);
    set(*chain[0], "input", 2.0);
    EXPECT_FALSE(is_clean(plug(*chain[3], "result")));
    EXPECT_EQ(pull(*chain[3], "result"), 32.0);
}

TEST_F(EvaluationTest, AnOutputThatComputeDoesNotCleanIsComputedAgain) {
    Node& node = add("scaleNode");
    ScaleNode::cleans = false;
    EXPECT_EQ(pull(node, "result"), 2.0);
    EXPECT_FALSE(is_clean(plug(node, "result")));
    EXPECT_EQ(pull(node, "result"), 2.0);
    EXPECT_EQ(ScaleNode::computes, 2);
}

TEST_F(EvaluationTest, ConnectedVectorsPassOnAllComponents) {
    DagNode& from = add_dag("transform", "from");
    DagNode& to = add_dag("transform", "to");
    connect(from, "translate", to, "translate");
    set(from, "tx", 4);
    set(from, "tz", 6);
    EXPECT_EQ(pull(to, "tx"), 4.0);
    EXPECT_EQ(pull(to, "tz"), 6.0);
}

TEST_F(EvaluationTest, AShapesWorldMeshIsCleanOnceEvaluated) {
    MeshNode& shape = add_cube();
    Slot& world = plug(shape, "worldMesh[0]");
    set(shape, "pnts[0].pntx", 1);
    EXPECT_FALSE(is_clean(world));
    EXPECT_EQ(evaluate(world), MS::kSuccess);
    EXPECT_TRUE(is_clean(world));
}

TEST_F(EvaluationTest, AnOutputThatComputeDoesNotKnowKeepsItsValueAndIsClean) {
    Node& node = add("scaleNode");
    set(node, "unhandled", 7);
    set(node, "input", 3);
    EXPECT_EQ(pull(node, "unhandled"), 7.0);
    EXPECT_EQ(pull(node, "unhandled"), 7.0);
    EXPECT_EQ(ScaleNode::computes, 1);
}

TEST_F(EvaluationTest, APlugFedByADirtyPlugIsEvaluatedAgain) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "other");
    ScaleNode::cleans = false;
    EXPECT_EQ(pull(second, "other"), 2.0);
    EXPECT_EQ(pull(second, "other"), 2.0);
    EXPECT_EQ(ScaleNode::computes, 2);
    ScaleNode::cleans = true;
    pull(second, "other");
    pull(second, "other");
    EXPECT_EQ(ScaleNode::computes, 3);
}

TEST_F(EvaluationTest, AFailingComputeLeavesTheDestinationUnchanged) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    EXPECT_EQ(pull(second, "result"), 4.0);
    ScaleNode::answer = MS::kLicenseFailure;
    set(first, "input", 9.0);
    EXPECT_EQ(evaluate(plug(second, "input")), MS::kLicenseFailure);
    EXPECT_EQ(plug(second, "input").value.number(), 2.0);
    ScaleNode::answer = MS::kSuccess;
    EXPECT_EQ(pull(second, "result"), 36.0);
}

TEST_F(EvaluationTest, ABlockingNodeIsNotComputed) {
    Node& node = add("scaleNode");
    EXPECT_EQ(pull(node, "result"), 2.0);
    set(node, "nodeState", 2);
    set(node, "input", 7.0);
    EXPECT_EQ(pull(node, "result"), 2.0);
    EXPECT_EQ(ScaleNode::computes, 1);
    set(node, "nodeState", 0);
    EXPECT_EQ(pull(node, "result"), 14.0);
}

TEST_F(EvaluationTest, ChangingNodeStateDirtiesTheOutputs) {
    Node& node = add("scaleNode");
    pull(node, "result");
    set(node, "nodeState", 1);
    EXPECT_FALSE(is_clean(plug(node, "result")));
}

TEST_F(EvaluationTest, ACycleUsesCurrentValues) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    connect(second, "result", first, "input");
    EXPECT_EQ(pull(first, "result"), 0.0); // no value was computed before the cycle closed
    EXPECT_EQ(ScaleNode::computes, 2);
}

TEST_F(EvaluationTest, NumbersAreConvertedToTheAttributesType) {
    Node& node = add("polyCube");
    set(node, "sw", 3.9);
    EXPECT_EQ(plug(node, "sw").value.kind(), ValueKind::integer);
    EXPECT_EQ(pull(node, "sw"), 3.0);
    DagNode& transform = add_dag("transform");
    set(transform, "visibility", 7.0);
    EXPECT_EQ(pull(transform, "visibility"), 1.0);
}

TEST_F(EvaluationTest, TextIsNotConvertedToNumbers) {
    Node& node = add("scaleNode");
    EXPECT_EQ(set_value(plug(node, "input"), PlugValue::of_text("4")), MS::kInvalidParameter);
    EXPECT_EQ(pull(node, "input"), 1.0);
}

TEST_F(EvaluationTest, ANonWritablePlugRejectsValuesAndConnections) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    EXPECT_EQ(set_value(plug(first, "result"), PlugValue::of_double(1)), MS::kFailure);
    EXPECT_EQ(scene.connect(plug(second, "other"), plug(first, "result")), MS::kFailure);
}

TEST_F(EvaluationTest, ALockedPlugRejectsValuesAndConnections) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    plug(first, "input").locked = true;
    EXPECT_EQ(set_value(plug(first, "input"), PlugValue::of_double(1)), MS::kFailure);
    EXPECT_EQ(scene.connect(plug(second, "result"), plug(first, "input")), MS::kFailure);
}

TEST_F(EvaluationTest, AConnectedPlugRejectsValuesAndFurtherConnections) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    EXPECT_EQ(set_value(plug(second, "input"), PlugValue::of_double(1)), MS::kFailure);
    EXPECT_EQ(scene.connect(plug(first, "other"), plug(second, "input")), MS::kFailure);
}

TEST_F(EvaluationTest, ADestinationKeepsTheLastValueAfterDisconnection) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    pull(second, "result");
    EXPECT_EQ(scene.disconnect(plug(first, "result"), plug(second, "input")), MS::kSuccess);
    EXPECT_EQ(pull(second, "input"), 2.0);
    EXPECT_EQ(pull(second, "result"), 4.0);
}

TEST_F(EvaluationTest, ArraysConnectOnlyToArrays) {
    Node& first = add("polyTweak");
    Node& second = add("polyTweak");
    EXPECT_EQ(scene.connect(plug(first, "tweak"), plug(second, "tweak[0]")), MS::kInvalidParameter);
    EXPECT_EQ(scene.connect(plug(first, "tweak[0]"), plug(second, "tweak")), MS::kInvalidParameter);
    EXPECT_EQ(scene.connect(plug(first, "tweak[0]"), plug(second, "tweak[0]")), MS::kSuccess);
}

TEST_F(EvaluationTest, MessagesConnectOnlyToMessages) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    EXPECT_EQ(scene.connect(plug(first, "message"), plug(second, "input")), MS::kInvalidParameter);
}

} // namespace host::graph::testing
