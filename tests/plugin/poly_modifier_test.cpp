// The poly-modifier framework below a command other than the plug-in's own.
#include "host/graph/command_registry.h"
#include "plugin/polyModifier.h"
#include "plugin/tmod_node.h"
#include "tests/host/graph/fixture.h"
#include "tests/host/graph/small_script.h"

#include <maya/MArgList.h>
#include <maya/MSelectionList.h>

namespace host::graph::testing {

namespace {

/// Inserts a node of type `type_name` into the history of "boxShape".
class InsertCommand : public polyModifierCmd {
public:
    MStatus doIt(const MArgList&) override {
        MSelectionList list;
        list.add("boxShape");
        MDagPath mesh;
        list.getDagPath(0, mesh);
        setMeshNode(mesh);
        if (type_name[0] != '\0')
            setModifierNodeName(type_name);
        return doModifyPoly();
    }
    MStatus undoIt() override { return undoModifyPoly(); }
    MStatus redoIt() override { return redoModifyPoly(); }
    bool isUndoable() const override { return true; }
    static void* create() { return new InsertCommand; }

    static const char* type_name;
};

const char* InsertCommand::type_name = "";

} // namespace

class PolyModifier : public SceneTest {
protected:
    PolyModifier() {
        register_node_type("tessora_node", 0x113C40, tmod_node::creator, tmod_node::initialize,
                           "test");
        Commands::current().add("insertModifier", InsertCommand::create, nullptr);
        add_cube("box");
        scene.records_history = true;
    }
    ~PolyModifier() override {
        scene.clear();
        undo.clear();
        Commands::current().remove("insertModifier");
        scene.remove_type("tessora_node");
    }
    MStatus run(const char* type_name) {
        InsertCommand::type_name = type_name;
        CommandResult result;
        return script.execute("insertModifier", false, true, result);
    }

    SmallScript script;
};

TEST_F(PolyModifier, CreatesTheNodeByTheNameOfItsType) {
    ASSERT_EQ(run("tessora_node"), MS::kSuccess);
    Slot* const source = plug(*scene.find("boxShape"), "inMesh").source();
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->node().node_type().name, "tessora_node");
}

TEST_F(PolyModifier, WithoutADirectModificationOfItsOwnTheCommandSucceeds) {
    scene.records_history = false;
    EXPECT_EQ(run("tessora_node"), MS::kSuccess);
}

TEST_F(PolyModifier, WithoutANodeTypeFailsAndChangesNothing) {
    const size_t nodes = scene.nodes().size();
    EXPECT_EQ(run(""), MS::kFailure);
    EXPECT_EQ(scene.nodes().size(), nodes);
}

TEST_F(PolyModifier, NodeWithoutMeshAttributesIsReportedAndFails) {
    const size_t nodes = scene.nodes().size();
    EXPECT_FALSE(run("scaleNode"));
    ASSERT_FALSE(script.lines.empty());
    EXPECT_EQ(script.lines.front(),
              "Invalid Modifier Node: inMesh and outMesh attributes are required.");
    EXPECT_EQ(scene.nodes().size(), nodes);
}

} // namespace host::graph::testing
