/// Test fixture: an empty scene, and a node type of the kind that plug-ins register.
#pragma once

#include "host/graph/edits.h"
#include "host/graph/mesh_node.h"
#include "host/graph/primitives.h"
#include "host/graph/registration.h"
#include "host/graph/scene.h"
#include "host/graph/undo.h"

#include <maya/MDataBlock.h>
#include <maya/MFnNumericAttribute.h>
#include <maya/MFnNumericData.h>
#include <maya/MFnTypedAttribute.h>
#include <maya/MPxNode.h>

#include <gtest/gtest.h>

namespace host::graph::testing {

/// A plug-in node: out = in * factor. Tests choose what its compute returns and marks clean.
class ScaleNode : public MPxNode {
public:
    MStatus compute(const MPlug& plug, MDataBlock& block) override {
        computes += 1;
        if (plug != out)
            return MS::kUnknownParameter;
        MStatus status;
        const double value = block.inputValue(in, &status).asDouble();
        if (!status)
            return status;
        MDataHandle result = block.outputValue(out);
        if (answer != MS::kSuccess)
            return answer;
        result.setDouble(value * block.inputValue(factor).asDouble());
        if (cleans)
            result.setClean();
        return MS::kSuccess;
    }

    static void* create() { return new ScaleNode; }
    static MStatus initialize() {
        MFnNumericAttribute number;
        in = number.create("input", "in", MFnNumericData::kDouble, 1.0);
        factor = number.create("factor", "fa", MFnNumericData::kDouble, 2.0);
        other = number.create("other", "ot", MFnNumericData::kDouble);
        unhandled = number.create("unhandled", "un", MFnNumericData::kDouble);
        out = number.create("result", "re", MFnNumericData::kDouble);
        number.setWritable(false);
        for (MObject* attribute : {&in, &factor, &other, &unhandled, &out})
            addAttribute(*attribute);
        attributeAffects(in, unhandled);
        attributeAffects(in, out);
        return attributeAffects(factor, out);
    }

    static int computes;
    static bool cleans;
    static MStatus answer;
    static MObject in, factor, other, out;
    static MObject unhandled; ///< an output that compute does not know
};

inline int ScaleNode::computes = 0;
inline bool ScaleNode::cleans = true;
inline MStatus ScaleNode::answer;
inline MObject ScaleNode::in, ScaleNode::factor, ScaleNode::other, ScaleNode::out,
    ScaleNode::unhandled;

class SceneTest : public ::testing::Test {
protected:
    SceneTest() {
        Scene::current().clear();
        if (!Scene::current().find_type("scaleNode"))
            register_node_type("scaleNode", 0x1234, ScaleNode::create, ScaleNode::initialize,
                               "test");
        ScaleNode::computes = 0;
        ScaleNode::cleans = true;
        ScaleNode::answer = MS::kSuccess;
    }
    ~SceneTest() override { Scene::current().clear(); }

    Scene& scene = Scene::current();
    UndoQueue& undo = UndoQueue::current();

    /// Adds a node to the scene without undo.
    Node& add(const char* type, const char* name = "", DagNode* parent = nullptr) {
        const Ref<Node> node = scene.make_node(scene.find_type(type), name);
        EXPECT_TRUE(node);
        EXPECT_EQ(scene.add(*node, parent), MS::kSuccess);
        return *node;
    }
    DagNode& add_dag(const char* type, const char* name = "", DagNode* parent = nullptr) {
        return *add(type, name, parent).as_dag_node();
    }
    /// Adds a transform NAME with a mesh shape NAME + "Shape" that holds a cube.
    MeshNode& add_cube(const char* name = "box") {
        DagNode& transform = add_dag("transform", name);
        auto& shape =
            static_cast<MeshNode&>(add("mesh", (std::string(name) + "Shape").c_str(), &transform));
        shape.set_mesh(make_cube(1, 1, 1, 1, 1, 1));
        return shape;
    }
    Slot& plug(Node& node, const char* path) {
        Slot* slot = node.find_plug(path);
        EXPECT_NE(slot, nullptr) << path;
        return *slot;
    }
    double pull(Node& node, const char* path) {
        Slot& slot = plug(node, path);
        EXPECT_EQ(evaluate(slot), MS::kSuccess);
        return slot.value.number();
    }
    void set(Node& node, const char* path, double number) {
        EXPECT_EQ(set_value(plug(node, path), PlugValue::of_double(number)), MS::kSuccess) << path;
    }
    void connect(Node& from, const char* source, Node& to, const char* destination) {
        EXPECT_EQ(scene.connect(plug(from, source), plug(to, destination)), MS::kSuccess);
    }
    /// Point `index` of the shape's evaluated mesh.
    Float3 point(MeshNode& shape, size_t index) {
        EXPECT_EQ(shape.refresh(), MS::kSuccess);
        return shape.mesh()->points()[index];
    }
};

} // namespace host::graph::testing
