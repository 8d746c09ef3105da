#include "host/graph/data.h"
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

/// Adds an array "pairs" of vectors of two numbers; returns the name of its first element.
const char* add_pairs(Node& node) {
    static const char* const k_suffixes[] = {"U", "V"};
    const Ref<Attribute> pairs =
        Attribute::make_tuple("pairs", "pr", Tuple::double2, Unit::none, k_suffixes);
    pairs->flags.array = true;
    EXPECT_EQ(node.add_attribute(pairs), MS::kSuccess);
    return "pairs[0]";
}

TEST_F(EvaluationTest, AVectorConnectsOnlyToAVectorOfTheSameSize) {
    Node& number = add("scaleNode");
    Node& from = add("transform", "from");
    Node& to = add("transform", "to");
    EXPECT_FALSE(can_connect(plug(from, "translate"), plug(number, "input")));
    EXPECT_FALSE(can_connect(plug(number, "result"), plug(to, "translate")));
    EXPECT_FALSE(can_connect(plug(from, "translate"), plug(to, add_pairs(to))));
    EXPECT_TRUE(can_connect(plug(from, "translate"), plug(to, "scale")));
}

TEST_F(EvaluationTest, AVectorConnectsToFloatsAndDoublesButNotToOtherKinds) {
    Ref<Attribute> mixed = new Attribute("mixed", "mx", AttributeKind::compound);
    mixed->add_child(new Attribute("one", "on", AttributeKind::real64));
    mixed->add_child(new Attribute("two", "tw", AttributeKind::text));
    mixed->add_child(new Attribute("three", "th", AttributeKind::real64));
    Node& from = add("transform", "from");
    Node& to = add("transform", "to");
    ASSERT_EQ(to.add_attribute(mixed), MS::kSuccess);
    EXPECT_FALSE(can_connect(plug(from, "translate"), plug(to, "mixed")));
    EXPECT_TRUE(can_connect(plug(from, "translate"), plug(add_cube(), "pnts[0]")));
}

TEST_F(EvaluationTest, AVectorTakesNoSingleValue) {
    Node& node = add("transform");
    EXPECT_FALSE(assign(plug(node, "translate"), PlugValue::of_double(3)));
    EXPECT_TRUE(assign(plug(node, "tx"), PlugValue::of_double(3)));
}

TEST_F(EvaluationTest, ATextTakesNoNumberAndNoMesh) {
    Node& node = add("transform");
    ASSERT_EQ(node.add_attribute(new Attribute("label", "lb", AttributeKind::text)), MS::kSuccess);
    EXPECT_TRUE(assign(plug(node, "label"), PlugValue::of_text("kept")));
    EXPECT_FALSE(assign(plug(node, "label"), PlugValue::of_double(3)));
    EXPECT_FALSE(assign(plug(node, "label"), plug(add_cube(), "outMesh").value));
    EXPECT_EQ(plug(node, "label").value.as_text(), "kept");
}

TEST_F(EvaluationTest, AMeshTakesNoNumberAndNoMatrix) {
    MeshNode& shape = add_cube();
    Slot& mesh = plug(shape, "inMesh");
    EXPECT_FALSE(assign(mesh, PlugValue::of_double(3)));
    EXPECT_FALSE(assign(mesh, PlugValue::of_data(new MatrixData(MMatrix()))));
    EXPECT_TRUE(assign(mesh, PlugValue()));
}

TEST_F(EvaluationTest, CopyingAVectorSaysWhetherEveryComponentFitted) {
    MeshNode& shape = add_cube();
    Node& node = add("transform");
    EXPECT_TRUE(copy_values(plug(node, "translate"), plug(shape, "pnts[0]")));
    EXPECT_FALSE(copy_values(plug(node, "translate"), plug(node, add_pairs(node))));
    EXPECT_FALSE(copy_values(plug(node, "translate"), plug(node, "tx")));
    Ref<Attribute> labels = new Attribute("labels", "lb", AttributeKind::compound);
    for (const char* name : {"one", "two", "three"})
        labels->add_child(new Attribute(name, name, AttributeKind::text));
    ASSERT_EQ(node.add_attribute(labels), MS::kSuccess);
    EXPECT_FALSE(copy_values(plug(node, "translate"), plug(node, "labels")));
}

TEST_F(EvaluationTest, CopyingAnArraySaysWhetherEveryElementFitted) {
    MeshNode& shape = add_cube();
    Node& tweak = add("polyTweak");
    set(tweak, "tweak[2].tweakX", 4);
    EXPECT_TRUE(copy_values(plug(tweak, "tweak"), plug(shape, "pnts")));
    EXPECT_EQ(plug(shape, "pnts[2].pntx").value.number(), 4.0);
    add_pairs(shape);
    EXPECT_FALSE(copy_values(plug(tweak, "tweak"), plug(shape, "pairs")));
}

TEST_F(EvaluationTest, AComponentOfAVectorIsDirtyUntilTheVectorIsFetched) {
    Node& from = add("transform", "from");
    Node& to = add("transform", "to");
    connect(from, "translate", to, "translate");
    EXPECT_EQ(pull(to, "tx"), 0.0);
    EXPECT_TRUE(is_clean(plug(to, "tx")));
    set(from, "tx", 4);
    EXPECT_FALSE(is_clean(plug(to, "tx")));
}

TEST_F(EvaluationTest, AVectorIsDirtyWhileAConnectedComponentIs) {
    Node& from = add("transform", "from");
    Node& to = add("transform", "to");
    connect(from, "ty", to, "ty");
    EXPECT_EQ(evaluate(plug(to, "translate")), MS::kSuccess);
    EXPECT_TRUE(is_clean(plug(to, "translate")));
    set(from, "ty", 4);
    EXPECT_FALSE(is_clean(plug(to, "translate")));
}

TEST_F(EvaluationTest, AStateRestoredWhileConnectedCountsAfterDisconnection) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    Slot& input = plug(second, "input");
    set(second, "input", 5);
    const SlotState before = save_state(input);
    connect(first, "result", second, "input");
    restore_state(input, before);
    set(first, "input", 3);
    EXPECT_EQ(pull(second, "input"), 6.0);
    EXPECT_EQ(scene.disconnect(plug(first, "result"), input), MS::kSuccess);
    EXPECT_EQ(pull(second, "input"), 5.0);
}

TEST_F(EvaluationTest, TweaksBehindTheLastVertexAreIgnored) {
    MeshNode& shape = add_cube();
    const Float3 last = point(shape, 7);
    set(shape, "pnts[8].pntx", 1);
    set(shape, "pnts[9].pntx", 1);
    EXPECT_EQ(point(shape, 7).x, last.x);
    EXPECT_EQ(shape.mesh()->points().size(), 8u);
}

} // namespace host::graph::testing
