// MPlug and the attribute function sets.
#include "faultpoint/faultpoint.h"
#include "tests/host/graph/fixture.h"

#include <maya/MFnCompoundAttribute.h>
#include <maya/MFnDependencyNode.h>
#include <maya/MFnEnumAttribute.h>
#include <maya/MFnStringData.h>
#include <maya/MPlugArray.h>

namespace host::graph::testing {

class PlugTest : public SceneTest {
protected:
    MPlug find(Node& node, const char* name) {
        MStatus status;
        const MPlug plug = MFnDependencyNode(MObject(&node)).findPlug(name, true, &status);
        EXPECT_EQ(status, MS::kSuccess) << name;
        return plug;
    }
};

TEST_F(PlugTest, IsFoundByLongAndByShortName) {
    Node& node = add("scaleNode");
    EXPECT_EQ(find(node, "input"), find(node, "in"));
    EXPECT_EQ(find(node, "input"), ScaleNode::in);
}

TEST_F(PlugTest, FindingAnUnknownNameFails) {
    Node& node = add("scaleNode");
    MStatus status;
    const MPlug plug = MFnDependencyNode(MObject(&node)).findPlug("nothing", true, &status);
    EXPECT_TRUE(plug.isNull());
    EXPECT_EQ(status, MS::kInvalidParameter);
}

TEST_F(PlugTest, OfAnAttributeOfAnotherTypeIsNull) {
    Node& node = add("polyCube");
    EXPECT_TRUE(MPlug(MObject(&node), ScaleNode::in).isNull());
}

TEST_F(PlugTest, NameIsNodeDotAttributeWithIndexAndComponent) {
    MeshNode& shape = add_cube();
    const MPlug element = find(shape, "pnts").elementByLogicalIndex(7);
    EXPECT_EQ(element.name(), "boxShape.pnts[7]");
    EXPECT_EQ(element.child(1).name(), "boxShape.pnts[7].pnty");
    EXPECT_EQ(element.child(1).partialName(), "pt[7].py");
    DagNode& transform = *shape.parents().front();
    EXPECT_EQ(find(transform, "translate").child(0).name(), "box.translateX");
}

TEST_F(PlugTest, ReportsItsKind) {
    MeshNode& shape = add_cube();
    const MPlug array = find(shape, "pnts");
    const MPlug element = array.elementByLogicalIndex(0);
    EXPECT_TRUE(array.isArray());
    EXPECT_FALSE(array.isElement());
    EXPECT_TRUE(element.isElement());
    EXPECT_TRUE(element.isCompound());
    EXPECT_FALSE(element.isChild());
    EXPECT_TRUE(element.child(2).isChild());
    EXPECT_EQ(element.array(), array);
    EXPECT_EQ(element.child(2).parent(), element);
}

TEST_F(PlugTest, ElementByLogicalIndexCreatesTheElement) {
    MeshNode& shape = add_cube();
    MPlug array = find(shape, "pnts");
    EXPECT_EQ(array.numElements(), 0u);
    array.elementByLogicalIndex(9);
    array.elementByLogicalIndex(4);
    EXPECT_EQ(array.numElements(), 2u);
    EXPECT_EQ(array.elementByPhysicalIndex(0).logicalIndex(), 4u);
    EXPECT_EQ(array.elementByPhysicalIndex(1).logicalIndex(), 9u);
}

TEST_F(PlugTest, ElementByPhysicalIndexNeverCreatesAnElement) {
    MeshNode& shape = add_cube();
    MPlug array = find(shape, "pnts");
    MStatus status;
    EXPECT_TRUE(array.elementByPhysicalIndex(0, &status).isNull());
    EXPECT_EQ(status, MS::kInvalidParameter);
    EXPECT_EQ(array.numElements(), 0u);
}

TEST_F(PlugTest, ConnectedElementsCountOnceEvaluated) {
    MeshNode& shape = add_cube();
    Node& driver = add("scaleNode");
    connect(driver, "result", shape, "pnts[3].pntx");
    MPlug array = find(shape, "pnts");
    EXPECT_EQ(array.numElements(), 0u);
    EXPECT_EQ(array.evaluateNumElements(), 1u);
}

TEST_F(PlugTest, ConnectedToListsOnlyTheRequestedDirectionButReturnsWhetherAnyExists) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    connect(first, "result", second, "input");
    MPlugArray plugs;
    EXPECT_TRUE(find(second, "input").connectedTo(plugs, false, true));
    EXPECT_EQ(plugs.length(), 0u);
    EXPECT_TRUE(find(second, "input").connectedTo(plugs, true, false));
    ASSERT_EQ(plugs.length(), 1u);
    EXPECT_EQ(plugs[0], find(first, "result"));
    EXPECT_TRUE(find(first, "result").connectedTo(plugs, false, true));
    ASSERT_EQ(plugs.length(), 1u);
    EXPECT_EQ(plugs[0], find(second, "input"));
    EXPECT_FALSE(find(first, "other").connectedTo(plugs, true, true));
}

TEST_F(PlugTest, ConnectionsOfComponentsAreNotThoseOfTheCompound) {
    MeshNode& shape = add_cube();
    Node& driver = add("scaleNode");
    connect(driver, "result", shape, "pnts[3].pntx");
    const MPlug element = find(shape, "pnts").elementByLogicalIndex(3);
    EXPECT_FALSE(element.isConnected());
    EXPECT_TRUE(element.child(0).isConnected());
    EXPECT_EQ(element.numConnectedChildren(), 1u);
}

TEST_F(PlugTest, AVectorReadsAndWritesAsNumericData) {
    MeshNode& shape = add_cube();
    MPlug element = find(shape, "pnts").elementByLogicalIndex(2);
    MFnNumericData data;
    MObject value = data.create(MFnNumericData::k3Float);
    EXPECT_EQ(data.setData(1.0f, 2.0f, 3.0f), MS::kSuccess);
    EXPECT_EQ(element.setValue(value), MS::kSuccess);
    MObject read;
    ASSERT_EQ(element.getValue(read), MS::kSuccess);
    float x = 0, y = 0, z = 0;
    MFnNumericData result(read);
    EXPECT_EQ(result.numericType(), MFnNumericData::k3Float);
    EXPECT_EQ(result.getData(x, y, z), MS::kSuccess);
    EXPECT_EQ(x + 10 * y + 100 * z, 321.0f);
    double d = 0;
    EXPECT_EQ(result.getData(d, d, d), MS::kInvalidParameter);
}

TEST_F(PlugTest, ADoubleSetOnAFloatIsRounded) {
    MeshNode& shape = add_cube();
    MPlug plug = find(shape, "pnts").elementByLogicalIndex(0).child(0);
    EXPECT_EQ(plug.setValue(0.1), MS::kSuccess);
    EXPECT_EQ(plug.asDouble(), double(0.1f));
}

TEST_F(PlugTest, AStringLiteralIsTextAndNotABoolean) {
    NodeTypeRef type = make_node_type("textNode", 0, MFn::kDependencyNode);
    type->add(new Attribute("label", "lb", AttributeKind::text));
    const Ref<Node> node = scene.make_node(type);
    scene.add(*node, nullptr);
    MPlug plug = find(*node, "label");
    EXPECT_EQ(plug.asString(), "");
    EXPECT_EQ(plug.setValue("words"), MS::kSuccess);
    EXPECT_EQ(plug.asString(), "words");
    MObject data;
    EXPECT_EQ(plug.getValue(data), MS::kSuccess);
    EXPECT_EQ(MFnStringData(data).string(), "words");
    int number = 0;
    EXPECT_EQ(plug.getValue(number), MS::kInvalidParameter);
}

TEST_F(PlugTest, AMeshIsReturnedAsAnIndependentCopy) {
    MeshNode& shape = add_cube();
    MObject data;
    ASSERT_EQ(find(shape, "outMesh").getValue(data), MS::kSuccess);
    EXPECT_TRUE(data.hasFn(MFn::kMeshData));
    std::vector<Float3> points = data.host_object()->as_mesh()->mesh()->points();
    points[0].x = 99.0f;
    data.host_object()->as_mesh()->edit()->set_points(points);
    EXPECT_NE(point(shape, 0).x, 99.0f);
    EXPECT_EQ(find(shape, "outMesh").setValue(data), MS::kSuccess);
    EXPECT_EQ(point(shape, 0).x, 99.0f);
}

TEST_F(PlugTest, EveryOperationOnTheNullPlugFails) {
    const MPlug null;
    MStatus status;
    null.name(&status);
    EXPECT_EQ(status, MS::kInvalidParameter);
    null.isConnected(&status);
    EXPECT_EQ(status, MS::kInvalidParameter);
    EXPECT_EQ(MPlug().setValue(1), MS::kInvalidParameter);
    MString text;
    EXPECT_EQ(null.getValue(text), MS::kInvalidParameter);
}

TEST_F(PlugTest, FaultPointsFailWithTheArmedStatus) {
    Node& node = add("scaleNode");
    MPlug plug = find(node, "input");
    {
        faultpoint::Scope scope("MPlug::setValue", MS::kLicenseFailure);
        EXPECT_EQ(plug.setValue(4.0), MS::kLicenseFailure);
    }
    EXPECT_EQ(plug.asDouble(), 1.0);
    faultpoint::Scope scope("MPlug::getValue", MS::kEndOfFile);
    double value = 0;
    EXPECT_EQ(plug.getValue(value), MS::kEndOfFile);
}

// === Attributes ==============================================================================

TEST(Attributes, ANewAttributeIsReadableWritableConnectableStorableAndCached) {
    MFnNumericAttribute set;
    set.create("something", "sm", MFnNumericData::kFloat);
    EXPECT_TRUE(set.isReadable() && set.isWritable() && set.isConnectable() && set.isStorable() &&
                set.isCached());
    EXPECT_FALSE(set.isArray() || set.isKeyable() || set.isHidden());
}

TEST(Attributes, VectorsHaveNumberedComponents) {
    MFnNumericAttribute set;
    const MObject vector = set.create("where", "wh", MFnNumericData::k3Double, 0.5);
    MFnCompoundAttribute compound(vector);
    ASSERT_EQ(compound.numChildren(), 3u);
    MFnNumericAttribute part(compound.child(2));
    EXPECT_EQ(part.name(), "where2");
    EXPECT_EQ(part.shortName(), "wh2");
    double value = 0;
    EXPECT_EQ(part.getDefault(value), MS::kSuccess);
    EXPECT_EQ(value, 0.5);
}

TEST(Attributes, VectorsOfSeparateComponentsHaveTheirType) {
    MFnNumericAttribute set;
    const auto components = [&](MFnNumericData::Type type) {
        const MObject x = set.create("x", "x", type), y = set.create("y", "y", type),
                      z = set.create("z", "z", type);
        const MObject vector = set.create("where", "wh", x, y, z);
        return std::string(static_cast<Attribute*>(vector.host_object())->type_text());
    };
    EXPECT_EQ(components(MFnNumericData::kDouble), "double3");
    EXPECT_EQ(components(MFnNumericData::kFloat), "float3");
    EXPECT_EQ(components(MFnNumericData::kLong), "long3");
}

TEST(Attributes, NamesMustNotBeEmpty) {
    MFnNumericAttribute set;
    MStatus status;
    EXPECT_TRUE(set.create("", "x", MFnNumericData::kLong, 0, &status).isNull());
    EXPECT_EQ(status, MS::kInvalidParameter);
}

TEST(Attributes, UnknownDataTypesAreNotImplemented) {
    MFnTypedAttribute set;
    MStatus status;
    EXPECT_TRUE(set.create("curve", "cv", MFnData::kNurbsCurve, MObject(), &status).isNull());
    EXPECT_EQ(status, MS::kNotImplemented);
}

TEST(Attributes, EnumerationsKnowTheirFields) {
    MFnEnumAttribute set;
    set.create("mode", "md", 2);
    set.addField("fast", 1);
    set.addField("slow", 2);
    EXPECT_EQ(set.fieldIndex("slow"), 2);
    EXPECT_EQ(set.fieldName(1), "fast");
    MStatus status;
    set.fieldIndex("never", &status);
    EXPECT_EQ(status, MS::kInvalidParameter);
}

TEST(Attributes, CanBeAddedOnlyDuringRegistrationOfAType) {
    MFnNumericAttribute set;
    const MObject one = set.create("one", "on1", MFnNumericData::kLong);
    EXPECT_EQ(MPxNode::addAttribute(one), MS::kFailure);
    EXPECT_EQ(MPxNode::attributeAffects(one, one), MS::kFailure);
}

TEST(Attributes, ANameCanBeUsedOnlyOncePerType) {
    NodeType type("t", 0, MFn::kDependencyNode);
    RegistrationScope scope(type);
    MFnNumericAttribute set;
    EXPECT_EQ(MPxNode::addAttribute(set.create("one", "o", MFnNumericData::kLong)), MS::kSuccess);
    EXPECT_EQ(MPxNode::addAttribute(set.create("two", "o", MFnNumericData::kLong)),
              MS::kInvalidParameter);
    EXPECT_EQ(MPxNode::addAttribute(set.create("one", "w", MFnNumericData::kLong)),
              MS::kInvalidParameter);
}

TEST(Attributes, AttributeAffectsRequiresBothToBeAdded) {
    NodeType type("t", 0, MFn::kDependencyNode);
    RegistrationScope scope(type);
    MFnNumericAttribute set;
    const MObject one = set.create("one", "o", MFnNumericData::kLong);
    const MObject two = set.create("two", "t", MFnNumericData::kLong);
    EXPECT_EQ(MPxNode::addAttribute(one), MS::kSuccess);
    EXPECT_EQ(MPxNode::attributeAffects(one, two), MS::kInvalidParameter);
    EXPECT_EQ(MPxNode::addAttribute(two), MS::kSuccess);
    EXPECT_EQ(MPxNode::attributeAffects(one, two), MS::kSuccess);
}

} // namespace host::graph::testing
